// tamarin prepare: everything that a game needs, so that `player` starts at once.
#include "solver/strategy_check.h"
#include "solver/training_run.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/lock.h"
#include "support/progress.h"
#include "toolbox/command.h"
#include "toolbox/commands.h"
#include "toolbox/playing_directory.h"
#include "toolbox/strategies.h"

namespace tamarin {

namespace {

// Strategies that need no work: a hundredth of a milli-chip is below what any match can show.
constexpr double goodEnough = 1e-6;
constexpr double aim = 1e-7;
constexpr double mostSeconds = 60.0;

struct Options {
    std::string game;
    std::string directory = ".";
    bool force = false;
    bool quiet = false;
};

// Whether all seats have good strategies. Damaged files are set aside, with a line each.
Result<bool> goodStrategiesIn(const NamedGame& game, const std::string& strategies) {
    bool whole = true;
    for (size_t seat = 0; seat < game.rules->numPlayers; ++seat) {
        const std::string path = strategyPath(strategies, seat);
        struct stat there {};
        if (::stat(path.c_str(), &there) != 0) {
            whole = false;
            continue;
        }
        if (const Status checked = checkStrategyFile(*game.small, path); !checked) {
            whole = false;
            complain("{}: making it anew, the old one is kept as {}.bad", checked.error(), path);
            if (Status aside = setAsideBadFile(path); !aside)
                return Error{aside.error()};
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
    fmt::print(stderr, "the strategies in {} have NashConv {:.2e}: training better ones\n",
               strategies, nashConv);
    return false;
}

int prepare(const Options& options) {
    const auto game = openSmallGame(options.game, options.directory);
    if (!game)
        return fail(game.error());
    if (Status made = makeDirectories(options.directory); !made)
        return fail(made.error());
    if (const auto placed = placeGameFile(game->path, options.directory); !placed)
        return fail(placed.error());
    const std::string strategies = strategyDirectory(options.directory, game->name);
    if (Status made = makeDirectories(strategies); !made)
        return fail(made.error());
    const auto lock = FileLock::take(strategies + "/train.lock");
    if (!lock)
        return fail(lock.error());
    if (!options.force) {
        const auto good = goodStrategiesIn(*game, strategies);
        if (!good)
            return fail(good.error());
        if (*good)
            return exitDone;
    }

    const TrainerConfig config;
    const auto trainer = makeTrainer(*game->small, config);
    TrainingGoal goal;
    goal.nashConv = aim;
    goal.seconds = mostSeconds;
    TrainingStep last{};
    std::optional<Progress> progress;
    if (!options.quiet)
        progress.emplace("Training", "iterations", 0);
    TrainingHooks hooks;
    hooks.step = [&](const TrainingStep& step) {
        last = step;
        if (progress)
            progress->update(step.iteration, fmt::format("NashConv {:.2e}", step.value.nashConv()));
    };
    hooks.stop = [] { return interrupted(); };
    const TrainingEnd end = runTraining(*game->small, *trainer, goal, hooks);
    if (end == TrainingEnd::stopped) {
        complain("stopped before the strategies were good; nothing was written");
        return interruptStatus();
    }
    const std::string made = fmt::format("tamarin prepare, {} for {} iterations",
                                         algorithmName(config.algorithm), trainer->iteration());
    if (Status written = writeStrategies(*game->small, *trainer, strategies, made, game->name);
        !written)
        return fail(written.error());
    fmt::print("{} has strategies for all {} seats, made in {}\n{}", strategies,
               game->rules->numPlayers, describeDuration(last.seconds),
               valueTable(*game->rules, last.value));
    return exitDone;
}

} // namespace

void addPrepareCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(app, "prepare", "Make everything a game needs for `player`",
                                   "tamarin prepare kuhn.limit.3p.game --dir run");
    command.add_option("GAME", options->game, "Game definition: a path, or a name in --dir")
        ->required();
    command.add_flag("--force", options->force, "Make it again where it is good already");
    addDirectoryOption(command, options->directory);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = prepare(*options); });
}

} // namespace tamarin
