// tamarin train: trains a game towards an equilibrium, with a log, checkpoints and resumption.
#include "support/file.h"
#include "support/interrupt.h"
#include "support/lock.h"
#include "support/progress.h"
#include "toolbox/command.h"
#include "toolbox/commands.h"
#include "toolbox/convergence_log.h"
#include "toolbox/holdem_training.h"
#include "toolbox/json.h"
#include "toolbox/numbers.h"
#include "toolbox/strategies.h"
#include "training/checkpoint.h"
#include "training/training_run.h"

#include <cstdio>
#include <optional>

namespace tamarin {

namespace {

struct Options {
    std::string game;
    std::string directory = ".";
    std::string out;
    std::string algorithm; // empty: the best for the game
    uint64_t iterations = 0;
    double seconds = 0.0;
    double nashConv = 0.0;
    uint32_t sampledDeals = 0;
    uint64_t checkpointEvery = 0;
    uint64_t seed = 1;
    std::optional<int> threads;
    bool resume = false;
    bool fresh = false;
    bool dryRun = false;
    bool json = false;
    bool quiet = false;
};

const char* reason(TrainingEnd end) {
    switch (end) {
    case TrainingEnd::iterations:
        return "all iterations done";
    case TrainingEnd::seconds:
        return "time is up";
    case TrainingEnd::nashConv:
        return "NashConv reached";
    case TrainingEnd::stopped:
        return "stopped by a signal";
    }
    return "";
}

nlohmann::ordered_json asJson(const Options& options, const TrainingStep& last, TrainingEnd end) {
    nlohmann::ordered_json json = readJson(stepAsJson(last));
    json["algorithm"] = options.algorithm;
    json["end"] = reason(end);
    json["directory"] = options.out;
    return json;
}

int dryRun(const NamedGame& game, const TrainerConfig& config) {
    const SmallGameCost& cost = game.small->cost();
    const auto trainer = makeTrainer(*game.small, config);
    const TimePoint start = steadyClock().now();
    uint64_t count = 0;
    double took = 0.0;
    while (took < 0.2 && !interrupted()) {
        trainer->run(1);
        count = trainer->iteration();
        took = seconds(steadyClock().now() - start);
    }
    const uint64_t bytes = cost.informationSets * sizeof(TrainerNumbers) + cost.bytes;
    fmt::print("{} deals, {} decision nodes, {} information sets\n", describeCount(cost.deals),
               describeCount(cost.decisionNodes), describeCount(cost.informationSets));
    fmt::print("memory about {}, each checkpoint {}, strategy files {}\n", describeBytes(bytes),
               describeBytes(cost.informationSets * sizeof(TrainerNumbers)),
               describeBytes(cost.informationSets * 108 * game.rules->numPlayers));
    fmt::print("{} iterations/s\n",
               describeCount(static_cast<uint64_t>(static_cast<double>(count) / took)));
    return exitDone;
}

// Refuses to forget an earlier run's checkpoints unasked. To be called under the lock: they may be
// those of a run that goes on.
Status makeWay(const Options& options) {
    const std::vector<std::string> old = listCheckpoints(options.out);
    if (old.empty() || options.resume)
        return {};
    if (!options.fresh)
        return Error{options.out + " holds checkpoints of an earlier run: --resume goes on from " +
                     "it, --fresh starts over"};
    for (const std::string& path : old)
        std::remove(path.c_str());
    return {};
}

int trainHoldem(const HoldemGame& game, const Options& options) {
    if (options.nashConv > 0.0)
        throw UsageError("--until-nashconv: a hold'em game's NashConv is not computed; "
                         "'tamarin exploit' estimates it");
    if (options.sampledDeals != 0)
        throw UsageError("--sampled-deals: hold'em is always trained on single deals");
    HoldemTraining training;
    training.config = defaultHoldemConfig(*game.rules);
    if (!options.algorithm.empty())
        training.config.algorithm = *algorithmNamed(options.algorithm);
    if (training.config.algorithm == Algorithm::predictive)
        throw UsageError(
            "--algorithm pcfr+: it needs all deals at once, which hold'em cannot have");
    training.config.seed = options.seed;
    training.config.threads = options.threads.value_or(0);
    training.directory = options.directory;
    training.out = options.out;
    if (options.iterations != 0)
        training.goal.deals = options.iterations;
    if (options.seconds > 0.0)
        training.goal.seconds = options.seconds;
    if (!training.goal.deals && !training.goal.seconds)
        training.goal = defaultHoldemGoal(*game.rules);
    training.checkpointEvery = options.checkpointEvery;
    training.resume = options.resume;
    training.fresh = options.fresh;
    training.dryRun = options.dryRun;
    training.json = options.json;
    training.quiet = options.quiet;
    return trainHoldemGame(game, training);
}

int train(Options options, bool anyGoal) {
    const auto holdem = openHoldem(options.game, options.directory);
    if (!holdem)
        return fail(holdem.error());
    if (*holdem)
        return trainHoldem(**holdem, options);
    if (options.algorithm.empty())
        options.algorithm = "dcfr";
    TrainerConfig config;
    config.algorithm = *algorithmNamed(options.algorithm);
    config.sampledDeals = options.sampledDeals;
    config.seed = options.seed;
    config.threads = options.threads.value_or(1);
    if (config.algorithm == Algorithm::player && options.sampledDeals != 0)
        throw UsageError("--sampled-deals: the player's own training always samples one deal");

    const auto game = openSmallGame(options.game, options.directory);
    if (!game)
        return fail(game.error());
    if (options.dryRun)
        return dryRun(*game, config);
    if (options.out.empty())
        options.out = strategyDirectory(options.directory, game->name);
    if (Status made = makeDirectories(options.out); !made)
        return fail(made.error());
    const auto lock = FileLock::take(options.out + "/train.lock");
    if (!lock)
        return fail(lock.error());
    if (Status ready = makeWay(options); !ready)
        return fail(ready.error());

    const auto trainer = makeTrainer(*game->small, config);
    const std::string configText = checkpointConfig(*game->small, config);
    if (options.resume) {
        std::vector<std::string> warnings;
        const auto state = newestCheckpoint(options.out, configText, warnings);
        for (const std::string& warning : warnings)
            complain("{}; passed over", warning);
        if (!state)
            return fail(state.error());
        trainer->restore(*state);
        if (!options.quiet)
            remark("going on after iteration {}", describeCount(state->iteration));
    }

    TrainingGoal goal;
    if (options.iterations != 0)
        goal.iterations = options.iterations;
    if (options.seconds > 0.0)
        goal.seconds = options.seconds;
    if (options.nashConv > 0.0)
        goal.nashConv = options.nashConv;
    if (!anyGoal) {
        goal.nashConv = 1e-6;
        goal.seconds = 60.0;
    }

    ConvergenceLog log(options.out,
                       options.resume ? std::optional(trainer->iteration()) : std::nullopt);
    std::optional<Progress> progress;
    if (!options.quiet) {
        progress.emplace("Training", "iterations", goal.iterations.value_or(0));
        progress->resumeAt(trainer->iteration());
    }
    TrainingStep last{};
    Status saved;
    TrainingHooks hooks;
    hooks.step = [&](const TrainingStep& step) {
        last = step;
        log.add(stepAsJson(step));
        if (progress)
            progress->update(step.iteration, fmt::format("NashConv {:.2e}", step.value.nashConv()));
    };
    hooks.save = [&](const Trainer& now) {
        saved = saveCheckpoint(options.out, configText, now.state());
        if (!saved)
            complain(saved.error());
    };
    hooks.saveEvery = options.checkpointEvery;
    hooks.stop = [] { return interrupted(); };
    const TrainingEnd end = runTraining(*game->small, *trainer, goal, hooks, config.threads);
    if (progress)
        progress->finish(trainer->iteration(),
                         fmt::format("NashConv {:.2e}", last.value.nashConv()));

    hooks.save(*trainer); // where that fails, the strategies may still find room
    const std::string made = fmt::format("tamarin train --algorithm {} --seed {}, {} iterations",
                                         options.algorithm, options.seed, trainer->iteration());
    if (Status written = writeStrategies(*game->small, *trainer, options.out, made, game->name);
        !written)
        return fail(written.error());
    if (!log.good())
        complain("the log {} could not be written", log.path());

    if (options.json) {
        printJson(asJson(options, last, end));
    } else {
        fmt::print("{} after {} iterations, {} ({})\n{}", options.algorithm,
                   describeCount(last.iteration), describeDuration(last.seconds), reason(end),
                   valueTable(*game->rules, last.value));
        fmt::print("strategies, log and checkpoints are in {}\n", options.out);
    }
    if (!saved)
        return exitFailed;
    return end == TrainingEnd::stopped ? interruptStatus() : exitDone;
}

} // namespace

void addTrainCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<Options>();
    CLI::App& command =
        addCommand(app, "train", "Train a game towards an equilibrium",
                   "tamarin train kuhn.limit.3p.game --algorithm dcfr --until-nashconv 1e-6\n"
                   "  tamarin train holdem.limit.3p.game --seconds 1800\n\n"
                   "Ends at the first goal reached. With none given: small games at NashConv 1e-6 "
                   "or after a\nminute, two-player hold'em after 500,000 iterations (limit) or "
                   "100,000 (no-limit),\nthree-player hold'em after ten minutes. A signal ends "
                   "it too, with everything so far saved.\n\n"
                   "Hold'em is trained over the ten buckets of its tables, which are made first "
                   "where they are\nmissing; an iteration is one random deal. Its strategy is "
                   "the file that `player` reads.");
    command.add_option("GAME", options->game, "Game definition: a path, or a name in --dir")
        ->required();
    command
        .add_option("--algorithm", options->algorithm,
                    "cfr, cfr+, lcfr, dcfr, pcfr+ (not for hold'em), or the player's own: player; "
                    "lcfr for three-player hold'em and dcfr for all else when not given")
        ->check(CLI::IsMember({"cfr", "cfr+", "lcfr", "dcfr", "pcfr+", "player"}));
    const CLI::Option* iterations = addWholeNumber(command, "--iterations", options->iterations, 1,
                                                   largestCount, "Goal: iterations in all")
                                        ->default_str("");
    const CLI::Option* time =
        addSeconds(command, "--seconds", options->seconds, "Goal: seconds of this run")
            ->default_str("");
    const CLI::Option* nashConv =
        command.add_option("--until-nashconv", options->nashConv, "Goal: NashConv, chips a hand")
            ->transform(decimalNumber(1e-300, 1e9))
            ->type_name("CHIPS")
            ->default_str("");
    addWholeNumber(command, "--sampled-deals", options->sampledDeals, 1, 1'000'000,
                   "Deals drawn for each iteration; all of them when not given")
        ->default_str("");
    command.add_option(
        "--out", options->out,
        "Where the results go; DIR/strategies/GAME, and where `player` looks for hold'em");
    CLI::Option* resume =
        command.add_flag("--resume", options->resume, "Go on from the newest checkpoint");
    command.add_flag("--fresh", options->fresh, "Start over where checkpoints are")
        ->excludes(resume);
    addWholeNumber(command, "--checkpoint-every", options->checkpointEvery, 1, largestCount,
                   "Iterations between checkpoints; one at the end when not given, and for "
                   "hold'em one every ten minutes too")
        ->default_str("");
    command.add_flag("--dry-run", options->dryRun, "Print what it would take");
    addDirectoryOption(command, options->directory);
    addSeedOption(command, options->seed);
    addWholeNumber(command, "--threads", options->threads, 0, mostThreads,
                   "Threads to use, 0 for all cores; 1 for small games and all for hold'em "
                   "when not given. The results do not depend on it");
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([=, &status] {
        status = train(*options, iterations->count() + time->count() + nashConv->count() > 0);
    });
}

} // namespace tamarin
