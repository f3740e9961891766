// The games of the signature, built in: a program may run where there are no game files.
#pragma once

#include "game/definition.h"

namespace tamarin::signature {

inline constexpr const char* kuhn2 = R"(GAMEDEF
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

inline constexpr const char* kuhn3 = R"(GAMEDEF
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

// Leduc hold'em (Southey and others 2005): ties, a board card, two rounds.
inline constexpr const char* leduc = R"(GAMEDEF
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

inline constexpr const char* limit2 = R"(GAMEDEF
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

inline constexpr const char* limit3 = R"(GAMEDEF
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

inline constexpr const char* noLimit2 = R"(GAMEDEF
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

} // namespace tamarin::signature
