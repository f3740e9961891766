#include "toolbox/table_report.h"

#include "table_builder/table_check.h"
#include "toolbox/command.h"
#include "toolbox/manifest.h"
#include "toolbox/strategy_report.h"

#include <algorithm>
#include <filesystem>

namespace tamarin {

namespace {

std::string nameOf(const TableFile& file) {
    return std::filesystem::path(file.path).filename().string();
}

// Whether the manifest's file of that name is asked for: with all groups, all are.
bool isAskedFor(const std::vector<TableGroup>& groups, const std::string& name) {
    return groups.empty() ||
           std::any_of(allTables().begin(), allTables().end(), [&](const TableFile& file) {
               return nameOf(file) == name &&
                      std::find(groups.begin(), groups.end(), file.group) != groups.end();
           });
}

// Why there are no hashes; empty where there are.
std::string whyUnknown(const Result<ManifestComparison>& compared, const std::string& lookup) {
    if (!compared)
        return compared.error();
    if (compared->state == ManifestState::absent)
        return "there is no " + lookup + "/manifest.json";
    return compared->state == ManifestState::nonsense
               ? lookup + "/manifest.json is no manifest: delete it"
               : "";
}

} // namespace

int reportFiles(const ReportOptions& options) {
    const bool json = options.json;
    const std::string lookup = inDirectory(options.directory, "lookup");
    const auto compared = compareWithManifest(
        lookup, [&](const std::string& name) { return isAskedFor(options.groups, name); });
    const std::string unknown = whyUnknown(compared, lookup);
    CheckOptions check;
    check.directory = options.directory;
    check.groups = options.groups;
    check.seed = options.seed;
    check.threads = options.threads;
    if (!options.quiet)
        check.progress = [](const std::string& step) { remark("checking {}", step); };

    auto files = nlohmann::ordered_json::array();
    size_t wrong = 0;
    for (const CheckedTable& table : checkTables(check)) {
        const std::string path = inDirectory(options.directory, table.file->path);
        const std::string name = nameOf(*table.file);
        const bool hashKnown = compared && compared->find(name) != nullptr;
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
    if (unknown.empty())
        for (const auto& difference : compared->differences) {
            ++wrong;
            const std::string line = lookup + '/' + difference.name + ": " + difference.problem;
            differences.push_back(line);
            if (!json)
                fmt::print("{}\n", line);
        }
    else {
        wrong += !compared || compared->state != ManifestState::absent;
        if (!json)
            fmt::print("no hashes to compare with: {}\n", unknown);
    }
    auto strategies = nlohmann::ordered_json::array();
    if (options.strategies)
        wrong += reportStrategies(options.directory, json, strategies);
    if (json) {
        nlohmann::ordered_json report = {{"directory", lookup},
                                         {"wrong", wrong},
                                         {"tables", files},
                                         {"differences", differences},
                                         {"manifest", unknown.empty() ? "read" : unknown}};
        if (options.strategies)
            report["strategies"] = strategies;
        printJson(report);
    }
    return wrong == 0 ? exitDone : exitFailed;
}

} // namespace tamarin
