// Blueprints in a playing directory: which game one is of, and whether it is whole.
#pragma once

#include "blueprint/blueprint_play.h"
#include "directory/playing_directory.h"
#include "sampling/ready_blueprint.h"
#include "support/result.h"
#include "tree/compiled_tree.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tamarin {

// A blueprint, ready to be asked hand by hand, and all that it needs.
struct OpenedBlueprint {
    GameFile game;
    std::string path;
    // Of limit games for two,
    std::unique_ptr<CompiledTree> tree;
    std::unique_ptr<BlueprintPlay> play;
    // or of other games; the rest is null.
    std::unique_ptr<ReadyBlueprint> ready;

    const BlueprintOrigin& origin() const;
    // In the form that BettingMenu::parse() takes; empty in limit games.
    std::string menu() const;
    // Decision nodes times the buckets of their rounds.
    uint64_t informationSets() const;
    // "holdem.limit.2p.reverse_blinds.game over 169-200-200-200, 13,720 iterations with seed 1"
    std::string describe() const;
};

// Every byte of it and of its card abstraction is checked. Its game is the one of that name, as for
// openGameFile(); without a name the first of gameNames() that it says it is of.
Result<OpenedBlueprint> openBlueprint(const std::string& path, const std::string& directory,
                                      const std::string& game = "");

// Whether a file begins as a blueprint does.
bool isBlueprint(const std::string& path);

} // namespace tamarin
