#include "directory/strategies.h"

#include "directory/manifest.h"
#include "strategy/mapped_strategy.h"
#include "strategy/soundness.h"
#include "strategy/strategy_file.h"
#include "support/file.h"

namespace tamarin {

Result<NamedGame> openSmallGame(const std::string& name, const std::string& directory) {
    auto game = openGameFile(name, directory);
    if (!game)
        return Error{game.error()};
    auto small = SmallGame::make(*game->rules);
    if (!small)
        return Error{game->path + ": " + small.error()};
    return NamedGame{std::move(*game), std::move(*small)};
}

std::string strategyDirectory(const std::string& directory, const std::string& gameName) {
    const std::string extension = ".game";
    const std::string stem = gameName.ends_with(extension)
                                 ? gameName.substr(0, gameName.size() - extension.size())
                                 : gameName;
    return directory + "/strategies/" + stem;
}

std::string strategyPath(const std::string& strategies, size_t seat) {
    return strategies + "/strategy" + std::to_string(seat);
}

Result<Profile> readStrategy(const SmallGame& game, const std::string& path) {
    const Game& rules = game.game();
    if (const Status whole = checkStrategyFile(rules, game.tree(), path); !whole)
        return Error{whole.error()};
    const auto strategy = MappedStrategy::open(path, rules.numPlayers * rules.numRounds);
    if (!strategy)
        return Error{strategy.error()};
    auto profile = averageProfile(game, *strategy);
    if (!profile)
        return Error{path + ": " + profile.error()};
    return profile;
}

Result<Profile> readStrategies(const SmallGame& game, const std::string& strategies) {
    Profile together;
    for (size_t seat = 0; seat < game.game().numPlayers; ++seat) {
        auto own = readStrategy(game, strategyPath(strategies, seat));
        if (!own)
            return Error{own.error()};
        if (seat == 0)
            together = *own;
        for (const CompiledTree::Node& node : game.tree().nodes()) {
            if (node.player != seat)
                continue;
            for (uint32_t field = 0; field < game.layout().numBuckets(node.slot); ++field) {
                const size_t set = game.layout().index(node, field);
                together[set] = (*own)[set];
            }
        }
    }
    return together;
}

Status writeStrategies(const SmallGame& game, const SmallGameTrainer& trainer,
                       const std::string& strategies, const std::string& made,
                       const std::string& gameName) {
    if (Status there = makeDirectories(strategies); !there)
        return there;
    Game rules = game.game();
    CFR solver(&rules);
    trainer.store(solver);
    // All of them before the first takes its place: a full disk must not leave the seats with
    // strategies of different trainings.
    std::vector<AtomicFile> staged;
    for (size_t seat = 0; seat < rules.numPlayers; ++seat) {
        auto file =
            stageStrategyFile(strategyPath(strategies, seat), solver.numMaps(), solver.nodes());
        if (!file)
            return Error{file.error()};
        staged.push_back(std::move(*file));
    }
    std::vector<ManifestEntry> entries;
    for (size_t seat = 0; seat < staged.size(); ++seat) {
        if (Status placed = staged[seat].commit(); !placed)
            return placed;
        entries.push_back({"strategy" + std::to_string(seat), made, gameName});
    }
    return recordFiles(strategies, entries);
}

} // namespace tamarin
