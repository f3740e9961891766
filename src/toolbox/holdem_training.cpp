#include "toolbox/holdem_training.h"

#include "strategy/strategy_file.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/lock.h"
#include "support/progress.h"
#include "support/resources.h"
#include "toolbox/command.h"
#include "toolbox/convergence_log.h"
#include "toolbox/json.h"
#include "toolbox/kept_files.h"
#include "toolbox/manifest.h"
#include "toolbox/playing_directory.h"

#include <cstdio>
#include <filesystem>
#include <omp.h>
#include <optional>

namespace tamarin {

namespace {

constexpr double checkpointSeconds = 600.0;
constexpr const char* checkpointName = "/training.checkpoint";

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

const char* reason(HoldemEnd end) {
    switch (end) {
    case HoldemEnd::deals:
        return "all iterations done";
    case HoldemEnd::seconds:
        return "time is up";
    case HoldemEnd::stopped:
        return "stopped by a signal";
    }
    return "";
}

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

std::string describeGoal(const HoldemGoal& goal, double rate, uint64_t done) {
    std::optional<double> time = goal.seconds;
    if (goal.deals && rate > 0.0) {
        const double left = static_cast<double>(*goal.deals - std::min(done, *goal.deals)) / rate;
        time = time ? std::min(*time, left) : left;
    }
    return time ? "about " + describeDuration(*time) : "until it is stopped";
}

int dryRun(const HoldemGame& game, const HoldemTraining& options, HoldemTrainer& trainer) {
    const Cost cost = costOf(trainer.sets(), *game.rules);
    const std::string tables = missingTablesCost(options.directory, game.rules->numPlayers);
    fmt::print("{} decision nodes, {} information sets\n",
               describeCount(trainer.sets().tree().nodes().size()), describeCount(cost.sets));
    fmt::print("memory up to {} ({} can be had), each checkpoint {}, the strategy file {}; {} of "
               "disk while they are replaced ({} free)\n",
               describeBytes(cost.memory), describeBytes(availableMemory()),
               describeBytes(cost.checkpoint), describeBytes(cost.strategy),
               describeBytes(cost.disk()), describeBytes(freeDisk(options.out)));
    if (!tables.empty()) {
        fmt::print("tables first: {}; the speed of training is measured once they are there\n",
                   tables);
        return exitDone;
    }
    if (Status enough = checkResources(cost.memory, cost.disk(), options.out); !enough) {
        fmt::print("not measured: {}\n", enough.error());
        return exitDone;
    }
    trainer.run(1); // finds memory that was never touched: not what training takes
    const uint64_t warm = trainer.deals();
    const TimePoint start = steadyClock().now();
    double took = 0.0;
    while (took < 2.0 && !interrupted()) {
        trainer.run(1);
        took = seconds(steadyClock().now() - start);
    }
    if (interrupted())
        return interruptStatus();
    const double rate = static_cast<double>(trainer.deals() - warm) / took;
    fmt::print("{:.1f} iterations/s with {} threads ({} at a time): {}\n", rate,
               options.config.threads > 0 ? options.config.threads : omp_get_max_threads(), warm,
               describeGoal(options.goal, rate, 0));
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
class Run {
public:
    Run(const HoldemGame& game, const HoldemBuckets& buckets, const HoldemTraining& options,
        HoldemTrainer& trainer)
        : game_(game), buckets_(buckets), options_(options), trainer_(trainer),
          checkpoint_(options.out + checkpointName) {}

    int run() {
        bool resumed = false;
        if (Status ready = takeUp(resumed); !ready)
            return fail(ready.error());
        ConvergenceLog log(options_.out, resumed ? std::optional(trainer_.deals()) : std::nullopt);
        if (!options_.quiet) {
            progress_.emplace("Training", "iterations", options_.goal.deals.value_or(0));
            progress_->resumeAt(trainer_.deals());
        }
        HoldemHooks hooks;
        hooks.step = [&](const HoldemStep& step) {
            last_ = step;
            log.add(stepAsJson(step));
        };
        hooks.progress = [&](uint64_t deals) { show(deals); };
        hooks.save = [&] { save(); };
        hooks.saveEveryDeals = options_.checkpointEvery;
        hooks.saveEverySeconds = options_.checkpointEvery == 0 ? checkpointSeconds : 0.0;
        hooks.stop = [] { return interrupted(); };
        start_ = steadyClock().now();
        const HoldemEnd end = runHoldemTraining(trainer_, options_.goal, hooks);
        if (progress_)
            progress_->finish(trainer_.deals(), note());
        if (!log.good())
            complain("the log {} could not be written", log.path());
        save(); // where that fails, the strategy may still find room
        const int status = finish(end);
        return saved_ ? status : exitFailed;
    }

private:
    // Goes on from the checkpoint where that is wanted, and refuses to forget one unasked.
    Status takeUp(bool& resumed) {
        const bool there = exists(checkpoint_);
        if (options_.fresh || (!there && !options_.resume))
            return {};
        if (!there)
            return Error{checkpoint_ + " is not there: nothing to resume"};
        if (!options_.resume && !options_.resumeIfThere)
            return Error{options_.out + " holds a checkpoint of an earlier run: --resume goes on " +
                         "from it, --fresh starts over"};
        // One that cannot be read at all may be a good one.
        if (const auto readable = MappedFile::open(checkpoint_); !readable)
            return Error{readable.error()};
        if (Status read = trainer_.readCheckpoint(checkpoint_); !read) {
            if (options_.resume)
                return read;
            const auto aside = setAsideBadFile(checkpoint_);
            if (!aside)
                return Error{aside.error()};
            complain("{}; starting over, it is kept as {}", read.error(), *aside);
            return {};
        }
        resumed = true;
        if (!options_.quiet)
            remark("going on after iteration {}", describeCount(trainer_.deals()));
        return {};
    }

    std::string note() const {
        std::string text = fmt::format("average regret {:.3g}", last_.averageRegret);
        if (options_.goal.seconds && !options_.goal.deals) {
            const double left = *options_.goal.seconds - seconds(steadyClock().now() - start_);
            text += fmt::format(", {} left", describeDuration(std::max(0.0, left)));
        }
        return text;
    }

    void show(uint64_t deals) {
        if (progress_)
            progress_->update(deals, note());
    }

    void save() {
        saved_ = trainer_.writeCheckpoint(checkpoint_);
        if (!saved_)
            complain(saved_.error());
    }

    Status keepOther(const std::string& path, KeptFiles& kept) const {
        if (!exists(path))
            return {};
        const auto compared = compareWithManifest(options_.out, isHoldemStrategy);
        if (!compared)
            return Error{compared.error()};
        const auto* whole = compared->find(holdemStrategyName);
        if (whole && whole->from == strategySource(game_, buckets_))
            return {};
        return kept.keep(path);
    }

    int finish(HoldemEnd end) {
        const std::string path = options_.out + "/" + holdemStrategyName;
        if (end == HoldemEnd::stopped) {
            if (saved_)
                complain("stopped; {} holds all {} iterations, --resume goes on from it, and {} is "
                         "as it was",
                         checkpoint_, describeCount(trainer_.deals()), path);
            return interruptStatus();
        }
        KeptFiles kept;
        if (options_.keepOther)
            if (Status safe = keepOther(path, kept); !safe)
                return fail(safe.error());
        if (Status written = saveStrategy(game_, trainer_, path, options_.quiet); !written)
            return interrupted() ? interruptStatus() : fail(written.error());
        kept.replaced();
        const std::string made = fmt::format("{}, {} with seed {}, {} iterations", options_.made,
                                             algorithmName(options_.config.algorithm),
                                             options_.config.seed, trainer_.deals());
        if (Status noted = recordFiles(
                options_.out, {{holdemStrategyName, made, strategySource(game_, buckets_)}});
            !noted)
            return fail(noted.error());
        if (options_.json) {
            nlohmann::ordered_json json = readJson(stepAsJson(last_));
            json["algorithm"] = algorithmName(options_.config.algorithm);
            json["end"] = reason(end);
            json["strategy"] = path;
            json["bytes"] = std::filesystem::file_size(path);
            json["informationSets"] = trainer_.sets().numSets();
            printJson(json);
        } else {
            fmt::print("{} after {} iterations, {} ({}), average regret {:.3g} chips\n",
                       algorithmName(options_.config.algorithm), describeCount(trainer_.deals()),
                       describeDuration(last_.seconds), reason(end), last_.averageRegret);
            fmt::print("strategy, log and checkpoint are in {}\n", options_.out);
        }
        return exitDone;
    }

    const HoldemGame& game_;
    const HoldemBuckets& buckets_;
    const HoldemTraining& options_;
    HoldemTrainer& trainer_;
    std::string checkpoint_;
    std::optional<Progress> progress_;
    HoldemStep last_{};
    TimePoint start_{};
    Status saved_;
};

} // namespace

HoldemTrainerConfig defaultHoldemConfig(const Game& game) {
    HoldemTrainerConfig config;
    // The quickest of the five with two players (docs/holdem-training.md). With three, discounting
    // a hundred million sets after every block would cost more than it gains.
    config.algorithm = game.numPlayers == 2 ? Algorithm::discounted : Algorithm::linear;
    // A batch is what happens between two looks at the clock and at signals: milliseconds with two
    // players, seconds with three.
    config.batch = game.numPlayers == 2 ? 64 : 8;
    config.block = game.numPlayers == 2 ? 6400 : 80;
    return config;
}

HoldemGoal defaultHoldemGoal(const Game& game) {
    HoldemGoal goal;
    if (game.numPlayers == 3)
        goal.seconds = 600.0;
    else
        goal.deals = game.bettingRule == noLimitRule ? 100'000 : 500'000;
    return goal;
}

int trainHoldemGame(const HoldemGame& game, const HoldemTraining& given) {
    HoldemTraining options = given;
    if (options.out.empty())
        options.out = std::filesystem::path(holdemStrategyPath(options.directory, game))
                          .parent_path()
                          .string();
    if (options.dryRun && !missingTablesCost(options.directory, game.rules->numPlayers).empty()) {
        // No buckets yet, and none needed for counting.
        class NoBuckets : public HoldemBuckets {
            uint8_t bucket(int, int, int, const uint8_t*) const override { return 0; }
        } none;
        HoldemTrainer trainer(*game.rules, none, options.config);
        return dryRun(game, options, trainer);
    }
    if (!options.dryRun) {
        if (Status made = makeDirectories(options.out); !made)
            return fail(made.error());
    }
    std::optional<FileLock> lock;
    if (!options.dryRun) {
        auto taken = FileLock::take(options.out + "/train.lock");
        if (!taken)
            return fail(taken.error());
        lock.emplace(std::move(*taken));
        if (Status made = makeMissingTables(options.directory, game.rules->numPlayers,
                                            options.config.threads, options.quiet);
            !made)
            return interrupted() ? interruptStatus() : fail(made.error());
        if (Status known = checkTablesByManifest(options.directory, game.rules->numPlayers); !known)
            return fail(known.error());
    }
    const auto tables = HoldemTables::open(options.directory, game.rules->numPlayers);
    if (!tables)
        return fail(tables.error());
    HoldemTrainer trainer(*game.rules, tables->buckets(), options.config);
    if (options.dryRun)
        return dryRun(game, options, trainer);
    const Cost cost = costOf(trainer.sets(), *game.rules);
    if (Status enough = checkResources(cost.memory, cost.disk(), options.out); !enough)
        return fail(enough.error());
    if (!options.quiet)
        remark("{} information sets; up to {} of memory, a strategy file of {}, {}",
               describeCount(cost.sets), describeBytes(cost.memory), describeBytes(cost.strategy),
               options.goal.seconds ? "for " + describeDuration(*options.goal.seconds)
                                    : "to the iterations wanted");
    return Run(game, tables->buckets(), options, trainer).run();
}

} // namespace tamarin
