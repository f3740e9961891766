// Any bytes as a bet menu: what is read writes and reads back, and offers legal raises only.
#include "fuzz/fuzz.h"
#include "fuzz/games.h"
#include "menu/betting_menu.h"
#include "support/split_mix.h"

#include <algorithm>
#include <string>

using namespace tamarin;

namespace {

// One hand without cards, whose actions follow the menu or, now and then, do not.
void playOneHand(const BettingMenu& menu, const Game& game, uint64_t seed) {
    SplitMix random(seed);
    State state{};
    initState(&game, 0, &state);
    for (int actions = 0; !state.finished && numActingPlayers(&game, &state) > 0; ++actions) {
        expect(actions <= MAX_ROUNDS * MAX_NUM_ACTIONS, "a hand ends");
        const bool besides = random.below(2) == 0;
        const auto raises = menu.raises(game, state, besides);
        expect(raises.size() <= BettingMenu::mostSizes + BettingMenu::mostBesides,
               "no more raises than a list has");
        expect(std::ranges::adjacent_find(raises, std::ranges::greater_equal()) == raises.end(),
               "raises ascend");
        for (const int32_t total : raises) {
            Action raise{actionRaise, total};
            expect(isValidAction(&game, &state, 0, &raise) != 0, "raises are legal");
        }
        Action action{actionCall, 0};
        if (!raises.empty() && random.below(4) > 0)
            action = {actionRaise, raises[random.below(static_cast<uint32_t>(raises.size()))]};
        doAction(&game, &action, &state);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto menu = BettingMenu::parse(text, "menu");
    if (!menu) {
        expect(menu.error().starts_with("menu:") && menu.error().find('\n') == std::string::npos,
               "an error is one line that names the file");
        return 0;
    }
    const auto again = BettingMenu::parse(menu->text(), "menu");
    expect(again.ok() && *again == *menu && again->text() == menu->text(),
           "a menu writes and reads back");
    expect(again->hash() == menu->hash(), "equal menus have equal hashes");
    for (const char game : {'3', '4', '5', '7'}) // the no-limit ones
        for (uint64_t seed = 0; seed < 3; ++seed)
            playOneHand(*menu, gameOf(static_cast<uint8_t>(game)), seed);
    return 0;
}
