// Blueprints in a playing directory: which game one is of, and whether it is whole.
#pragma once

#include "blueprint/blueprint_play.h"
#include "directory/playing_directory.h"
#include "support/result.h"
#include "tree/compiled_tree.h"

#include <memory>
#include <string>

namespace tamarin {

// A blueprint, ready to be asked hand by hand, and all that it needs.
struct OpenedBlueprint {
    GameFile game;
    std::unique_ptr<CompiledTree> tree;
    std::unique_ptr<BlueprintPlay> play;
    std::string path;

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
