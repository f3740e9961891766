// The subcommands of `tamarin`, one file each.
#pragma once

#include "toolbox/command.h"

namespace tamarin {

void addMatchCommand(CLI::App& app, int& status);
void addBotCommand(CLI::App& app, int& status);
void addPrepareCommand(CLI::App& app, int& status);
void addTrainCommand(CLI::App& app, int& status);
void addExploitCommand(CLI::App& app, int& status);
void addShowCommand(CLI::App& app, int& status);
void addEquityCommand(CLI::App& app, int& status);
void addRankCommand(CLI::App& app, int& status);
void addIndexCommand(CLI::App& app, int& status);
void addTablesCommand(CLI::App& app, int& status);
void addVerifyCommand(CLI::App& app, int& status);
void addSignatureCommand(CLI::App& app, int& status);

// Every command, in the order in which --help lists them.
const std::vector<AddCommand>& allCommands();

} // namespace tamarin
