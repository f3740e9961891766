// Whether the tables below lookup/ are what the builder makes.
//
// Checks the size of each file and the range of every entry, and computes contents again: the
// seven-card table and its ranks whole; the equities of random hands drawn by seed, on the river
// from a sweep of the board, before it as means over the next card; all clusters and all buckets
// from the tables they are made from. Utilities are sampled, so only their range is checked here;
// their hashes are in the manifest.
#pragma once

#include "table_builder/table_plan.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tamarin {

struct CheckOptions {
    std::string directory = ".";
    std::vector<TableGroup> groups; // to be checked; all when empty
    uint64_t seed = 1;
    int hands = 200; // drawn of each equity table
    int threads = 0;
    std::function<void(const std::string& step)> progress;
};

struct CheckedTable {
    const TableFile* file;
    TableState state;
    std::string problem; // empty: good, as far as it could be checked
};

// Every table of the groups, in order. A missing one has no problem text.
std::vector<CheckedTable> checkTables(const CheckOptions& options);

} // namespace tamarin
