// A hold'em game in a playing directory: its definition, where its strategy lies, and the tables
// that give a hand's bucket.
#pragma once

#include "directory/playing_directory.h"
#include "holdem/buckets.h"
#include "support/result.h"

#include <iosfwd>
#include <memory>
#include <string>

class EquityTables;

namespace tamarin {

// A hold'em game that a command was given, found and read.
struct HoldemGame : GameFile {};

// The game when it is hold'em, null for any other game that reads; name as for openSmallGame().
Result<std::unique_ptr<HoldemGame>> openHoldem(const std::string& name,
                                               const std::string& directory);

// The one strategy file of all seats, below directory: where `player` looks for it, or, for a game
// that `player` does not know by its name, a file by the game's name.
std::string holdemStrategyPath(const std::string& directory, const HoldemGame& game);
// The folder that it is in, and all that belongs to it.
std::string holdemStrategyDirectory(const std::string& directory, const HoldemGame& game);

// The last component of that path, and whether a name is it.
inline constexpr const char* holdemStrategyName = "strategy";
bool isHoldemStrategy(const std::string& name);

// What a strategy was trained from, for the manifest: the game's name, and hashes of its definition
// and of the buckets.
std::string strategySource(const HoldemGame& game, const HoldemBuckets& buckets);

// The buckets of a game for 2 or 3 players, out of the tables below DIR/lookup, mapped. Refuses a
// table that is missing or damaged, and names it. For two players, those of three may be absent.
class HoldemTables {
public:
    static Result<HoldemTables> open(const std::string& directory, int players);
    HoldemTables(HoldemTables&&) noexcept;
    HoldemTables& operator=(HoldemTables&&) noexcept;
    ~HoldemTables();

    const HoldemBuckets& buckets() const { return *buckets_; }

private:
    HoldemTables();
    std::unique_ptr<std::ostream> messages_; // to nobody
    std::unique_ptr<EquityTables> tables_;
    std::unique_ptr<TableBuckets> buckets_;
};

// Refuses the tables that games of so many players are trained and valued on when they are no
// longer what DIR/lookup/manifest.json says: a damaged table trains a junk strategy that looks like
// any other. A table that is in no manifest passes.
Status checkTablesByManifest(const std::string& directory, int players);

// Makes the tables that games for so many players need and that DIR/lookup lacks, with progress on
// standard error, and records them. An error when there is too little memory or disk; "stopped"
// after a signal.
Status makeMissingTables(const std::string& directory, int players, int threads, bool quiet);

// What makeMissingTables() takes: "1.2 GB of disk, ... of memory, about 2 min 1 s on two cores", or
// empty when nothing is missing.
std::string missingTablesCost(const std::string& directory, int players);

} // namespace tamarin
