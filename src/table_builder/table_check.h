// Whether the tables below lookup/ are what the builder makes.
//
// Sizes; ranges of every entry; and the contents made afresh: the seven-card table and its ranks
// whole; for random hands drawn by seed, river
// equities from a sweep of the board and earlier equities as means over the next card; clusters and
// buckets, all of them, from the tables they are made from. Utilities are sampled, so only their
// range is looked at here; their hashes are the manifest's business.
#pragma once

#include "support/result.h"
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

// Every table of the groups, in order; what is missing is no problem.
std::vector<CheckedTable> checkTables(const CheckOptions& options);

} // namespace tamarin
