// tamarin abstract: makes a card abstraction of as many buckets a round as one likes.
#include "abstraction/table_names.h"
#include "clustering/abstraction_check.h"
#include "clustering/abstraction_plan.h"
#include "clustering/make_abstraction.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/resources.h"
#include "support/step_progress.h"
#include "table_builder/table_summary.h"
#include "toolbox/command.h"
#include "toolbox/making_cards.h"
#include "toolbox/numbers.h"

#include <memory>

namespace tamarin {

namespace {

struct AbstractArguments {
    std::string counts;
    std::string directory = ".";
    std::string method = methodNames[0];
    std::string name;
    AbstractionOptions making;
    int threads = 0;
    bool dryRun = false;
    bool verify = false;
    bool force = false;
    bool json = false;
    bool quiet = false;
};

// A table that is made later would find the folder in its place, and `show` would take the one for
// the other.
Status isNobodyElses(const std::string& name) {
    const std::string problem = "'" + name + "' is no name for a card abstraction: ";
    if (tableNamed(name) != nullptr)
        return Error{problem + "a table below lookup/ is called that"};
    if (name == "manifest.json")
        return Error{problem + "the manifest of the tables is called that"};
    if (name.ends_with(".game"))
        return Error{problem + "games end in .game"};
    return {};
}

MakeOptions makeOptions(const AbstractArguments& options) {
    const auto counts = readBucketCounts(options.counts);
    if (!counts)
        throw UsageError(counts.error());
    const auto method = methodNamed(options.method);
    if (!method)
        throw UsageError(method.error());
    MakeOptions make;
    make.counts = *counts;
    make.options = options.making;
    make.options.method = *method;
    make.directory = options.directory;
    make.name = options.name;
    make.force = options.force;
    make.threads = options.threads;
    if (const Status good = checkAbstractionName(make.nameOrOwn()); !good)
        throw UsageError(good.error());
    if (const Status free = isNobodyElses(make.nameOrOwn()); !free)
        throw UsageError(free.error());
    return make;
}

int showPlan(const MakeOptions& make, bool json) {
    constexpr const char* states[] = {"missing", "begun", "whole", "different"};
    const AbstractionPlan plan = planAbstraction(make);
    const uint64_t disk = freeDisk(inDirectory(make.directory, lookupDirectory));
    if (json) {
        auto files = nlohmann::ordered_json::array();
        for (const AbstractionPlan::File& file : plan.files)
            files.push_back({{"file", file.path}, {"bytes", file.bytes}});
        printJson({{"name", make.nameOrOwn()},
                   {"state", states[static_cast<size_t>(plan.state)]},
                   {"problem", plan.problem},
                   {"diskBytes", plan.disk},
                   {"freeDiskBytes", disk},
                   {"memoryBytes", plan.memory},
                   {"availableMemoryBytes", availableMemory()},
                   {"seconds", plan.seconds},
                   {"files", files}});
        return exitDone;
    }
    if (!plan.problem.empty())
        fmt::print("{}\n", plan.problem);
    if (plan.state == AbstractionPlan::State::whole) {
        fmt::print("{}: nothing to do\n", make.nameOrOwn());
        return exitDone;
    }
    for (const AbstractionPlan::File& file : plan.files)
        fmt::print("{}: {}\n", file.path, describeBytes(file.bytes));
    fmt::print("in all {} of disk ({} free), {} of memory ({} available), about {} on two cores\n",
               describeBytes(plan.disk), describeBytes(disk), describeBytes(plan.memory),
               describeBytes(availableMemory()), describeDuration(plan.seconds));
    return exitDone;
}

// What is there has the counts and the method that were named.
Status isAsNamed(const MakeOptions& make) {
    const std::string folder = abstractionFolder(make.directory, make.nameOrOwn());
    const auto there = readDescription(folder + "/" + descriptionFileName);
    if (!there)
        return Error{there.error()};
    AbstractionOptions named = there->options;
    named.method = make.options.method;
    const std::string difference =
        differenceOf(there->options, there->counts(), named, make.counts);
    if (!difference.empty())
        return Error{folder + ": " + difference};
    return {};
}

int check(const AbstractArguments& options, const MakeOptions& make) {
    if (const Status named = isAsNamed(make); !named)
        return fail(named.error());
    StepProgress progress(options.quiet);
    AbstractionCheck checking;
    checking.directory = make.directory;
    checking.name = make.nameOrOwn();
    checking.seed = options.making.seed;
    checking.threads = make.threads;
    checking.stop = interrupted;
    checking.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
        progress.at(step, done, total);
    };
    const auto checked = checkAbstraction(checking);
    if (!checked)
        return stoppedOrFailed(checked.error());
    auto rounds = nlohmann::ordered_json::array();
    for (size_t round = 0; round < holdemRounds; ++round) {
        rounds.push_back({{"round", roundNames[round]}, {"handsChecked", (*checked)[round]}});
        if (!options.json)
            fmt::print("{}: good, {} hands checked\n", roundNames[round],
                       describeCount((*checked)[round]));
    }
    if (options.json)
        printJson({{"name", checking.name}, {"good", true}, {"rounds", rounds}});
    return exitDone;
}

void printSummary(const MadeAbstraction& made, bool json) {
    const AbstractionDescription& description = made.description;
    auto rounds = nlohmann::ordered_json::array();
    for (size_t round = 0; round < holdemRounds; ++round) {
        const RoundDescription& own = description.rounds[round];
        rounds.push_back({{"round", roundNames[round]},
                          {"buckets", own.buckets},
                          {"hands", own.hands},
                          {"sumOfDistances", own.distance},
                          {"meanDistance", own.meanDistance()}});
        if (json)
            continue;
        fmt::print("{}: {} buckets of {} hands", roundNames[round], describeCount(own.buckets),
                   describeCount(own.hands));
        if (description.options.method == AbstractionMethod::emd)
            fmt::print(", sum of distances {}, mean {:.4f}", own.distance, own.meanDistance());
        fmt::print("\n");
    }
    auto steps = nlohmann::ordered_json::array();
    for (const MadeAbstraction::Step& step : made.steps) {
        steps.push_back({{"name", step.name}, {"seconds", step.seconds}});
        if (!json)
            fmt::print("{}: {}\n", step.name, describeDuration(step.seconds));
    }
    if (json)
        printJson(
            {{"folder", made.folder}, {"made", made.made}, {"rounds", rounds}, {"steps", steps}});
    else
        fmt::print("{}: {}\n", made.folder, made.made ? "made" : "good already");
}

int abstractCards(const AbstractArguments& options) {
    const MakeOptions make = makeOptions(options);
    if (options.dryRun)
        return showPlan(make, options.json);
    if (options.verify)
        return check(options, make);
    const auto made = makeCards(make, options.quiet);
    if (!made)
        return stoppedOrFailed(made.error());
    printSummary(*made, options.json);
    return exitDone;
}

void addFitOptions(CLI::App& command, AbstractionOptions& making) {
    addWholeNumber(command, "--sample", making.sample, 1000, mostSample,
                   "Turn hands, and river hands, to fit to; by itself 500,000 to 2,000,000,\n"
                   "200 a bucket");
    addWholeNumber(command, "--restarts", making.restarts, 1, 1000,
                   "Fits of a round, the best of which is kept");
    addWholeNumber(command, "--iterations", making.iterations, 1, 1'000'000,
                   "Iterations of a fit at most");
    addWholeNumber(command, "--tolerance", making.tolerance, 1, 1'000'000'000,
                   "A fit ends when an iteration wins less than one part in N");
    addWholeNumber(command, "--clusters", making.clusters, 1, strengthWidth,
                   "Clusters of starting hands that river hands are measured against");
}

} // namespace

void addAbstractCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<AbstractArguments>();
    CLI::App& command = addCommand(
        app, "abstract", "Make a card abstraction: hands of each round in so many buckets",
        "tamarin abstract 169-200-200-200 --dir run\n"
        "  tamarin abstract 169-1000-1000-1000 --dry-run\n\n"
        "The counts are those of pre-flop, flop, turn and river. Files lie below lookup/NAME/. A "
        "run that\n"
        "was stopped goes on where it was when the same command is given again.");
    command.add_option("COUNTS", options->counts, "Buckets a round, such as 169-200-200-200")
        ->required();
    addDirectoryOption(command, options->directory);
    command
        .add_option("--method", options->method,
                    "emd: by what the hands' equity can become; percentile: by equity alone")
        ->type_name("NAME");
    command
        .add_option("--name", options->name,
                    "Folder below lookup/; by itself COUNTS, or COUNTS-percentile")
        ->type_name("NAME");
    addFitOptions(command, options->making);
    CLI::Option* const verify = command.add_flag(
        "--verify", options->verify, "Make nothing; check all bytes and count random hands afresh");
    command.add_flag("--force", options->force, "Make it anew, whatever is there")
        ->excludes(verify);
    command
        .add_flag("--dry-run", options->dryRun,
                  "Say what would be made, and the disk, memory and time it takes")
        ->excludes(verify);
    addSeedOption(command, options->making.seed);
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = abstractCards(*options); });
}

} // namespace tamarin
