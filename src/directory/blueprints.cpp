#include "directory/blueprints.h"

#include "blueprint/blueprint_trainer.h"
#include "support/progress.h"

#include <utility>

#include <fmt/format.h>

namespace tamarin {

namespace {

// Definitions that cannot be read are passed over, with what readGame says of them.
Result<GameFile> gameOf(const std::string& path, const std::string& directory) {
    const auto hash = gameOfBlueprint(path);
    if (!hash)
        return Error{hash.error()};
    for (const std::string& name : gameNames(directory)) {
        auto game = openGameFile(name, directory);
        if (game && hashOfGame(*game->rules) == *hash)
            return game;
    }
    return Error{path + ": damaged, or made for a game of which there is no definition in " +
                 directory};
}

} // namespace

std::string OpenedBlueprint::describe() const {
    const BlueprintOrigin& origin = play->origin();
    return fmt::format("{} over {}, {} iterations with seed {}", game.name, origin.abstraction,
                       describeCount(origin.steps), origin.seed);
}

Result<OpenedBlueprint> openBlueprint(const std::string& path, const std::string& directory,
                                      const std::string& game) {
    auto found = game.empty() ? gameOf(path, directory) : openGameFile(game, directory);
    if (!found)
        return Error{found.error()};
    if (Status fits = BlueprintTrainer::fits(*found->rules); !fits)
        return Error{found->name + ": " + fits.error()};
    auto tree = std::make_unique<CompiledTree>(*found->rules);
    auto play = BlueprintPlay::open(path, directory, *found->rules, *tree);
    if (!play)
        return Error{play.error()};
    return OpenedBlueprint{std::move(*found), std::move(tree),
                           std::make_unique<BlueprintPlay>(std::move(*play)), path};
}

bool isBlueprint(const std::string& path) {
    return gameOfBlueprint(path).ok();
}

} // namespace tamarin
