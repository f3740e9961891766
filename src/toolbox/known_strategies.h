// Strategies that a person says a player of a match plays by, and what results freed of luck need.
#pragma once

#include "analysis/freed_results.h"
#include "dealer/seat.h"
#include "directory/playing_directory.h"
#include "support/result.h"

#include <memory>
#include <string>
#include <vector>

namespace tamarin {

// What stands behind NAME=: "call", "raise", "fold", "uniform", "rule" (the built-in bot),
// "player" (the strategy or blueprint that `player` finds in the playing directory), a folder with
// a file `strategy`, or the file of a blueprint, whose card abstraction is below the playing
// directory.
struct NamedStrategy {
    std::string name;
    std::string what;
};
// Throws a UsageError for a text without a name.
NamedStrategy parseNamedStrategy(const std::string& text);

// What a seat of a match is known to play by: the built-in bots, and `player` in a limit game for
// two. `player` draws every decision from its file, and has no other way in such a game: the file,
// a blueprint too, holds every information set of it. Nothing for a seat of which nothing is known.
std::vector<NamedStrategy> knownOfSeats(const std::vector<Seat>& seats);

class KnownStrategies {
public:
    // An error for a game that results are not freed of luck in, and for strategies that cannot be
    // read.
    static Result<std::unique_ptr<KnownStrategies>> open(const GameFile& game,
                                                         const std::string& directory,
                                                         const std::vector<NamedStrategy>& named);
    // Tells the results what the player of this name and number plays by, if it is known; whether
    // it is.
    bool tell(const std::string& name, size_t player);
    FreedResults& results() { return *results_; }

private:
    KnownStrategies() = default;
    Result<std::shared_ptr<const HandStrategy>>
    openOne(const GameFile& game, const std::string& directory, const std::string& what);

    std::unique_ptr<CompiledTree> tree_;
    std::vector<std::pair<std::string, std::shared_ptr<const HandStrategy>>> strategies_;
    std::unique_ptr<FreedResults> results_;
};

} // namespace tamarin
