#include "table_builder/table_builder.h"

#include "abstraction/table_names.h"
#include "abstraction/table_store.h"
#include "eval/seven_card_files.h"
#include "eval/seven_card_generator.h"
#include "support/clock.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/lock.h"
#include "support/progress.h"
#include "support/resources.h"
#include "table_builder/build_steps.h"

#include <algorithm>
#include <set>

namespace tamarin {

namespace {

// What a group can do with, by going through the boards more than once.
uint64_t leastMemoryOf(TableGroup group) {
    const uint64_t least = group == TableGroup::equities    ? leastEquityMemory()
                           : group == TableGroup::utilities ? leastUtilityMemory()
                                                            : memoryOf(group);
    return std::min(least, memoryOf(group));
}

Status checkMemory(const BuildOptions& options, const TablePlan& plan) {
    uint64_t memory = plan.memory;
    if (options.memory != 0) {
        uint64_t least = 0;
        for (int g = 0; g < tableGroups; ++g)
            if (const auto group = static_cast<TableGroup>(g); diskOf(plan, group) != 0)
                least = std::max(least, leastMemoryOf(group));
        if (options.memory < least)
            return Error{"this needs " + describeBytes(least) +
                         " of memory at least, more than the " + describeBytes(options.memory) +
                         " allowed"};
        memory = std::min(memory, options.memory);
    }
    return checkResources(memory, plan.disk, inDirectory(options.directory, lookupDirectory));
}

Status buildSevenCards(const BuildOptions& options, const Work& work) {
    const auto& groups = options.groups;
    const bool wanted = groups.empty() || std::find(groups.begin(), groups.end(),
                                                    TableGroup::sevenCards) != groups.end();
    const auto built = buildSevenCardFiles(
        inDirectory(options.directory, lookupDirectory), options.force && wanted, work.threads,
        [&](uint64_t rows) {
            if (options.progress)
                options.progress("Computing the seven-card table", rows, sevenCardStates);
        });
    return built ? Status() : Status(Error{built.error()});
}

Status buildGroup(TableGroup group, const BuildOptions& options, const Work& work,
                  const Files& files) {
    switch (group) {
    case TableGroup::sevenCards:
        return buildSevenCards(options, work);
    case TableGroup::equities:
        return buildEquities(options, work, files);
    case TableGroup::clusters:
        return buildClusters(options, work, files);
    case TableGroup::utilities:
        return buildUtilities(options, work, files);
    case TableGroup::holdem:
        return buildHoldem(options, work, files);
    }
    return {};
}

Result<FileLock> lockTables(const BuildOptions& options) {
    const std::string lookup = inDirectory(options.directory, lookupDirectory);
    if (Status made = makeDirectories(lookup); !made)
        return Error{made.error()};
    const std::string path = tableLockPath(lookup);
    auto lock = FileLock::take(path);
    if (lock)
        return lock;
    if (options.log)
        options.log("waiting: " + lock.error());
    bool stopping = false;
    lock = FileLock::wait(path, [&] {
        stopping = options.stop && options.stop();
        return !stopping && !interrupted();
    });
    if (stopping)
        return stopped();
    return lock;
}

Status checkPlaces(const TablePlan& plan) {
    for (const PlannedTable& table : plan.tables)
        if (table.state == TableState::unusable)
            return Error{table.problem};
    return {};
}

TablePlan planOf(const BuildOptions& options, const DamagedTables& damaged) {
    return options.forPlayers != 0
               ? planTablesForPlay(options.directory, options.forPlayers, damaged)
               : planTables(options.directory, options.groups, options.force, damaged);
}

// Looks into files that are there, and counts those that are damaged among those to be made, with
// what they are made from. good: files that need no other look; more are added. An error when
// something that is no file, or may not be read, is in a table's place.
Result<TablePlan> planWithALook(const BuildOptions& options, const Work& work,
                                std::set<const TableFile*>& good) {
    const auto asked = [&](const TableFile& file) {
        const auto& groups = options.groups;
        const bool wanted = options.forPlayers != 0
                                ? playReads(file, options.forPlayers)
                                : groups.empty() || std::find(groups.begin(), groups.end(),
                                                              file.group) != groups.end();
        return wanted && std::find(options.lookInto.begin(), options.lookInto.end(), file.group) !=
                             options.lookInto.end();
    };
    DamagedTables damaged;
    for (;;) {
        TablePlan plan = planOf(options, damaged);
        if (Status usable = checkPlaces(plan); !usable)
            return Error{usable.error()};
        // A damaged one brings its own sources into the plan.
        std::vector<const TableFile*> unknown;
        for (const PlannedTable& table : plan.tables) {
            const auto isSource = [&](const PlannedTable& made) {
                return made.make && isMadeFrom(*made.file, *table.file);
            };
            if (table.state == TableState::good && !table.make && !good.contains(table.file) &&
                (asked(*table.file) ||
                 std::any_of(plan.tables.begin(), plan.tables.end(), isSource)))
                unknown.push_back(table.file);
        }
        if (unknown.empty())
            return plan;
        for (size_t i = 0; i < unknown.size(); ++i) {
            if (work.shouldStop())
                return stopped();
            if (options.progress)
                options.progress("Looking into tables", i, unknown.size());
            const TableFile& file = *unknown[i];
            std::string problem =
                damageOf(file, inDirectory(options.directory, file.path), work.threads);
            if (problem.empty())
                good.insert(&file);
            else
                damaged[&file] = std::move(problem);
        }
        if (options.progress)
            options.progress("Looking into tables", unknown.size(), unknown.size());
    }
}

BuildReport reportOf(const TablePlan& plan) {
    BuildReport report;
    for (const PlannedTable& table : plan.tables)
        report.tables.push_back({table.file, table.make});
    return report;
}

} // namespace

Work reporting(const BuildOptions& options, const Work& work, const std::string& step) {
    Work part = work;
    part.progress = [&options, step](uint64_t done, uint64_t total) {
        if (options.progress)
            options.progress(step, done, total);
    };
    return part;
}

std::string tableLockPath(const std::string& lookup) {
    return lookup + "/.lock";
}

Result<BuildReport> buildTables(const BuildOptions& options) {
    Work work;
    work.threads = options.threads;
    work.stop = options.stop;
    std::set<const TableFile*> good;
    auto looked = planWithALook(options, work, good);
    if (!looked)
        return Error{looked.error()};
    if (looked->nothingToDo())
        return reportOf(*looked);
    if (Status enough = checkMemory(options, *looked); !enough)
        return Error{enough.error()};
    const auto lock = lockTables(options);
    if (!lock)
        return Error{lock.error()};
    // Another builder may have done it all meanwhile.
    looked = planWithALook(options, work, good);
    if (!looked)
        return Error{looked.error()};
    const TablePlan& plan = *looked;

    BuildReport report = reportOf(plan);
    for (int g = 0; g < tableGroups; ++g) {
        const auto group = static_cast<TableGroup>(g);
        Files files;
        for (const PlannedTable& table : plan.tables)
            if (table.make && table.file->group == group) {
                files.push_back(table.file);
                // The seven-card table's builder sets its own bad files aside.
                const std::string path = inDirectory(options.directory, table.file->path);
                if (group != TableGroup::sevenCards && !table.problem.empty())
                    setTableAside(path, table.problem.substr(path.size() + 1));
            }
        if (files.empty())
            continue;
        if (options.begin)
            options.begin(files);
        const TimePoint start = steadyClock().now();
        if (Status built = buildGroup(group, options, work, files); !built)
            return Error{built.error()};
        if (options.made)
            options.made(files);
        report.steps.push_back({group, seconds(steadyClock().now() - start), diskOf(plan, group)});
        if (options.log)
            options.log(std::string("made ") + describe(group) + ": " +
                        std::to_string(files.size()) + " files, " +
                        describeBytes(report.steps.back().bytes) + ", in " +
                        describeDuration(report.steps.back().seconds));
    }
    return report;
}

} // namespace tamarin
