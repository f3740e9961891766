// Game definitions that the tests share, and the means to read one from a string.
#pragma once

#include "game/game.h"
#include "support/tree_paths.h"

#include <cstdio>
#include <string>
#include <vector>

namespace tamarin::test {

// The definition in the text, or null (with its line on standard error) when it is not valid.
inline GamePtr parseGame(const std::string& text) {
    return gameFromText(text);
}

inline std::string printToString(const Game& game) {
    return gameAsText(game);
}

inline GamePtr loadGameFile(const std::string& name) {
    FILE* file = std::fopen(inTree("games/" + name).c_str(), "r");
    GamePtr game(file ? readGame(file) : nullptr);
    if (file)
        std::fclose(file);
    return game;
}

inline const char* const twoPlayerKuhn = R"(GAMEDEF
limit
numPlayers = 2
numRounds = 1
blind = 1 1
raiseSize = 1
firstPlayer = 1
maxRaises = 1
numSuits = 1
numRanks = 3
numHoleCards = 1
numBoardCards = 0
END GAMEDEF
)";

inline const char* const threePlayerKuhn = R"(GAMEDEF
limit
numPlayers = 3
numRounds = 1
blind = 1 1 1
raiseSize = 1
firstPlayer = 1
maxRaises = 1
numSuits = 1
numRanks = 4
numHoleCards = 1
numBoardCards = 0
END GAMEDEF
)";

inline const char* const leduc = R"(GAMEDEF
limit
numPlayers = 2
numRounds = 2
blind = 1 1
raiseSize = 2 4
firstPlayer = 1 1
maxRaises = 2 2
numSuits = 2
numRanks = 3
numHoleCards = 1
numBoardCards = 0 1
END GAMEDEF
)";

inline const char* const twoPlayerLimit = R"(GAMEDEF
limit
numPlayers = 2
numRounds = 4
blind = 10 5
raiseSize = 10 10 20 20
firstPlayer = 2 1 1 1
maxRaises = 3 4 4 4
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

inline const char* const threePlayerLimit = R"(GAMEDEF
limit
numPlayers = 3
numRounds = 4
blind = 5 10 0
raiseSize = 10 10 20 20
firstPlayer = 3 1 1 1
maxRaises = 3 4 4 4
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

inline const char* const twoPlayerNoLimit = R"(GAMEDEF
nolimit
numPlayers = 2
numRounds = 4
stack = 20000 20000
blind = 100 50
firstPlayer = 2 1 1 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

// Fifty, one hundred: the blinds the other way round.
inline const char* const smallBlindFirst = R"(GAMEDEF
nolimit
numPlayers = 2
numRounds = 4
stack = 20000 20000
blind = 50 100
firstPlayer = 1 2 2 2
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

inline const char* const unevenNoLimit = R"(GAMEDEF
nolimit
numPlayers = 3
numRounds = 4
stack = 100 200 300
blind = 5 10 0
firstPlayer = 3 1 1 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

inline const char* const sixPlayerNoLimit = R"(GAMEDEF
nolimit
numPlayers = 6
numRounds = 4
stack = 40 500 130 77 1000 20
blind = 1 2 0 0 0 0
firstPlayer = 3 1 1 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

inline const char* const tenPlayerLimit = R"(GAMEDEF
limit
numPlayers = 10
numRounds = 3
stack = 50 50 50 50 50 50 50 7 50 50
blind = 1 2 0 0 0 0 0 0 0 0
raiseSize = 2 4 4
firstPlayer = 3 1 1
maxRaises = 4 4 4
numSuits = 4
numRanks = 13
numHoleCards = 3
numBoardCards = 0 2 3
END GAMEDEF
)";

inline const char* const tenPlayerNoLimit = R"(GAMEDEF
nolimit
numPlayers = 10
numRounds = 2
stack = 90 80 70 60 50 40 30 20 10 100
blind = 0 0 0 0 0 0 0 0 0 1
firstPlayer = 10 5
numSuits = 4
numRanks = 13
numHoleCards = 1
numBoardCards = 0 5
END GAMEDEF
)";

// No blinds at all: a hand that is checked down has an empty pot.
inline const char* const withoutBlinds = R"(GAMEDEF
nolimit
numPlayers = 4
numRounds = 2
stack = 10 10 20 10
blind = 0 0 0 0
firstPlayer = 1 2
numSuits = 3
numRanks = 6
numHoleCards = 1
numBoardCards = 0 2
END GAMEDEF
)";

// Limit with stacks so short that raises put players all-in.
inline const char* const shortStackLimit = R"(GAMEDEF
limit
numPlayers = 4
numRounds = 3
stack = 9 25 14 60
blind = 1 2 0 0
raiseSize = 4 4 8
firstPlayer = 3 1 1
maxRaises = 3 3 3
numSuits = 4
numRanks = 8
numHoleCards = 2
numBoardCards = 0 1 2
END GAMEDEF
)";

// Twelve shapes of game: limit and no-limit, two to ten players, short decks, uneven stacks, one to
// four rounds. None deals board cards before the first betting: the text puts those straight behind
// the last seat's cards, so that a match state whose last seat is unknown would not read back.
inline const std::vector<const char*>& manyGames() {
    static const std::vector<const char*> games = {
        twoPlayerKuhn,    threePlayerKuhn,  leduc,         twoPlayerLimit,
        threePlayerLimit, twoPlayerNoLimit, unevenNoLimit, sixPlayerNoLimit,
        tenPlayerLimit,   tenPlayerNoLimit, withoutBlinds, shortStackLimit,
    };
    return games;
}

} // namespace tamarin::test
