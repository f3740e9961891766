#include "local_response/bet_menu.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace tamarin {

namespace {

constexpr size_t sizesBetween = 54; // with the smallest bet and all-in 56
constexpr double leastInPots = 0.1;
constexpr double mostInPots = 100.0;
// The 53rd root of 1000, the way from the least to the most in as many steps.
constexpr double step = 1.1392099607392687;

// In pots.
const std::array<double, sizesBetween>& wideSizes() {
    static const auto sizes = [] {
        std::array<double, sizesBetween> row{};
        double size = leastInPots;
        for (double& entry : row) {
            entry = size;
            size *= step;
        }
        row.back() = mostInPots;
        return row;
    }();
    return sizes;
}

// Rounded to whole chips.
double raiseTo(const State& state, double pots) {
    const double pot = 2.0 * state.maxSpent;
    return static_cast<double>(static_cast<int64_t>(state.maxSpent + pots * pot + 0.5));
}

} // namespace

std::optional<BetMenu> betMenuNamed(std::string_view name) {
    for (const BetMenu menu : {BetMenu::foldCall, BetMenu::raise, BetMenu::pot, BetMenu::wide})
        if (name == nameOf(menu))
            return menu;
    return std::nullopt;
}

const char* nameOf(BetMenu menu) {
    switch (menu) {
    case BetMenu::foldCall:
        return "fold-call";
    case BetMenu::raise:
        return "raise";
    case BetMenu::pot:
        return "pot";
    case BetMenu::wide:
        return "wide";
    }
    return "";
}

std::vector<Action> betsOf(BetMenu menu, const Game& game, const State& state) {
    int32_t least = 0;
    int32_t most = 0;
    // The rules warn of a round that is nearly full of actions, a tree of which meets many.
    if (menu == BetMenu::foldCall ||
        state.numActions[state.round] + game.numPlayers > MAX_NUM_ACTIONS ||
        !raiseIsValid(&game, &state, &least, &most))
        return {};
    assert((menu == BetMenu::raise) == (game.bettingRule == limitRule));
    if (menu == BetMenu::raise)
        return {{actionRaise, 0}};
    std::vector<int32_t> sizes{most};
    const auto tryPots = [&](double pots) {
        const double size = raiseTo(state, pots);
        if (size >= least && size < most)
            sizes.push_back(static_cast<int32_t>(size));
    };
    if (menu == BetMenu::pot) {
        tryPots(1.0);
    } else {
        sizes.push_back(least);
        for (const double pots : wideSizes())
            tryPots(pots);
    }
    std::ranges::sort(sizes);
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    std::vector<Action> bets;
    for (const int32_t size : sizes)
        bets.push_back({actionRaise, size});
    return bets;
}

} // namespace tamarin
