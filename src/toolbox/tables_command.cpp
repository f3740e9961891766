// tamarin tables: makes the tables below lookup/ that a player needs, exactly and only once.
#include "abstraction/EquityTables.h"
#include "abstraction/round_indexers.h"
#include "directory/table_manifest.h"
#include "support/clock.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/lock.h"
#include "support/progress.h"
#include "support/resources.h"
#include "support/rng.h"
#include "support/step_progress.h"
#include "table_builder/sampling_estimate.h"
#include "table_builder/table_builder.h"
#include "table_builder/table_check.h"
#include "toolbox/command.h"
#include "toolbox/verify.h"

#include <csignal>
#include <iostream>
#include <memory>

namespace tamarin {

namespace {

struct TablesArguments {
    std::vector<std::string> only;
    std::string directory = ".";
    std::string memory;
    uint64_t seed = 1;
    int threads = 0;
    bool force = false;
    bool dryRun = false;
    bool sampled = false;
    bool verify = false;
    bool json = false;
    bool quiet = false;
};

constexpr const char* states[] = {"good", "missing", "wrong size", "unusable", "damaged"};

std::string groupNames() {
    std::string names;
    for (int g = 0; g < tableGroups; ++g)
        names += (g == 0 ? "" : ", ") + std::string(nameOf(static_cast<TableGroup>(g)));
    return names;
}

std::vector<TableGroup> groupsOf(const TablesArguments& options) {
    std::vector<TableGroup> groups;
    for (const std::string& name : options.only) {
        bool known = false;
        for (int g = 0; g < tableGroups; ++g)
            if (name == nameOf(static_cast<TableGroup>(g))) {
                groups.push_back(static_cast<TableGroup>(g));
                known = true;
            }
        if (!known)
            throw UsageError(
                fmt::format("there is no table '{}'; the tables are: {}", name, groupNames()));
    }
    return groups;
}

uint64_t memoryLimit(const TablesArguments& options) {
    if (options.memory.empty())
        return 0;
    CLI::AsSizeValue parse(true); // MB as it is printed, MiB for the other
    std::string text = options.memory;
    const std::string problem = parse(text);
    if (!problem.empty())
        throw UsageError(fmt::format("--memory {}: give a size such as 2GB", options.memory));
    return std::stoull(text);
}

// The plan, and nothing done.
int showPlan(const TablesArguments& options, const TablePlan& plan) {
    const std::string lookup = inDirectory(options.directory, "lookup");
    auto files = nlohmann::ordered_json::array();
    for (const PlannedTable& table : plan.tables)
        files.push_back({{"file", inDirectory(options.directory, table.file->path)},
                         {"state", states[static_cast<size_t>(table.state)]},
                         {"make", table.make},
                         {"bytes", table.file->bytes}});
    if (options.json) {
        printJson({{"directory", lookup},
                   {"diskBytes", plan.disk},
                   {"freeDiskBytes", freeDisk(lookup)},
                   {"memoryBytes", plan.memory},
                   {"availableMemoryBytes", availableMemory()},
                   {"seconds", plan.seconds},
                   {"tables", files}});
        return exitDone;
    }
    for (const PlannedTable& table : plan.tables)
        if (!table.problem.empty())
            fmt::print("{}{}\n", table.problem,
                       table.state == TableState::wrongSize ? "; would make it anew" : "");
    for (int g = 0; g < tableGroups; ++g) {
        const auto group = static_cast<TableGroup>(g);
        size_t make = 0;
        size_t all = 0;
        for (const PlannedTable& table : plan.tables)
            if (table.file->group == group) {
                ++all;
                make += table.make;
            }
        if (all == 0)
            continue;
        fmt::print("{}: {}\n", nameOf(group),
                   make == 0
                       ? std::string("nothing to do")
                       : fmt::format("would make {} of {} files, {}: {} of disk, {} of "
                                     "memory, about {}",
                                     make, all, describe(group), describeBytes(diskOf(plan, group)),
                                     describeBytes(memoryOf(group)),
                                     describeDuration(secondsOf(plan, group))));
    }
    if (!plan.nothingToDo())
        fmt::print("in all {} of disk ({} free), {} of memory ({} available), about {} on two "
                   "cores\n",
                   describeBytes(plan.disk), describeBytes(freeDisk(lookup)),
                   describeBytes(plan.memory), describeBytes(availableMemory()),
                   describeDuration(plan.seconds));
    return exitDone;
}

// What sampling would take here; samples a slice and writes nothing.
int showSamplingEstimate(const TablesArguments& options) {
    global_urng().seed(static_cast<uint32_t>(options.seed % 2147483647));
    const SamplingEstimate estimate = estimateSampling(options.directory);
    auto rounds = nlohmann::ordered_json::array();
    for (size_t r = 0; r < estimate.rounds.size(); ++r) {
        const SamplingEstimate::Round& round = estimate.rounds[r];
        rounds.push_back({{"round", roundNames[r]},
                          {"hands", roundSizes[r]},
                          {"measuredHands", round.hands},
                          {"handSeconds", round.handSeconds},
                          {"seconds", round.roundSeconds}});
        if (!options.json)
            fmt::print("{}: {} hands of {:.1f} microseconds, about {} ({} hands measured)\n",
                       roundNames[r], roundSizes[r], round.handSeconds * 1e6,
                       describeDuration(round.roundSeconds), round.hands);
    }
    if (options.json)
        printJson({{"rounds", rounds}, {"seconds", estimate.seconds()}});
    else
        fmt::print("sampling all equities would take about {} of one core, {:.1f} days\n",
                   describeDuration(estimate.seconds()), estimate.seconds() / 86400);
    return exitDone;
}

// The plain form: equities that EquityTables samples. It draws from the process-wide engine.
int sample(const TablesArguments& options) {
    if (Status made = makeDirectories(inDirectory(options.directory, "lookup")); !made)
        return fail(made.error());
    global_urng().seed(static_cast<uint32_t>(options.seed % 2147483647));
    // It asks nobody whether to stop, and loses only the round it is at.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_DFL);
    EquityTables(options.directory, std::cout).load();
    return exitDone;
}

int makeTables(const TablesArguments& options) {
    BuildOptions build;
    build.directory = options.directory;
    build.groups = groupsOf(options);
    build.force = options.force;
    build.threads = options.threads;
    build.memory = memoryLimit(options);
    if (options.dryRun && options.sampled)
        return showSamplingEstimate(options);
    if (options.dryRun)
        return showPlan(options, planTables(build.directory, build.groups, build.force));
    if (options.verify) {
        ReportOptions report;
        report.directory = options.directory;
        report.groups = build.groups;
        report.seed = options.seed;
        report.threads = options.threads;
        return verify(report, options.json, options.quiet);
    }
    if (options.sampled)
        if (const int status = sample(options); status != exitDone)
            return status;

    StepProgress progress(options.quiet);
    const std::string lookup = inDirectory(options.directory, "lookup");
    for (int g = 0; g < tableGroups; ++g)
        build.lookInto.push_back(static_cast<TableGroup>(g));
    const TimePoint start = steadyClock().now();
    const auto built = buildForCommand(build, progress);
    if (!built) {
        if (stoppedBySignal(built.error()))
            progress.line("stopped; what is done is kept, and the same command goes on from there");
        return stoppedOrFailed(built.error());
    }
    progress.line(fmt::format("all in {}", describeDuration(seconds(steadyClock().now() - start))));

    auto files = nlohmann::ordered_json::array();
    for (const BuiltTable& table : built->tables) {
        const std::string path = inDirectory(options.directory, table.file->path);
        files.push_back({{"file", path}, {"bytes", table.file->bytes}, {"made", table.made}});
        if (!options.json)
            fmt::print("{}: {} ({})\n", path, table.made ? "made" : "good already",
                       describeBytes(table.file->bytes));
    }
    if (options.json) {
        auto steps = nlohmann::ordered_json::array();
        for (const BuildReport::Step& step : built->steps)
            steps.push_back(
                {{"name", nameOf(step.group)}, {"seconds", step.seconds}, {"bytes", step.bytes}});
        printJson({{"directory", lookup}, {"steps", steps}, {"tables", files}});
    }
    return exitDone;
}

} // namespace

void addTablesCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<TablesArguments>();
    CLI::App& command = addCommand(
        app, "tables", "Make the tables below lookup/ that are missing",
        "tamarin tables --dir run\n"
        "  tamarin tables --only equity,clusters --dry-run\n\n"
        "A file that is there is left alone, unless it is of the wrong size or damaged: that one "
        "is\n"
        "kept as NAME.bad and made anew. Every file appears whole or not at all, so a run that was "
        "stopped\n"
        "goes on where it was. What a wanted table is made from is made, too.");
    command
        .add_option("--only", options->only,
                    "Make or check only these, separated by commas: " + groupNames())
        ->delimiter(',')
        ->type_name("NAMES");
    addDirectoryOption(command, options->directory);
    CLI::Option* const verify =
        command.add_flag("--verify", options->verify,
                         "Make nothing; check sizes, hashes, ranges and random entries");
    command.add_flag("--force", options->force, "Make them even when they are there")
        ->excludes(verify);
    command
        .add_flag("--dry-run", options->dryRun,
                  "Say what would be made, and the disk, memory and time it takes")
        ->excludes(verify);
    command
        .add_flag("--sampled", options->sampled,
                  "Sample missing equities by 1,000 deals a hand, for comparison; takes most of\n"
                  "a day, which --dry-run measures")
        ->excludes(verify);
    command.add_option("--memory", options->memory, "Memory to take at most, such as 1GB")
        ->check([](const std::string& text) {
            return std::string(text.empty() ? "give a size such as 2GB" : "");
        })
        ->type_name("SIZE");
    addSeedOption(command, options->seed)
        ->description("Seed of the hands that --verify looks at, and of --sampled");
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = makeTables(*options); });
}

} // namespace tamarin
