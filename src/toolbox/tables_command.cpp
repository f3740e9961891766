// tamarin tables: makes the tables below lookup/ that a player needs, exactly and only once.
#include "eval/hand_value.h"
#include "eval/seven_card_files.h"
#include "eval/seven_card_table.h"
#include "support/clock.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/commands.h"
#include "toolbox/resources.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace tamarin {

namespace {

struct Options {
    std::vector<std::string> only;
    std::string directory = ".";
    int threads = 0;
    bool force = false;
    bool dryRun = false;
    bool json = false;
    bool quiet = false;
};

// What can be asked for by name. Each entry makes one group of files.
struct TableGroup {
    const char* name;
    const char* what;
    uint64_t bytes;  // of its files
    uint64_t memory; // while it is made
    double seconds;  // on two cores, roughly
};

constexpr uint64_t denseRankBytes = handValueCount * sizeof(int32_t);
constexpr TableGroup groups[] = {
    {"tpt", "the seven-card table and its ranks", sevenCardBytes + denseRankBytes,
     sevenCardBytes + (uint64_t{64} << 20), 1.0},
};

std::string groupNames() {
    std::string names;
    for (const TableGroup& group : groups)
        names += (names.empty() ? "" : ", ") + std::string(group.name);
    return names;
}

bool isWanted(const Options& options, const TableGroup& group) {
    return options.only.empty() ||
           std::find(options.only.begin(), options.only.end(), group.name) != options.only.end();
}

// "missing", "good" or what is wrong with the group's worst file.
Result<std::string> stateOf(const std::string& lookup) {
    for (const auto& check :
         {checkSevenCardFile(lookup + "/tpt"), checkDenseRankFile(lookup + "/tpt.indexes")}) {
        if (!check)
            return Error{check.error()};
        if (check->state == TableFileState::missing)
            return std::string("missing");
        if (check->state == TableFileState::bad)
            return check->problem;
    }
    return std::string("good");
}

// The plan, and nothing done.
int plan(const Options& options, const std::string& lookup) {
    auto list = nlohmann::ordered_json::array();
    for (const TableGroup& group : groups) {
        if (!isWanted(options, group))
            continue;
        const auto state = stateOf(lookup);
        if (!state)
            return fail(state.error());
        const bool make = options.force || *state != "good";
        list.push_back({{"name", group.name},
                        {"state", *state},
                        {"make", make},
                        {"diskBytes", make ? group.bytes : 0},
                        {"memoryBytes", make ? group.memory : 0},
                        {"seconds", make ? group.seconds : 0}});
        if (!options.json)
            fmt::print("{}: {}; {}\n", group.name, *state,
                       make ? fmt::format("would make {}: {} of disk, {} of memory, about {}",
                                          group.what, describeBytes(group.bytes),
                                          describeBytes(group.memory),
                                          describeDuration(group.seconds))
                            : "nothing to do");
    }
    if (options.json)
        printJson({{"directory", lookup},
                   {"freeDiskBytes", freeDisk(lookup)},
                   {"availableMemoryBytes", availableMemory()},
                   {"tables", list}});
    return exitDone;
}

int makeTables(const Options& options) {
    for (const std::string& name : options.only)
        if (std::none_of(std::begin(groups), std::end(groups),
                         [&](const TableGroup& group) { return name == group.name; }))
            throw UsageError(
                fmt::format("there is no table '{}'; the tables are: {}", name, groupNames()));
    const std::string lookup = options.directory + "/lookup";
    if (options.dryRun)
        return plan(options, lookup);

    auto list = nlohmann::ordered_json::array();
    for (const TableGroup& group : groups) {
        if (!isWanted(options, group))
            continue;
        const auto state = stateOf(lookup);
        if (!state)
            return fail(state.error());
        if (options.force || *state != "good")
            if (Status enough = checkResources(group.memory, group.bytes, lookup); !enough)
                return fail(enough.error());
        const TimePoint start = steadyClock().now();
        std::optional<Progress> progress;
        const auto built =
            buildSevenCardFiles(lookup, options.force, options.threads, [&](uint64_t rows) {
                if (options.quiet)
                    return;
                if (!progress)
                    progress.emplace("Computing the seven-card table", "rows", sevenCardStates);
                progress->update(rows);
            });
        if (!built) {
            complain(built.error());
            return interrupted() ? interruptStatus() : exitFailed;
        }
        if (progress)
            progress->finish(sevenCardStates);
        const std::string time = describeDuration(seconds(steadyClock().now() - start));
        const auto addFile = [&](const std::string& file, uint64_t bytes, bool made) {
            list.push_back({{"file", lookup + "/" + file}, {"bytes", bytes}, {"made", made}});
            if (!options.json)
                fmt::print("{}/{}: {} ({})\n", lookup, file, made ? "made" : "good already",
                           describeBytes(bytes));
        };
        addFile("tpt", sevenCardBytes, built->madeTable);
        addFile("tpt.indexes", denseRankBytes, built->madeRanks);
        if (!options.json && (built->madeTable || built->madeRanks))
            fmt::print("made in {}\n", time);
    }
    if (options.json)
        printJson({{"directory", lookup}, {"tables", list}});
    return exitDone;
}

} // namespace

void addTablesCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(
        app, "tables", "Make the tables below lookup/ that are missing or bad",
        "tamarin tables --dir run\n"
        "  tamarin tables --only tpt --dry-run\n\n"
        "A file that is good already is left alone. One of the wrong size or content is kept as\n"
        "NAME.bad and made anew. Every file appears whole or not at all.");
    command
        .add_option("--only", options->only,
                    "Make only these, separated by commas: " + groupNames())
        ->delimiter(',')
        ->type_name("NAMES");
    addDirectoryOption(command, options->directory);
    command.add_flag("--force", options->force, "Make them even when they are good");
    command.add_flag("--dry-run", options->dryRun,
                     "Say what would be made, and the disk, memory and time it takes");
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = makeTables(*options); });
}

} // namespace tamarin
