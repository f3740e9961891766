// Random legal hands, for properties that must hold of all of them.
#pragma once

#include "game/game.h"

#include <vector>

namespace tamarin::test {

// In a limit game the rules let a seat "raise" whose stack does not reach the current bet, which
// lowers the bet instead (state_test.cpp names the case). Chips do not sum to zero after that, so
// the hands of the properties leave it out.
inline bool isTrueRaise(const Game& game, const State& state) {
    return game.bettingRule == noLimitRule ||
           game.stack[currentPlayer(&game, &state)] > state.maxSpent;
}

// Every legal kind of action now; a no-limit raise has a random legal size.
inline std::vector<Action> legalActions(const Game& game, const State& state, rng_state_t& rng) {
    std::vector<Action> legal;
    Action fold{actionFold, 0};
    if (isValidAction(&game, &state, 0, &fold))
        legal.push_back(fold);
    legal.push_back({actionCall, 0});
    int32_t minSize = 0;
    int32_t maxSize = 0;
    if (raiseIsValid(&game, &state, &minSize, &maxSize) && isTrueRaise(game, state)) {
        int32_t size = 0;
        if (game.bettingRule == noLimitRule) {
            const auto span = static_cast<uint32_t>(maxSize - minSize) + 1U;
            // Small raises mostly, so that hands do not all end all-in at once.
            const uint32_t cap = genrand_int32(&rng) % 4 == 0 ? span : 1 + span / 20;
            size = minSize + static_cast<int32_t>(genrand_int32(&rng) % cap);
        }
        legal.push_back({actionRaise, size});
    }
    return legal;
}

// Deals a hand from the seed and plays it with random legal actions, calling visit(state) before
// the first action and after each one. Folds are made rare so that hands last.
template <class Visit>
void playRandomHand(const Game& game, uint32_t seed, Visit visit) {
    rng_state_t rng;
    init_genrand(&rng, seed);
    State state{};
    initState(&game, seed, &state);
    dealCards(&game, &rng, &state);
    visit(static_cast<const State&>(state));
    while (!state.finished) {
        std::vector<Action> legal = legalActions(game, state, rng);
        if (legal.front().type == actionFold && genrand_int32(&rng) % 4 != 0)
            legal.erase(legal.begin());
        const Action action = legal[genrand_int32(&rng) % legal.size()];
        doAction(&game, &action, &state);
        visit(static_cast<const State&>(state));
    }
}

} // namespace tamarin::test
