#include "toolbox/commands.h"

namespace tamarin {

const std::vector<AddCommand>& allCommands() {
    static const std::vector<AddCommand> commands = {
        addMatchCommand,   addServeCommand,    addAnalyseCommand,     addBotCommand,
        addPrepareCommand, addTrainCommand,    addConvergenceCommand, addExploitCommand,
        addShowCommand,    addEquityCommand,   addRankCommand,        addIndexCommand,
        addTablesCommand,  addAbstractCommand, addVerifyCommand,      addSignatureCommand,
    };
    return commands;
}

} // namespace tamarin
