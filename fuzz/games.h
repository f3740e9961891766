// The games that fuzz targets play: an input's first byte picks one.
#pragma once

#include "fuzz/fuzz.h"
#include "game/game.h"

#include <array>

namespace tamarin {

// Games chosen to differ: limit and no-limit, 2 to 10 seats, short decks, uneven stacks, 1 to 4
// rounds, a game without blinds, one whose stacks run out in the blinds. No letter but the first of
// an input selects them, so inputs stay readable: '0' to '7'.
inline constexpr std::array<const char*, 8> definitions = {
    // three-player Kuhn
    "limit\nnumPlayers 3\nnumRounds 1\nblind 1 1 1\nraiseSize 1\nmaxRaises 1\nnumSuits 1\n"
    "numRanks 4\nnumHoleCards 1\nnumBoardCards 0\n",
    // hold'em, limit, two players
    "limit\nnumPlayers 2\nnumRounds 4\nblind 10 5\nraiseSize 10 10 20 20\nfirstPlayer 2 1 1 1\n"
    "maxRaises 3 4 4 4\nnumSuits 4\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 3 1 1\n",
    // hold'em, limit, three players
    "limit\nnumPlayers 3\nnumRounds 4\nblind 5 10 0\nraiseSize 10 10 20 20\nfirstPlayer 3 1 1 1\n"
    "maxRaises 3 4 4 4\nnumSuits 4\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 3 1 1\n",
    // hold'em, no-limit, two players
    "nolimit\nnumPlayers 2\nnumRounds 4\nstack 20000 20000\nblind 100 50\nfirstPlayer 2 1 1 1\n"
    "numSuits 4\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 3 1 1\n",
    // ten seats, uneven stacks, three hole cards
    "nolimit\nnumPlayers 10\nnumRounds 4\nstack 7 100 250 9 1000 33 500 500 80 2\n"
    "blind 0 1 2 0 0 0 0 0 0 0\nfirstPlayer 4 2 2 2\nnumSuits 4\nnumRanks 13\nnumHoleCards 3\n"
    "numBoardCards 0 3 1 1\n",
    // no blinds, unbounded stacks, two rounds, a short deck
    "nolimit\nnumPlayers 4\nnumRounds 2\nblind 0 0 0 0\nnumSuits 2\nnumRanks 5\nnumHoleCards 1\n"
    "numBoardCards 1 1\n",
    // limit with short stacks and no cap on raises
    "limit\nnumPlayers 3\nnumRounds 2\nstack 12 40 400\nblind 4 8 0\nraiseSize 8 16\n"
    "firstPlayer 3 1\nnumSuits 3\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 7\n",
    // all but one seat all-in in the blinds
    "nolimit\nnumPlayers 3\nnumRounds 3\nstack 1 2 50\nblind 1 2 0\nnumSuits 4\nnumRanks 13\n"
    "numHoleCards 2\nnumBoardCards 3 1 1\n",
};

inline const Game& gameOf(uint8_t byte) {
    static const std::array<GamePtr, definitions.size()> games = [] {
        std::array<GamePtr, definitions.size()> read;
        for (size_t i = 0; i < definitions.size(); ++i) {
            read[i] = gameFromText(definitions[i]);
            expect(read[i] != nullptr, "the games of this file are well formed");
        }
        return read;
    }();
    return *games[byte % definitions.size()]; // '0' is a multiple of eight
}

} // namespace tamarin
