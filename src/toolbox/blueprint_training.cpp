#include "toolbox/blueprint_training.h"

#include "blueprint/blueprint_file.h"
#include "blueprint/blueprint_trainer.h"
#include "blueprint/sets_play.h"
#include "directory/json.h"
#include "directory/manifest.h"
#include "directory/strategies.h"
#include "driver/played_blueprint.h"
#include "response/sample_measure.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/resources.h"
#include "toolbox/abstraction_place.h"
#include "toolbox/blueprint_place.h"
#include "toolbox/command.h"

#include <filesystem>

namespace tamarin {

namespace {

constexpr double defaultSeconds = 600;
constexpr double secondsBetweenCheckpoints = 600;
constexpr uint64_t measureSeed = 1;              // of the flops: one sample for all trainings
constexpr uint64_t bytesOfMeasure = 200'000'000; // beside the strategy in rows of lanes
constexpr uint64_t bytesElsewhere = 350'000'000; // the abstraction's pages in use, and the program

Result<CardAbstraction> openCards(const std::string& cards, const std::string& directory) {
    const auto place = findAbstraction(cards, directory);
    if (!place)
        return Error{"--cards " + cards + ": no such card abstraction below " + directory +
                     "/lookup; 'tamarin abstract --help' says how to make one"};
    return CardAbstraction::open(place->directory, place->name);
}

// The bytes of one checkpoint, which are those of the sets, and of the blueprint at most.
struct BlueprintCost {
    explicit BlueprintCost(const BlueprintTrainer& trainer)
        : memory(trainer.memory() + bytesElsewhere), checkpoint(trainer.sets().memory()),
          blueprint(trainer.sets().numSets() * numAbstractedActions) {}

    uint64_t memory;
    uint64_t checkpoint;
    uint64_t blueprint;
    uint64_t disk() const { return 2 * (checkpoint + blueprint); } // old and new while writing
};

// What a blueprint was made from, for the manifest.
std::string blueprintSource(const HoldemGame& game, uint64_t buckets, const std::string& quality) {
    return fmt::format("{}, definition {:016x}, buckets {:016x}{}", game.name,
                       hashOfGame(*game.rules), buckets,
                       quality.empty() ? "" : ", quality " + quality);
}

// One run, from the place where its files lie.
struct BlueprintRun {
    const HoldemGame& game;
    std::string cards; // the abstraction's name
    const CardAbstraction& abstraction;
    const TrainingRequest& request;
    BlueprintTrainer& trainer;
    BlueprintPlace place{request};
    uint64_t buckets = hashOfBuckets(abstraction.description());

    int dryRun() const {
        const BlueprintCost cost(trainer);
        fmt::print("{} decision nodes, {} information sets\n",
                   describeCount(trainer.sets().tree().nodes().size()),
                   describeCount(trainer.sets().numSets()));
        fmt::print("memory up to {} ({} can be had), each checkpoint {}, the blueprint {}; {} of "
                   "disk while they are replaced ({} free)\n",
                   describeBytes(cost.memory), describeBytes(availableMemory()),
                   describeBytes(cost.checkpoint), describeBytes(cost.blueprint),
                   describeBytes(cost.disk()), describeBytes(freeDisk(request.out)));
        trainer.run(1); // finds memory that was never touched: not what training takes
        const double rate = measureSpeed(trainer, 2.0);
        if (interrupted())
            return interruptStatus();
        fmt::print("{:.1f} boards/s with {} threads\n", rate,
                   Work{request.threads.value_or(0), {}, {}}.threadCount());
        return exitDone;
    }

    int run() {
        const auto resumed =
            place.takeUp([&] { return trainer.readCheckpoint(place.checkpoint, buckets); });
        if (!resumed)
            return fail(resumed.error());
        std::optional<SampleMeasure> sample;
        if (request.measureFlops != 0) {
            auto made = SampleMeasure::of(*game.rules, trainer.sets().tree(), request.measureFlops,
                                          measureSeed);
            if (!made)
                return fail(game.name + ": " + made.error());
            sample.emplace(std::move(*made));
        }
        const TrainingOutcome outcome = runWatched(
            trainer, place.whatIsLeft(*resumed, trainer.iteration()), *resumed,
            [&] { return trainer.writeCheckpoint(place.checkpoint, buckets); },
            sample ? std::function([&] { return measured(*sample); }) : nullptr);
        const int status = outcome.end == TrainingEnd::stopped
                               ? place.stopped(outcome, trainer.iteration(), isBetter(),
                                               [&] { return finish(outcome); })
                               : finish(outcome);
        return outcome.saved ? status : exitFailed;
    }

    // Of the average strategy as it stands, in the real game.
    LongMeasure measured(const SampleMeasure& sample) const {
        const double unit = 500.0 / bigBlind(*game.rules); // mbb of both seats' gains halved
        Work work{request.threads.value_or(0), {}, interrupted};
        std::optional<Progress> progress;
        if (!request.quiet) {
            progress.emplace("Measuring in the real game", "flops", sample.distinctFlops());
            work.progress = [&](uint64_t done, uint64_t) { progress->update(done); };
        }
        const auto gains = sample.measure(SetsPlay(trainer.sets(), abstraction), work);
        if (!gains)
            return {};
        if (progress)
            progress->finish(sample.distinctFlops());
        return {{{"exploitability", unit * gains->crossed.mean},
                 {"interval95", unit * gains->crossed.halfWidth},
                 {"afterFlop", unit * gains->afterFlop.mean},
                 {"afterFlopInterval95", unit * gains->afterFlop.halfWidth},
                 {"biased", unit * gains->biased.mean},
                 {"flops", request.measureFlops}},
                fmt::format("exploitability {:.0f} +- {:.0f} mbb/hand", unit * gains->crossed.mean,
                            unit * gains->crossed.halfWidth)};
    }

    // Whether what was trained so far is worth more than what is there: few iterations over many
    // buckets are not.
    bool isBetter() const {
        if (trainer.iteration() == 0)
            return false;
        if (!std::filesystem::exists(place.path))
            return true;
        const auto there = BlueprintFile::open(place.path, *game.rules, trainer.sets().tree());
        return there && there->origin().abstractionHash == buckets &&
               there->origin().steps < trainer.iteration();
    }

    int finish(const TrainingOutcome& outcome) const {
        const BucketCounts counts = abstraction.description().counts();
        const BlueprintOrigin origin{
            hashOfGame(*game.rules),        cards,          buckets,
            {counts.begin(), counts.end()}, trainer.seed(), trainer.iteration()};
        if (Status written =
                place.replace([&] { return writeBlueprint(place.path, trainer.sets(), origin); });
            !written)
            return fail(written.error());
        const std::string made =
            fmt::format("{} --cards {} with seed {}, {} iterations", request.made, cards,
                        trainer.seed(), trainer.iteration());
        const bool finished = outcome.end != TrainingEnd::stopped;
        const std::string from =
            asJsonText(blueprintSource(game, buckets, finished ? request.quality : ""));
        if (Status noted = recordFiles(request.out, {{blueprintName, made, from}}); !noted)
            return fail(noted.error());
        if (request.json) {
            nlohmann::ordered_json json = readJson(stepAsJson(outcome.last));
            json["end"] = describe(outcome.end);
            json["cards"] = cards;
            json["blueprint"] = place.path;
            json["bytes"] = std::filesystem::file_size(place.path);
            json["informationSets"] = trainer.sets().numSets();
            printJson(json);
        } else {
            fmt::print("{} iterations over {}, {} ({}), average regret {:.3g} chips\n{}\n",
                       describeCount(outcome.last.iteration), cards,
                       describeDuration(outcome.last.seconds), describe(outcome.end),
                       std::get<AverageRegret>(outcome.last.measure).chips, place.path);
        }
        return exitDone;
    }
};

void refuseForBlueprint(const TrainingRequest& request) {
    if (request.algorithm)
        throw UsageError("--algorithm: over a card abstraction there is but one, linear weights on "
                         "public boards");
    if (request.goal.nashConv)
        throw UsageError("--until-nashconv: over a card abstraction NashConv is not computed; "
                         "'tamarin exploit --real --blueprint' measures in the real game");
    if (request.sampledDeals != 0)
        throw UsageError("--sampled-deals: over a card abstraction an iteration is one board");
    if (request.goal.iterations > BlueprintTrainer::mostSteps)
        throw UsageError(fmt::format("--iterations: at most {} over a card abstraction",
                                     BlueprintTrainer::mostSteps));
}

} // namespace

int trainBlueprint(const HoldemGame& game, const std::string& cards, TrainingRequest request) {
    refuseForBlueprint(request);
    if (Status fits = BlueprintTrainer::fits(*game.rules); !fits)
        return fail(game.name + ": " + fits.error());
    if (!request.goal.any() && request.quality.empty())
        request.goal.seconds = defaultSeconds;
    if (request.checkpointEvery == 0)
        request.checkpointSeconds = secondsBetweenCheckpoints;
    if (request.out.empty())
        request.out = holdemStrategyDirectory(request.directory, game);
    const auto abstraction = openCards(cards, request.directory);
    if (!abstraction)
        return fail(abstraction.error());
    const AbstractionBuckets buckets(*abstraction);
    const CompiledTree tree(*game.rules);
    BlueprintTrainer trainer(*game.rules, tree, buckets, request.seed, request.threads.value_or(0));
    BlueprintRun run{game, findAbstraction(cards, request.directory)->name, *abstraction, request,
                     trainer};
    if (request.dryRun)
        return run.dryRun();
    const auto lock = lockResults(request.out);
    if (!lock)
        return fail(lock.error());
    BlueprintCost cost(trainer);
    if (request.measureFlops != 0)
        cost.memory += bytesOfMeasure + trainer.sets().memory() / 2;
    if (Status enough = checkResources(cost.memory, cost.disk(), request.out); !enough)
        return fail(enough.error());
    if (!request.quiet)
        remark("{} information sets; up to {} of memory, a blueprint of up to {}, {}",
               describeCount(trainer.sets().numSets()), describeBytes(cost.memory),
               describeBytes(cost.blueprint), lengthOf(request.goal));
    return run.run();
}

} // namespace tamarin
