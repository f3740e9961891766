// The program `tamarin`: its subcommands, one file each, and how one is run. What a subcommand is
// written with is in command.h.
#pragma once

#include <vector>

namespace CLI {
class App;
}

namespace tamarin {

// Exit statuses. After a signal the status is interruptStatus() of support/interrupt.h, 128 + its
// number, with the work so far saved and reported.
inline constexpr int exitDone = 0;
inline constexpr int exitFailed = 1;
inline constexpr int exitUsage = 2;

// Adds itself to the program; the callback leaves its exit status in status.
using AddCommand = void (*)(CLI::App& app, int& status);

// The program: parses the arguments with the commands given and runs the one that was named.
// Returns the exit status. Wrong usage prints "tamarin: WHAT; try 'tamarin NAME --help'" and gives
// exitUsage; an exception that escapes a command prints its text and gives exitFailed.
int runToolbox(int argc, const char* const* argv, const std::vector<AddCommand>& commands);

void addMatchCommand(CLI::App& app, int& status);
void addAnalyseCommand(CLI::App& app, int& status);
void addBotCommand(CLI::App& app, int& status);
void addPrepareCommand(CLI::App& app, int& status);
void addTrainCommand(CLI::App& app, int& status);
void addExploitCommand(CLI::App& app, int& status);
void addServeCommand(CLI::App& app, int& status);
void addShowCommand(CLI::App& app, int& status);
void addEquityCommand(CLI::App& app, int& status);
void addRankCommand(CLI::App& app, int& status);
void addIndexCommand(CLI::App& app, int& status);
void addTablesCommand(CLI::App& app, int& status);
void addAbstractCommand(CLI::App& app, int& status);
void addVerifyCommand(CLI::App& app, int& status);
void addConvergenceCommand(CLI::App& app, int& status);
void addSignatureCommand(CLI::App& app, int& status);

// Every command, in the order in which --help lists them.
const std::vector<AddCommand>& allCommands();

} // namespace tamarin
