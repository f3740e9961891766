// The report on the generated files of a playing directory; for `tables --verify` and `verify`.
#pragma once

#include "table_builder/table_plan.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

struct ReportOptions {
    std::string directory = ".";
    std::vector<TableGroup> groups; // of tables; all when empty
    bool strategies = false;        // check these and card abstractions as well
    uint64_t seed = 1;
    int threads = 0;
    std::function<void(const std::string& step)> progress; // told each step of the check
};

struct FilesReport {
    size_t wrong = 0; // files
    std::string text; // a line a file
    nlohmann::ordered_json json;
};

// Checks the tables, compares their hashes with the manifest, and does so for the strategies where
// they are wanted; of card abstractions every byte, too.
FilesReport reportFiles(const ReportOptions& options);

} // namespace tamarin
