#include "toolbox/table_report.h"

#include "tables/table_check.h"
#include "toolbox/command.h"
#include "toolbox/manifest.h"

#include <algorithm>
#include <filesystem>

namespace tamarin {

int reportTables(const std::string& directory, uint64_t seed, int threads, bool json, bool quiet) {
    const std::string lookup = inDirectory(directory, "lookup");
    std::vector<std::string> hashed;
    const auto compared = compareWithManifest(lookup, hashed);
    CheckOptions check;
    check.directory = directory;
    check.seed = seed;
    check.threads = threads;
    if (!quiet)
        check.progress = [](const std::string& step) { fmt::print(stderr, "checking {}\n", step); };

    auto files = nlohmann::ordered_json::array();
    size_t wrong = 0;
    for (const CheckedTable& table : checkTables(check)) {
        const std::string path = inDirectory(directory, table.file->path);
        const std::string name = std::filesystem::path(path).filename().string();
        const bool hashKnown = std::find(hashed.begin(), hashed.end(), name) != hashed.end();
        std::string result = "good";
        if (table.state == TableState::missing)
            result = "missing";
        else if (!table.problem.empty())
            result = table.problem;
        wrong += !table.problem.empty();
        if (json)
            files.push_back({{"file", path},
                             {"good", table.problem.empty() && result == "good"},
                             {"result", result},
                             {"hash", hashKnown}});
        else
            fmt::print("{}: {}{}\n", path, result, hashKnown ? ", as the manifest says" : "");
    }
    auto differences = nlohmann::ordered_json::array();
    if (compared)
        for (const std::string& difference : *compared) {
            ++wrong;
            differences.push_back(difference);
            if (!json)
                fmt::print("{}\n", difference);
        }
    else {
        wrong += std::filesystem::exists(lookup + "/manifest.json");
        if (!json)
            fmt::print("no hashes to compare with: {}\n", compared.error());
    }
    if (json)
        printJson({{"directory", lookup},
                   {"wrong", wrong},
                   {"tables", files},
                   {"differences", differences},
                   {"manifest", compared ? "read" : compared.error()}});
    return wrong == 0 ? exitDone : exitFailed;
}

} // namespace tamarin
