// tamarin prepare: everything that a game needs, so that `player` starts at once.
#include "directory/kept_files.h"
#include "directory/manifest.h"
#include "directory/playing_directory.h"
#include "directory/strategies.h"
#include "report/value_table.h"
#include "strategy/soundness.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/command.h"
#include "toolbox/holdem_training.h"
#include "toolbox/numbers.h"
#include "toolbox/prepare_blueprint.h"

#include <filesystem>

namespace tamarin {

namespace {

// Strategies that need no work: a hundredth of a milli-chip is below what any match can show.
constexpr double goodEnough = 1e-6;
constexpr double aim = 1e-7;
constexpr double longest = 60.0; // seconds

// Whether all seats have good strategies. Damaged files are named, with a line each; one that
// cannot be read at all may be a good one, and is an error.
Result<bool> goodStrategiesIn(const NamedGame& game, const std::string& strategies,
                              std::vector<std::string>& damaged) {
    bool whole = true;
    for (size_t seat = 0; seat < game.rules->numPlayers; ++seat) {
        const std::string path = strategyPath(strategies, seat);
        std::error_code error;
        if (!std::filesystem::exists(path, error) && !error) {
            whole = false;
            continue;
        }
        if (const auto readable = MappedFile::open(path); !readable)
            return Error{readable.error()};
        if (const Status checked = checkStrategyFile(*game.rules, game.small->tree(), path);
            !checked) {
            whole = false;
            complain("{}: making it anew", checked.error());
            damaged.push_back(path);
        }
    }
    if (!whole)
        return false;
    const auto profile = readStrategies(*game.small, strategies);
    if (!profile)
        return Error{profile.error()};
    const double nashConv = evaluateProfile(*game.small, *profile).nashConv();
    if (nashConv <= goodEnough) {
        fmt::print("{} has good strategies for all {} seats, NashConv {:.2e}\n", strategies,
                   game.rules->numPlayers, nashConv);
        return true;
    }
    remark("the strategies in {} have NashConv {:.2e}: training better ones", strategies, nashConv);
    return false;
}

// Whether prepare or train has left a whole strategy for this definition over these tables, by the
// manifest. What the player trained for itself is none.
Result<bool> goodHoldemStrategy(const HoldemGame& game, const std::string& directory,
                                const std::string& path) {
    const auto compared =
        compareWithManifest(std::filesystem::path(path).parent_path().string(), isHoldemStrategy);
    if (!compared)
        return Error{compared.error()};
    if (Status known = checkTablesByManifest(directory, game.rules->numPlayers); !known)
        return Error{known.error()};
    const auto* whole = compared->find(holdemStrategyName);
    if (!whole)
        return false;
    const auto tables = HoldemTables::open(directory, game.rules->numPlayers);
    if (!tables)
        return Error{tables.error()};
    const std::string wanted = strategySource(game, tables->buckets());
    if (whole->from == wanted)
        return true;
    complain("{} was trained for \"{}\", not \"{}\": training anew", path, whole->from, wanted);
    return false;
}

int prepareHoldem(const HoldemGame& game, TrainingRequest request) {
    if (const auto placed = placeGameFile(game.path, request.directory); !placed)
        return fail(placed.error());
    request.resumeIfThere = true;
    request.keepOther = true;
    request.made = "tamarin prepare";
    if (!request.fresh && !request.dryRun) {
        if (Status made =
                makeMissingTables(request.directory, game.rules->numPlayers, 0, request.quiet);
            !made)
            return stoppedOrFailed(made.error());
        const std::string strategy = holdemStrategyPath(request.directory, game);
        const auto good = goodHoldemStrategy(game, request.directory, strategy);
        if (!good)
            return fail(good.error());
        if (*good) {
            fmt::print("{} is there and whole, and so are the tables; --force trains it anew\n",
                       strategy);
            return exitDone;
        }
    }
    return trainHoldemGame(game, request);
}

int prepare(const std::string& name, const std::string& quality, TrainingRequest request) {
    const auto holdem = openHoldem(name, request.directory);
    if (!holdem)
        return fail(holdem.error());
    if (!quality.empty()) {
        if (*holdem)
            return prepareBlueprint(**holdem, quality, request);
        throw UsageError("--quality: blueprints are of hold'em");
    }
    if (*holdem)
        return prepareHoldem(**holdem, request);
    if (request.dryRun || request.goal.seconds)
        throw UsageError("--dry-run and --seconds are for hold'em; small games take seconds");
    const auto game = openSmallGame(name, request.directory);
    if (!game)
        return fail(game.error());
    if (const auto placed = placeGameFile(game->path, request.directory); !placed)
        return fail(placed.error());
    const std::string strategies = strategyDirectory(request.directory, game->name);
    std::vector<std::string> damaged;
    if (!request.fresh) {
        // Without the lock: where all is there nothing is written, and nothing need be writable.
        const auto good = goodStrategiesIn(*game, strategies, damaged);
        if (!good)
            return fail(good.error());
        if (*good)
            return exitDone;
    }
    const auto lock = lockResults(strategies);
    if (!lock)
        return fail(lock.error());
    const TrainerConfig config;
    const auto trainer = makeTrainer(*game->small, config);
    request.goal.nashConv = aim;
    request.goal.seconds = longest;
    const TrainingOutcome outcome = runWatched(*trainer, request, false, {});
    if (outcome.end == TrainingEnd::stopped) {
        complain("stopped before the strategies were good; nothing was written");
        return interruptStatus();
    }
    const std::string made = fmt::format("tamarin prepare, {} for {} iterations",
                                         algorithmName(config.algorithm), trainer->iteration());
    KeptFiles kept;
    for (const std::string& path : damaged)
        if (Status safe = kept.keep(path); !safe)
            return fail(safe.error());
    if (Status written = writeStrategies(*game->small, *trainer, strategies, made, game->name);
        !written)
        return fail(written.error());
    kept.replaced();
    fmt::print("{} has strategies for all {} seats, made in {}\n{}", strategies,
               game->rules->numPlayers, describeDuration(outcome.last.seconds),
               valueTable(*game->rules, std::get<ProfileValue>(outcome.last.measure)));
    return exitDone;
}

} // namespace

void addPrepareCommand(CLI::App& app, int& status) {
    auto game = std::make_shared<std::string>();
    auto quality = std::make_shared<std::string>();
    auto request = std::make_shared<TrainingRequest>();
    CLI::App& command = addCommand(
        app, "prepare", "Make everything a game needs for `player`",
        "tamarin prepare kuhn.limit.3p.game --dir run\n"
        "  tamarin prepare holdem.limit.2p.reverse_blinds.game --quality quick --dir run\n"
        "  tamarin prepare holdem.nolimit.2p.reverse_blinds.game --quality quick --dir run\n\n"
        "For hold'em: the tables below lookup/, then the strategy, as 'tamarin train' makes them "
        "when\nno goal is given. With --quality a card abstraction and a blueprint over it "
        "instead, "
        "which\n`player` plays in the strategy's stead and without tables. What an earlier, "
        "stopped "
        "run left is\ntaken up again, for the time that is left; a stopped blueprint is kept as "
        "far as it came.");
    command.add_option("GAME", *game, "Game definition: a path, or a name in --dir")->required();
    command
        .add_option("--quality", *quality,
                    "A blueprint: quick trains for five minutes, or ten of no-limit and of three "
                    "players, over 200 buckets a round, good for an hour over 1000, best over 5000 "
                    "until it is stopped; three players have fewer")
        ->check(CLI::IsMember(qualityNames()));
    command.add_flag("--force", request->fresh, "Make it again where it is good already");
    command.add_flag("--dry-run", request->dryRun, "Hold'em: print what it would take");
    addSeconds(command, "--seconds", request->goal.seconds, "Hold'em: train for so long instead");
    addDirectoryOption(command, request->directory);
    addQuietOption(command, request->quiet);
    command.callback([=, &status] { status = prepare(*game, *quality, *request); });
}

} // namespace tamarin
