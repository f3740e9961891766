// Against whom a person can play a game: the simple opponents, and `player` where it would find all
// that it needs. What is missing it would make first, for minutes or hours, and nobody at a table
// waits for that.
#pragma once

#include "dealer/seating.h"
#include "directory/playing_directory.h"
#include "support/result.h"

#include <string>
#include <vector>

namespace tamarin {

inline constexpr const char* playerOpponent = "player";

struct WebOpponent {
    std::string name; // "player", or a kind of bot
    std::string description;
    std::string missing; // why it cannot play this game from this directory; empty when it can
};
// `player` first.
std::vector<WebOpponent> opponentsFor(const GameFile& game, const std::string& directory);

// Where the programs are, which start the opponents.
struct Programs {
    std::string toolbox = "/proc/self/exe"; // has the bots
    std::string folder;                     // of `player`; PATH is searched after it
};
// Those of the running program.
Programs ownPrograms();

// How the opponents are started, in the order given, each under a name of its own ("rule",
// "rule2"). An error for one that is not there or cannot play, and for a wrong number of them.
Result<std::vector<SeatPlan>> planOpponents(const GameFile& game, const std::string& directory,
                                            const std::vector<std::string>& opponents,
                                            uint64_t seed, const Programs& programs);

} // namespace tamarin
