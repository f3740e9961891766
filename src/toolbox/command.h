// What every subcommand of `tamarin` shares: how one is declared, how it ends, how it is spoken to.
//
// A subcommand is one file that parses, calls the library and prints. It exposes one function,
//
//     void addShowCommand(CLI::App& app, int& status) {
//         auto options = std::make_shared<ShowOptions>();
//         CLI::App& command = addCommand(app, "show", "Print a strategy",
//                                        "tamarin show kuhn.limit.3p.game --json");
//         command.add_option("GAME", options->game, "Game definition")->required();
//         addJsonOption(command, options->json);
//         command.callback([options, &status] { status = show(*options); });
//     }
//
// declared and listed in commands.{h,cpp}. The body returns one of the statuses there. Results go
// to standard output, progress and log to standard error. Whatever the person typed wrong is thrown
// as a UsageError; whatever else went wrong is one line through complain() and exitFailed.
#pragma once

#include "directory/notice.h"
#include "toolbox/commands.h"

#include <cstdint>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace tamarin {

// A subcommand with a line of description and one example, shown by --help.
CLI::App& addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     const std::string& example);

// Thrown by a command that finds its arguments wrong in a way that the parser cannot see.
class UsageError : public CLI::ParseError {
public:
    explicit UsageError(const std::string& message)
        : CLI::ParseError("UsageError", message, exitUsage) {}
};

// "tamarin: MESSAGE", and exitFailed to return.
int fail(const std::string& message);

// Work that takes long ended with this error: whether it only did what a signal asked for. What
// went wrong while it stopped, a full disk say, is no stop.
bool stoppedBySignal(const std::string& error);
// interruptStatus() then, and fail() otherwise.
int stoppedOrFailed(const std::string& error);

// JSON on standard output, indented, with a line end.
void printJson(const nlohmann::ordered_json& value);

// Options that mean the same in every command; the variable's value is the default.
CLI::Option* addJsonOption(CLI::App& command, bool& json);      // --json
CLI::Option* addSeedOption(CLI::App& command, uint64_t& seed);  // --seed N
CLI::Option* addThreadsOption(CLI::App& command, int& threads); // --threads N, 0: all cores
inline constexpr uint64_t mostThreads = 1024;
CLI::Option* addDirectoryOption(CLI::App& command, std::string& directory); // --dir DIR
CLI::Option* addQuietOption(CLI::App& command, bool& quiet);                // --quiet

} // namespace tamarin
