#include "directory/blueprints.h"

#include "blueprint/blueprint_trainer.h"
#include "holdem/buckets.h"
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

const BlueprintOrigin& OpenedBlueprint::origin() const {
    return play ? play->origin() : ready->blueprint().origin().training;
}

std::string OpenedBlueprint::menu() const {
    return ready ? ready->blueprint().origin().menu : "";
}

uint64_t OpenedBlueprint::informationSets() const {
    uint64_t sets = 0;
    if (tree)
        for (const auto& node : tree->nodes())
            sets += origin().buckets[node.round];
    else
        for (const auto& node : ready->blueprint().tree().nodes())
            sets += origin().buckets[node.round];
    return sets;
}

std::string OpenedBlueprint::describe() const {
    return fmt::format("{} over {}, {} iterations with seed {}", game.name, origin().abstraction,
                       describeCount(origin().steps), origin().seed);
}

Result<OpenedBlueprint> openBlueprint(const std::string& path, const std::string& directory,
                                      const std::string& game) {
    auto found = game.empty() ? gameOf(path, directory) : openGameFile(game, directory);
    if (!found)
        return Error{found.error()};
    if (hasMenuBlueprints(*found->rules)) {
        if (!isHoldem(*found->rules))
            return Error{found->name + ": a blueprint is of hold'em"};
        auto ready = ReadyBlueprint::open(path, directory, *found->rules);
        if (!ready)
            return Error{ready.error()};
        return OpenedBlueprint{std::move(*found), path, nullptr, nullptr, std::move(*ready)};
    }
    if (Status fits = BlueprintTrainer::fits(*found->rules); !fits)
        return Error{found->name + ": " + fits.error()};
    auto tree = std::make_unique<CompiledTree>(*found->rules);
    auto play = BlueprintPlay::open(path, directory, *found->rules, *tree);
    if (!play)
        return Error{play.error()};
    return OpenedBlueprint{std::move(*found), path, std::move(tree),
                           std::make_unique<BlueprintPlay>(std::move(*play)), nullptr};
}

bool isBlueprint(const std::string& path) {
    return gameOfBlueprint(path).ok();
}

} // namespace tamarin
