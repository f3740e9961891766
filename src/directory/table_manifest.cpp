#include "directory/table_manifest.h"

#include "directory/manifest.h"
#include "directory/notice.h"
#include "support/interrupt.h"
#include "support/lock.h"

#include <filesystem>

namespace tamarin {

namespace {

// How a group's files were made, and what from.
ManifestEntry entryOf(const TableFile& file) {
    const std::string name = std::filesystem::path(file.path).filename().string();
    switch (file.group) {
    case TableGroup::sevenCards:
        return {name, "generated", "the rules"};
    case TableGroup::equities:
        return {name, "counted exactly", "the rules"};
    case TableGroup::clusters:
        return {name, "cut into 101 clusters", "the equities"};
    case TableGroup::utilities:
        return {name, "solved and counted exactly", "the clusters"};
    case TableGroup::holdem:
        return {name, "cut into 10 buckets", "the utilities and equities"};
    }
    return {};
}

std::vector<ManifestEntry> entriesOf(const std::vector<const TableFile*>& files) {
    std::vector<ManifestEntry> entries;
    for (const TableFile* file : files)
        entries.push_back(entryOf(*file));
    return entries;
}

void warnOfManifest(const Status& status) {
    if (!status)
        complain("the manifest is not up to date: {}", status.error());
}

// Enters what a run that was killed made and did not come to enter, unless a builder is at work
// there now and does it itself.
void catchUpOnManifest(const std::string& lookup) {
    if (std::error_code error; !std::filesystem::is_directory(lookup, error))
        return;
    if (const auto lock = FileLock::take(tableLockPath(lookup)); lock)
        warnOfManifest(recordAnnounced(lookup));
}

} // namespace

Result<BuildReport> buildForCommand(BuildOptions build, StepProgress& progress) {
    const std::string lookup = inDirectory(build.directory, "lookup");
    catchUpOnManifest(lookup);
    build.begin = [&](const std::vector<const TableFile*>& files) {
        warnOfManifest(announceFiles(lookup, entriesOf(files)));
    };
    build.made = [&](const std::vector<const TableFile*>& files) {
        warnOfManifest(recordFiles(lookup, entriesOf(files)));
    };
    build.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
        progress.at(step, done, total);
    };
    build.log = [&](const std::string& line) { progress.line(line); };
    build.stop = [] { return interrupted(); };
    return buildTables(build);
}

} // namespace tamarin
