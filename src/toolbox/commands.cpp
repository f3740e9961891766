#include "toolbox/commands.h"

namespace tamarin {

const std::vector<AddCommand>& allCommands() {
    static const std::vector<AddCommand> commands = {
        addMatchCommand, addBotCommand, addEquityCommand, addRankCommand, addTablesCommand,
    };
    return commands;
}

} // namespace tamarin
