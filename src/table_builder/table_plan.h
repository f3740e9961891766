// Every table file below lookup/, what each is made from, and what is missing.
#pragma once

#include "abstraction/table_names.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tamarin {

// Groups of files in the order in which they are made: each needs some of the groups before it.
enum class TableGroup : uint8_t { sevenCards, equities, clusters, utilities, holdem };
inline constexpr int tableGroups = 5;

// "tpt", "equity", "clusters", "utility", "holdem"
const char* nameOf(TableGroup group);
// "the seven-card table and its ranks"
const char* describe(TableGroup group);

struct TableFile {
    TableGroup group;
    std::string path; // "lookup/flop_2p"
    uint64_t bytes;
    int players = 0; // these three where the group has them
    int round = 0;
    int seat = 0;
};

// All 46 files, in the order in which they are made.
const std::vector<TableFile>& allTables();

// A file as it lies in a playing directory.
// damaged: of the right size, but with contents that no table has; only a caller can know that.
// unusable: a directory, a device or a file that may not be read. The builder makes no table in its
// place; a person has to clear it.
enum class TableState : uint8_t { good, missing, wrongSize, unusable, damaged };
struct PlannedTable {
    const TableFile* file;
    TableState state;
    uint64_t bytesThere = 0; // of a file of the wrong size
    bool make = false;
    std::string problem; // of a wrong size, unusable or damaged, path included
};
// What is wrong with tables of the right size: "holds bucket 255 at hand 0 (byte 0), not 0..9".
using DamagedTables = std::map<const TableFile*, std::string>;

struct TablePlan {
    std::vector<PlannedTable> tables; // those asked for and those they need, in order
    uint64_t disk = 0;                // bytes of what will be made
    uint64_t memory = 0;              // the most that a step takes, mapped files not counted
    double seconds = 0;               // on two cores, roughly
    bool nothingToDo() const { return disk == 0; }
};

// What would be made. groups: those wanted, all when empty; a file that a missing one is made from
// is made, too. force: make the wanted ones again. Looks at sizes only and changes nothing.
// damaged: files known to be; they are treated as files of the wrong size.
TablePlan planTables(const std::string& directory, const std::vector<TableGroup>& groups,
                     bool force, const DamagedTables& damaged = {});

// Whether the one table is made from the other.
bool isMadeFrom(const TableFile& made, const TableFile& source);

// Whether play of a game for so many players (2 or 3) reads the file: the buckets in the keys of
// its strategy, and the equities for states that the strategy does not hold.
bool playReads(const TableFile& file, int players);
// What would be made so that such a game can be played, and nothing else.
TablePlan planTablesForPlay(const std::string& directory, int players,
                            const DamagedTables& damaged = {});

// The same for one group of a plan.
uint64_t diskOf(const TablePlan& plan, TableGroup group);
uint64_t memoryOf(TableGroup group);
double secondsOf(const TablePlan& plan, TableGroup group);

} // namespace tamarin
