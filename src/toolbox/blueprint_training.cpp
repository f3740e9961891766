#include "toolbox/blueprint_training.h"

#include "blueprint/blueprint_file.h"
#include "blueprint/blueprint_trainer.h"
#include "directory/json.h"
#include "directory/manifest.h"
#include "directory/strategies.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/resources.h"
#include "toolbox/abstraction_place.h"
#include "toolbox/command.h"

#include <filesystem>

namespace tamarin {

namespace {

constexpr const char* blueprintName = "blueprint";
constexpr double defaultSeconds = 600;
constexpr double secondsBetweenCheckpoints = 600;
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

// One run, from the place where its files lie.
struct BlueprintRun {
    const HoldemGame& game;
    std::string cards; // the abstraction's name
    const CardAbstraction& abstraction;
    const TrainingRequest& request;
    BlueprintTrainer& trainer;
    std::string path = request.out + "/" + blueprintName;
    std::string checkpoint = path + ".checkpoint";
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
        const auto resumed = takeUp();
        if (!resumed)
            return fail(resumed.error());
        const TrainingOutcome outcome = runWatched(trainer, request, *resumed, [&] {
            return trainer.writeCheckpoint(checkpoint, buckets);
        });
        if (outcome.end == TrainingEnd::stopped) {
            if (outcome.saved)
                complain("stopped; {} holds all {} iterations, --resume goes on from it, and {} is "
                         "as it was",
                         checkpoint, describeCount(trainer.iteration()), path);
            return outcome.saved ? interruptStatus() : exitFailed;
        }
        const int status = finish(outcome);
        return outcome.saved ? status : exitFailed;
    }

    // Goes on from the checkpoint where that is wanted, and refuses to forget one unasked. Whether
    // it did.
    Result<bool> takeUp() {
        std::error_code error;
        const bool there = std::filesystem::exists(checkpoint, error);
        if (request.fresh || (!there && !request.resume))
            return false;
        if (!there)
            return Error{checkpoint + " is not there: nothing to resume"};
        if (!request.resume)
            return Error{checkpoint + " is that of an earlier run: --resume goes on from it, " +
                         "--fresh starts over"};
        if (Status read = trainer.readCheckpoint(checkpoint, buckets); !read)
            return Error{read.error()};
        return true;
    }

    int finish(const TrainingOutcome& outcome) const {
        const BucketCounts counts = abstraction.description().counts();
        const BlueprintOrigin origin{
            hashOfGame(*game.rules),        cards,          buckets,
            {counts.begin(), counts.end()}, trainer.seed(), trainer.iteration()};
        if (Status written = writeBlueprint(path, trainer.sets(), origin); !written)
            return fail(written.error());
        const std::string made =
            fmt::format("{} --cards {} with seed {}, {} iterations", request.made, cards,
                        trainer.seed(), trainer.iteration());
        const std::string from = asJsonText(fmt::format("{}, definition {:016x}, buckets {:016x}",
                                                        game.name, origin.game, buckets));
        if (Status noted = recordFiles(request.out, {{blueprintName, made, from}}); !noted)
            return fail(noted.error());
        if (request.json) {
            nlohmann::ordered_json json = readJson(stepAsJson(outcome.last));
            json["end"] = describe(outcome.end);
            json["cards"] = cards;
            json["blueprint"] = path;
            json["bytes"] = std::filesystem::file_size(path);
            json["informationSets"] = trainer.sets().numSets();
            printJson(json);
        } else {
            fmt::print("{} iterations over {}, {} ({}), average regret {:.3g} chips\n{}\n",
                       describeCount(outcome.last.iteration), cards,
                       describeDuration(outcome.last.seconds), describe(outcome.end),
                       std::get<AverageRegret>(outcome.last.measure).chips, path);
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
    if (!request.goal.any())
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
    const BlueprintCost cost(trainer);
    if (Status enough = checkResources(cost.memory, cost.disk(), request.out); !enough)
        return fail(enough.error());
    return run.run();
}

} // namespace tamarin
