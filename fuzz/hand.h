// What every hand owes, whatever definition and betting it came from.
#pragma once

#include "fuzz/fuzz.h"
#include "game/game.h"

#include <cmath>

namespace tamarin {

// Whether a pot of this game loses nothing. The reader takes negative blinds and raise sizes as
// they stand, and a raise then takes chips back. In a limit game a seat whose stack is below the
// bet may still raise, which lowers the bet to its stack; what others had put in beyond that, and
// folded, nobody wins.
inline bool potIsWhole(const Game& game) {
    for (int seat = 0; seat < game.numPlayers; ++seat)
        if (game.blind[seat] < 0 ||
            (game.bettingRule == limitRule && game.stack[seat] != game.stack[0]))
            return false;
    for (int round = 0; game.bettingRule == limitRule && round < game.numRounds; ++round)
        if (game.raiseSize[round] < 0)
            return false;
    return true;
}

// Whether the rules can value this finished hand: at a showdown they assert that not just one seat
// has paid, which takes a seat whose stack is empty from the start, or negative money.
inline bool hasValue(const Game& game, const State& state) {
    int paid = 0;
    for (int seat = 0; seat < game.numPlayers; ++seat)
        paid += state.spent[seat] > 0;
    return paid != 1 || numFolded(&game, &state) + 1 == game.numPlayers;
}

// A finished hand pays out what was put in; an unfinished one has a seat to act that can act, for
// which a call is legal and every legal action leads to a hand again.
inline void checkHand(const Game& game, const State& state) {
    if (state.finished) {
        if (!hasValue(game, state))
            return;
        const bool whole = potIsWhole(game);
        double sum = 0;
        double largest = 1;
        for (uint8_t seat = 0; seat < game.numPlayers; ++seat) {
            const double value = valueOfState(&game, &state, seat);
            expect(std::isfinite(value), "a value is a number");
            expect(!whole || value >= -static_cast<double>(state.spent[seat]),
                   "nobody loses more than it paid");
            sum += value;
            largest = std::fmax(largest, std::fabs(value));
        }
        expect(!whole || std::fabs(sum) <= 1e-9 * largest, "the values of all seats sum to zero");
        return;
    }

    if (numActingPlayers(&game, &state) == 0)
        return;
    const uint8_t seat = currentPlayer(&game, &state);
    expect(seat < game.numPlayers, "the seat to act exists");
    expect(!state.playerFolded[seat], "the seat to act has not folded");

    Action call{actionCall, 0};
    expect(isValidAction(&game, &state, 0, &call) != 0, "a call is always legal");
    for (const ActionType type : {actionFold, actionCall, actionRaise}) {
        Action action{type, 0};
        if (!isValidAction(&game, &state, 1, &action)) // moves a raise to its smallest size
            continue;
        State next = state;
        doAction(&game, &action, &next);
        expect(next.finished || next.round >= state.round, "a hand goes on or ends");
    }
}

} // namespace tamarin
