// The subcommands of `tamarin`, one file each.
#pragma once

#include "toolbox/command.h"

namespace tamarin {

// Every command, in the order in which --help lists them.
const std::vector<AddCommand>& allCommands();

} // namespace tamarin
