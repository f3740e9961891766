#include "holdem/pot_odds.h"

#include <algorithm>

namespace tamarin {

int64_t priceOfCall(const Game& game, const State& state, int seat) {
    return int64_t{std::min(state.maxSpent, game.stack[seat])} - state.spent[seat];
}

ActionType playByPotOdds(const Game& game, const State& state, int seat, double equity) {
    const int64_t owed = priceOfCall(game, state, seat);
    if (owed <= 0)
        return actionCall;
    int64_t pot = 0;
    for (int p = 0; p < game.numPlayers; ++p)
        pot += state.spent[p];
    const auto price = static_cast<double>(owed);
    return equity * (static_cast<double>(pot) + price) < price ? actionFold : actionCall;
}

} // namespace tamarin
