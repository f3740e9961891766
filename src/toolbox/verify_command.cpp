// tamarin verify: whether what was generated in a playing directory is still what it was.
#include "toolbox/commands.h"
#include "toolbox/table_report.h"

#include <memory>

namespace tamarin {

void addVerifyCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<ReportOptions>();
    options->strategies = true;
    CLI::App& command = addCommand(
        app, "verify", "Check tables and strategies: sizes, hashes, ranges and random entries",
        "tamarin verify --dir run\n\n"
        "Hashes are those of lookup/manifest.json and strategies/*/manifest.json. Entries of "
        "tables\n"
        "are drawn by --seed and made afresh. Exit status 1 when anything is wrong; a table that "
        "is\n"
        "not there is not, nor is a strategy that no manifest knows: the player trains its own\n"
        "without one.");
    addDirectoryOption(command, options->directory);
    addSeedOption(command, options->seed);
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = reportFiles(*options); });
}

} // namespace tamarin
