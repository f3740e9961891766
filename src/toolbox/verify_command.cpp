// tamarin verify: whether what was generated in a playing directory is still what it was.
#include "toolbox/commands.h"
#include "toolbox/table_report.h"

#include <memory>

namespace tamarin {

void addVerifyCommand(CLI::App& app, int& status) {
    struct Options {
        std::string directory = ".";
        uint64_t seed = 1;
        int threads = 0;
        bool json = false;
        bool quiet = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(
        app, "verify", "Check the tables: sizes, hashes, ranges and random entries",
        "tamarin verify --dir run\n\n"
        "Hashes are those of lookup/manifest.json. Entries are drawn by --seed and made afresh.\n"
        "Exit status 1 when anything is wrong; a table that is not there is not.");
    addDirectoryOption(command, options->directory);
    addSeedOption(command, options->seed);
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] {
        status = reportTables(options->directory, options->seed, options->threads, options->json,
                              options->quiet);
    });
}

} // namespace tamarin
