// The report on the generated files of a playing directory; for `tables --verify` and `verify`.
#pragma once

#include "table_builder/table_plan.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

struct ReportOptions {
    std::string directory = ".";
    std::vector<TableGroup> groups; // of tables; all when empty
    bool strategies = false;        // check these as well
    uint64_t seed = 1;
    int threads = 0;
    bool json = false;
    bool quiet = false;
};

// Checks the tables, compares their hashes with the manifest, and does so for the strategies where
// they are wanted; prints one line a file, or JSON. exitDone when nothing is wrong.
int reportFiles(const ReportOptions& options);

} // namespace tamarin
