#include "toolbox/holdem_training.h"

#include "directory/kept_files.h"
#include "directory/manifest.h"
#include "strategy/strategy_file.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/resources.h"
#include "toolbox/command.h"
#include "toolbox/numbers.h"
#include "training/holdem_trainer.h"

#include <filesystem>
#include <omp.h>

namespace tamarin {

namespace {

// What the run takes, by the number of information sets. Besides their numbers, a node of the tree
// takes its place there, in the order of keys and in the walk, and what a batch keeps of it.
struct Cost {
    uint64_t sets;
    uint64_t memory;
    uint64_t checkpoint;
    uint64_t strategy;
    uint64_t disk() const { return 2 * checkpoint + 2 * strategy; } // old and new while writing
};

Cost costOf(const HoldemSets& sets, const Game& game) {
    constexpr uint64_t bytesOfNode = 160;
    constexpr uint64_t elsewhere = 300'000'000; // tables' pages in use, and the program
    const uint64_t count = sets.numSets();
    return {count,
            count * sizeof(SetNumbers) + sets.tree().nodes().size() * bytesOfNode + elsewhere,
            count * sizeof(SetNumbers) + 1000,
            count * 108 + 4 * uint64_t{game.numPlayers} * game.numRounds};
}

HoldemTrainerConfig configFor(const Game& game, const TrainingRequest& request) {
    const bool two = game.numPlayers == 2;
    HoldemTrainerConfig config;
    config.algorithm = request.algorithm.value_or(
        defaultAlgorithm(two ? Trained::twoPlayerHoldem : Trained::threePlayerHoldem));
    config.seed = request.seed;
    config.threads = request.threads.value_or(0);
    // A batch is what happens between two looks at the clock and at signals: milliseconds with two
    // players, seconds with three.
    config.batch = two ? 64 : 8;
    config.block = two ? 6400 : 80;
    return config;
}

TrainingGoal defaultGoal(const Game& game) {
    TrainingGoal goal;
    if (game.numPlayers == 3)
        goal.seconds = 600.0;
    else
        goal.iterations = game.bettingRule == noLimitRule ? 100'000 : 500'000;
    return goal;
}

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

// A goal of hold'em is iterations, seconds, or both.
double expectedSeconds(const TrainingGoal& goal, double rate) {
    const double all = goal.iterations ? static_cast<double>(*goal.iterations) / rate : mostSeconds;
    return std::min(all, goal.seconds.value_or(all));
}

int dryRun(const HoldemGame& game, const TrainingRequest& request,
           const HoldemTrainerConfig& config) {
    // Without tables there are no buckets, and none are needed for counting.
    class NoBuckets : public HoldemBuckets {
        uint8_t bucket(int, int, int, const uint8_t*) const override { return 0; }
    } none;
    const int players = game.rules->numPlayers;
    const std::string missing = missingTablesCost(request.directory, players);
    std::optional<Result<HoldemTables>> tables;
    if (missing.empty() && !tables.emplace(HoldemTables::open(request.directory, players)))
        return fail(tables->error());
    HoldemTrainer trainer(*game.rules, tables ? (*tables)->buckets() : none, config);
    const Cost cost = costOf(trainer.sets(), *game.rules);
    fmt::print("{} decision nodes, {} information sets\n",
               describeCount(trainer.sets().tree().nodes().size()), describeCount(cost.sets));
    fmt::print("memory up to {} ({} can be had), each checkpoint {}, the strategy file {}; {} of "
               "disk while they are replaced ({} free)\n",
               describeBytes(cost.memory), describeBytes(availableMemory()),
               describeBytes(cost.checkpoint), describeBytes(cost.strategy),
               describeBytes(cost.disk()), describeBytes(freeDisk(request.out)));
    if (!missing.empty()) {
        fmt::print("tables first: {}; the speed of training is measured once they are there\n",
                   missing);
        return exitDone;
    }
    if (Status enough = checkResources(cost.memory, cost.disk(), request.out); !enough) {
        fmt::print("not measured: {}\n", enough.error());
        return exitDone;
    }
    trainer.run(1); // finds memory that was never touched: not what training takes
    const uint64_t warm = trainer.iteration();
    const double rate = measureSpeed(trainer, 2.0);
    if (interrupted())
        return interruptStatus();
    fmt::print("{:.1f} iterations/s with {} threads ({} at a time): about {}\n", rate,
               config.threads > 0 ? config.threads : omp_get_max_threads(), warm,
               describeDuration(expectedSeconds(request.goal, rate)));
    return exitDone;
}

Status saveStrategy(const HoldemGame& game, const HoldemTrainer& trainer, const std::string& path,
                    bool quiet) {
    const auto total = static_cast<uint64_t>(trainer.sets().numSets());
    std::optional<Progress> progress;
    if (!quiet)
        progress.emplace("Writing the strategy", "sets", total);
    Status written = writeStrategyFile(path, game.rules->numPlayers * game.rules->numRounds,
                                       trainer.sets(), [&](uint64_t done) {
                                           if (progress)
                                               progress->update(done);
                                           return !interrupted();
                                       });
    if (written && progress)
        progress->finish(total);
    return written;
}

// One run, from the place where its files lie.
struct Run {
    const HoldemGame& game;
    const HoldemBuckets& buckets;
    const TrainingRequest& request;
    HoldemTrainer& trainer;
    const std::string checkpoint = request.out + "/training.checkpoint";
    const std::string strategy = request.out + "/" + holdemStrategyName;

    int run() {
        const auto resumed = takeUp();
        if (!resumed)
            return fail(resumed.error());
        const TrainingOutcome outcome = runWatched(
            trainer, request, *resumed, [&] { return trainer.writeCheckpoint(checkpoint); });
        const int status = outcome.end == TrainingEnd::stopped ? stopped(outcome) : finish(outcome);
        return outcome.saved ? status : exitFailed;
    }

    // Goes on from the checkpoint where that is wanted, and refuses to forget one unasked. Whether
    // it did.
    Result<bool> takeUp() {
        const bool there = exists(checkpoint);
        if (request.fresh || (!there && !request.resume))
            return false;
        if (!there)
            return Error{checkpoint + " is not there: nothing to resume"};
        if (!request.resume && !request.resumeIfThere)
            return Error{request.out + " holds a checkpoint of an earlier run: --resume goes on " +
                         "from it, --fresh starts over"};
        // One that cannot be read at all may be a good one.
        if (const auto readable = MappedFile::open(checkpoint); !readable)
            return Error{readable.error()};
        const Status read = trainer.readCheckpoint(checkpoint);
        if (read)
            return true;
        if (request.resume)
            return Error{read.error()};
        const auto aside = setAsideBadFile(checkpoint);
        if (!aside)
            return Error{aside.error()};
        complain("{}; starting over, it is kept as {}", read.error(), *aside);
        return false;
    }

    Status keepOther(KeptFiles& kept) const {
        if (!request.keepOther || !exists(strategy))
            return {};
        const auto compared = compareWithManifest(request.out, isHoldemStrategy);
        if (!compared)
            return Error{compared.error()};
        const auto* whole = compared->find(holdemStrategyName);
        if (whole && whole->from == strategySource(game, buckets))
            return {};
        return kept.keep(strategy);
    }

    int stopped(const TrainingOutcome& outcome) const {
        if (outcome.saved)
            complain("stopped; {} holds all {} iterations, --resume goes on from it, and {} is as "
                     "it was",
                     checkpoint, describeCount(trainer.iteration()), strategy);
        return interruptStatus();
    }

    int finish(const TrainingOutcome& outcome) const {
        KeptFiles kept;
        if (Status safe = keepOther(kept); !safe)
            return fail(safe.error());
        if (Status written = saveStrategy(game, trainer, strategy, request.quiet); !written)
            return interrupted() ? interruptStatus() : fail(written.error());
        kept.replaced();
        const HoldemTrainerConfig& config = trainer.config();
        const std::string made =
            fmt::format("{}, {} with seed {}, {} iterations", request.made,
                        algorithmName(config.algorithm), config.seed, trainer.iteration());
        if (Status noted = recordFiles(request.out,
                                       {{holdemStrategyName, made, strategySource(game, buckets)}});
            !noted)
            return fail(noted.error());
        if (request.json) {
            nlohmann::ordered_json json = asJson(outcome, config.algorithm);
            json["strategy"] = strategy;
            json["bytes"] = std::filesystem::file_size(strategy);
            json["informationSets"] = trainer.sets().numSets();
            printJson(json);
        } else {
            fmt::print("{}, average regret {:.3g} chips\nstrategy, log and checkpoint are in {}\n",
                       describe(outcome, config.algorithm),
                       std::get<AverageRegret>(outcome.last.measure).chips, request.out);
        }
        return exitDone;
    }
};

} // namespace

int trainHoldemGame(const HoldemGame& game, TrainingRequest request) {
    const HoldemTrainerConfig config = configFor(*game.rules, request);
    if (!request.goal.any())
        request.goal = defaultGoal(*game.rules);
    if (request.checkpointEvery == 0)
        request.checkpointSeconds = 600.0;
    if (request.out.empty())
        request.out = holdemStrategyDirectory(request.directory, game);
    if (request.dryRun)
        return dryRun(game, request, config);

    const int players = game.rules->numPlayers;
    const auto lock = lockResults(request.out);
    if (!lock)
        return fail(lock.error());
    if (Status made = makeMissingTables(request.directory, players, config.threads, request.quiet);
        !made)
        return stoppedOrFailed(made.error());
    if (Status known = checkTablesByManifest(request.directory, players); !known)
        return fail(known.error());
    const auto tables = HoldemTables::open(request.directory, players);
    if (!tables)
        return fail(tables.error());
    HoldemTrainer trainer(*game.rules, tables->buckets(), config);
    const Cost cost = costOf(trainer.sets(), *game.rules);
    if (Status enough = checkResources(cost.memory, cost.disk(), request.out); !enough)
        return fail(enough.error());
    if (!request.quiet)
        remark("{} information sets; up to {} of memory, a strategy file of {}, {}",
               describeCount(cost.sets), describeBytes(cost.memory), describeBytes(cost.strategy),
               request.goal.seconds ? "for " + describeDuration(*request.goal.seconds)
                                    : "to the iterations wanted");
    return Run{game, tables->buckets(), request, trainer}.run();
}

} // namespace tamarin
