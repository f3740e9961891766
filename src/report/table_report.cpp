#include "report/table_report.h"

#include "clustering/card_abstraction.h"
#include "directory/manifest.h"
#include "report/names_in.h"
#include "report/strategy_report.h"
#include "table_builder/table_check.h"

#include <algorithm>
#include <filesystem>
#include <set>

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

// The card abstractions below lookup/, by name.
std::set<std::string> abstractionsIn(const std::string& lookup) {
    std::set<std::string> names = namesIn(lookup);
    std::erase_if(names, [&](const std::string& name) {
        std::error_code ignored;
        return !std::filesystem::exists(lookup + '/' + name + '/' + descriptionFileName, ignored);
    });
    return names;
}

// Every byte of each of them. Returns how many are wrong.
size_t reportAbstractions(const ReportOptions& options, const std::string& lookup,
                          std::string& text, nlohmann::ordered_json& json) {
    size_t wrong = 0;
    for (const std::string& name : abstractionsIn(lookup)) {
        if (options.progress)
            options.progress("card abstraction " + name);
        const auto opened = CardAbstraction::open(options.directory, name);
        wrong += !opened;
        const std::string result = opened ? "good" : opened.error();
        json.push_back({{"name", name}, {"good", opened.ok()}, {"result", result}});
        text += abstractionFolder(options.directory, name) + ": " + result + '\n';
    }
    return wrong;
}

} // namespace

FilesReport reportFiles(const ReportOptions& options) {
    FilesReport report;
    const std::string lookup = inDirectory(options.directory, "lookup");
    const auto compared = compareWithManifest(
        lookup, [&](const std::string& name) { return isAskedFor(options.groups, name); });
    const std::string unknown = whyUnknown(compared, lookup);
    CheckOptions check;
    check.directory = options.directory;
    check.groups = options.groups;
    check.seed = options.seed;
    check.threads = options.threads;
    check.progress = options.progress;

    auto files = nlohmann::ordered_json::array();
    for (const CheckedTable& table : checkTables(check)) {
        const std::string path = inDirectory(options.directory, table.file->path);
        const std::string name = nameOf(*table.file);
        const bool hashKnown = compared && compared->find(name) != nullptr;
        std::string result = "good";
        if (table.state == TableState::missing)
            result = "missing";
        else if (!table.problem.empty())
            result = table.problem;
        report.wrong += !table.problem.empty();
        files.push_back({{"file", path},
                         {"good", table.problem.empty() && result == "good"},
                         {"result", result},
                         {"hash", hashKnown}});
        report.text += path + ": " + result + (hashKnown ? ", as the manifest says" : "") + '\n';
    }
    auto differences = nlohmann::ordered_json::array();
    if (unknown.empty())
        for (const auto& difference : compared->differences) {
            ++report.wrong;
            const std::string line = lookup + '/' + difference.name + ": " + difference.problem;
            differences.push_back(line);
            report.text += line + '\n';
        }
    else {
        report.wrong += !compared || compared->state != ManifestState::absent;
        report.text += "no hashes to compare with: " + unknown + '\n';
    }
    auto strategies = nlohmann::ordered_json::array();
    if (options.strategies && options.progress)
        options.progress("strategies");
    if (options.strategies)
        report.wrong += reportStrategies(options.directory, report.text, strategies);
    auto abstractions = nlohmann::ordered_json::array();
    if (options.strategies)
        report.wrong += reportAbstractions(options, lookup, report.text, abstractions);
    report.json = {{"directory", lookup},
                   {"wrong", report.wrong},
                   {"tables", files},
                   {"differences", differences},
                   {"manifest", unknown.empty() ? "read" : unknown}};
    if (options.strategies)
        report.json.update({{"abstractions", abstractions}, {"strategies", strategies}});
    return report;
}

} // namespace tamarin
