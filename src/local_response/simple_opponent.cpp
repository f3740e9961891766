#include "local_response/simple_opponent.h"

#include <cassert>

namespace tamarin {

namespace {

bool mayRaise(const Game& game, const State& state) {
    // The rules refuse this one, too, but warn of it.
    if (game.bettingRule == noLimitRule ||
        state.numActions[state.round] + game.numPlayers > MAX_NUM_ACTIONS)
        return false;
    int32_t least = 0;
    int32_t most = 0;
    return raiseIsValid(&game, &state, &least, &most) != 0;
}

} // namespace

SimpleOpponent::SimpleOpponent(const Game& game, SimplePlay play) : game_(game), play_(play) {
    assert(game.bettingRule == limitRule || play != SimplePlay::raise);
}

void SimpleOpponent::answer(const State& state, size_t hands, const SeenHands&,
                            RangeAnswer& answer) const {
    const int seat = currentPlayer(&game_, &state);
    const bool owes = state.spent[seat] < state.maxSpent && state.spent[seat] < game_.stack[seat];
    const bool raises = mayRaise(game_, state);
    std::vector<ActionType> taken;
    if (owes && (play_ == SimplePlay::fold || play_ == SimplePlay::uniform))
        taken.push_back(actionFold);
    if (raises && (play_ == SimplePlay::raise || play_ == SimplePlay::uniform))
        taken.push_back(actionRaise);
    if (taken.empty() || play_ == SimplePlay::uniform)
        taken.push_back(actionCall);
    answer.actions.clear();
    for (const ActionType type : taken)
        answer.actions.push_back({type, 0});
    answer.shares.assign(taken.size(),
                         std::vector<double>(hands, 1.0 / static_cast<double>(taken.size())));
}

} // namespace tamarin
