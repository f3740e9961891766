// The table builder: whatever is missing below lookup/, made exactly and in dependency order.
//
// Seven-card table, equities, clusters, utilities, hold'em tables; minutes where the plain form in
// EquityTables takes most of a day. Each file appears whole or not at all, so work that was
// stopped, even by a crash, goes on with the file it was at and ends in the same bytes. No bytes
// depend on chance or on the number of threads. Builders in one directory wait for each other. A
// file of the wrong size is moved to NAME.bad and made again. So is a damaged one
// (abstraction/table_contents.h). The builder reads through every file that it is about to use, and
// through others when asked to.
//
// The auxiliary games are read from the directory; where it has none, the built-in ones serve. A
// file that may not be read, or something else in a file's place, stops the work before it
// begins.
#pragma once

#include "support/result.h"
#include "table_builder/table_plan.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tamarin {

struct BuildOptions {
    std::string directory = ".";    // the playing directory
    std::vector<TableGroup> groups; // wanted; all when empty
    int forPlayers = 0;             // 2 or 3: what play with so many reads, instead of groups
    bool force = false;             // make the wanted ones even when they are there; of groups only
    std::vector<TableGroup> lookInto; // those of the wanted whose every entry is looked at
    int threads = 0;                  // 0: all cores
    uint64_t memory = 0;              // bytes that may be taken; 0: as much as is useful

    // Told what is going on, on the calling thread; none need be given.
    std::function<void(const std::string& step, uint64_t done, uint64_t total)> progress;
    std::function<void(const std::string& line)> log;
    // Told which files a step is about to make, and that they are there; the directory is locked.
    std::function<void(const std::vector<const TableFile*>& files)> begin;
    std::function<void(const std::vector<const TableFile*>& files)> made;
    // Asked often, on any thread; true stops the work. The error is then "stopped".
    std::function<bool()> stop;
};

struct BuiltTable {
    const TableFile* file;
    bool made; // else it was there
};
struct BuildReport {
    struct Step {
        TableGroup group;
        double seconds;
        uint64_t bytes;
    };
    std::vector<Step> steps; // those that did something
    std::vector<BuiltTable> tables;
};

// The lock that builders in one directory take turns by; lookup is the tables' directory.
std::string tableLockPath(const std::string& lookup);

// Refuses at once what there is too little memory or disk for.
Result<BuildReport> buildTables(const BuildOptions& options);

} // namespace tamarin
