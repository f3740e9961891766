// tamarin verify: whether what was generated in a playing directory is still what it was.
#include "toolbox/command.h"
#include "toolbox/verify.h"

#include <memory>

namespace tamarin {

namespace {

struct VerifyArguments {
    ReportOptions report;
    bool json = false;
    bool quiet = false;
};

} // namespace

int verify(ReportOptions options, bool json, bool quiet) {
    if (!quiet)
        options.progress = [](const std::string& step) { remark("checking {}", step); };
    const FilesReport report = reportFiles(options);
    if (json)
        printJson(report.json);
    else
        fmt::print("{}", report.text);
    return report.wrong == 0 ? exitDone : exitFailed;
}

void addVerifyCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<VerifyArguments>();
    options->report.strategies = true;
    CLI::App& command = addCommand(
        app, "verify",
        "Check tables, strategies and card abstractions: sizes, hashes, ranges and random entries",
        "tamarin verify --dir run\n\n"
        "Hashes are those of lookup/manifest.json and strategies/*/manifest.json. Entries of "
        "tables\n"
        "are drawn by --seed and made afresh. Exit status 1 when anything is wrong; a table that "
        "is\n"
        "not there is not, nor is a strategy that no manifest knows: the player trains its own\n"
        "without one.");
    addDirectoryOption(command, options->report.directory);
    addSeedOption(command, options->report.seed);
    addThreadsOption(command, options->report.threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback(
        [options, &status] { status = verify(options->report, options->json, options->quiet); });
}

} // namespace tamarin
