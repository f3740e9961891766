// Small games for the solver's tests.
#pragma once

#include "game/game.h"

#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {

inline GamePtr gameFrom(const std::string& definition) {
    GamePtr game = gameFromText(definition);
    EXPECT_NE(game, nullptr) << definition;
    return game;
}

inline GamePtr kuhn3() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 1\nblind = 1 1 1\nraiseSize = 1\n"
                    "firstPlayer = 1\nmaxRaises = 1\nnumSuits = 1\nnumRanks = 4\n"
                    "numHoleCards = 1\nnumBoardCards = 0\nEND GAMEDEF\n");
}

inline GamePtr kuhn2() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 1\nraiseSize = 1\n"
                    "firstPlayer = 1\nmaxRaises = 1\nnumSuits = 1\nnumRanks = 3\n"
                    "numHoleCards = 1\nnumBoardCards = 0\nEND GAMEDEF\n");
}

// Southey and others (2005): two suits of three ranks, a board card in the second of two rounds.
inline GamePtr leduc2() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 2\nblind = 1 1\n"
                    "raiseSize = 2 4\nfirstPlayer = 1 1\nmaxRaises = 2 2\nnumSuits = 2\n"
                    "numRanks = 3\nnumHoleCards = 1\nnumBoardCards = 0 1\nEND GAMEDEF\n");
}

// Four seats, two raises, one of them short of chips; ties are possible.
inline GamePtr four() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 4\nnumRounds = 1\nstack = 9 9 2 9\n"
                    "blind = 1 2 1 1\nraiseSize = 2\nfirstPlayer = 3\nmaxRaises = 2\nnumSuits = 2\n"
                    "numRanks = 3\nnumHoleCards = 1\nnumBoardCards = 0\nEND GAMEDEF\n");
}

// Two hole cards of which the key sees the first, unequal blinds, three raises.
inline GamePtr twoCards() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 2\nraiseSize = 2\n"
                    "firstPlayer = 1\nmaxRaises = 3\nnumSuits = 2\nnumRanks = 3\n"
                    "numHoleCards = 2\nnumBoardCards = 0\nEND GAMEDEF\n");
}

// Twelve ranks: the ranks 9..11 share their keys with 0..2.
inline GamePtr longSuit() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 1\nraiseSize = 1\n"
                    "firstPlayer = 1\nmaxRaises = 2\nnumSuits = 1\nnumRanks = 12\n"
                    "numHoleCards = 1\nnumBoardCards = 0\nEND GAMEDEF\n");
}

// Three seats over two rounds with a board card in each.
inline GamePtr boards3() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 2\nblind = 1 1 2\n"
                    "raiseSize = 1 2\nfirstPlayer = 2 1\nmaxRaises = 1 1\nnumSuits = 2\n"
                    "numRanks = 3\nnumHoleCards = 1\nnumBoardCards = 1 1\nEND GAMEDEF\n");
}

inline GamePtr holdem2() {
    return gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 4\nblind = 10 5\n"
                    "raiseSize = 10 10 20 20\nfirstPlayer = 2 1 1 1\nmaxRaises = 3 4 4 4\n"
                    "numSuits = 4\nnumRanks = 13\nnumHoleCards = 2\nnumBoardCards = 0 3 1 1\n"
                    "END GAMEDEF\n");
}

// Swallows standard output for its lifetime.
class QuietOutput {
public:
    QuietOutput() { ::testing::internal::CaptureStdout(); }
    ~QuietOutput() { ::testing::internal::GetCapturedStdout(); }
};

} // namespace tamarin::test
