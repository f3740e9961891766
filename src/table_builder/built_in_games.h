// The auxiliary games of the utility tables, for directories that hold none.
#pragma once

#include "game/definition.h"
#include "support/result.h"

#include <string>

namespace tamarin {

// The text of games/kuhn.ROUND.PLAYERSp.game.
std::string auxiliaryGameText(int players, int round);

// The definition that lies in the directory, else the built-in one. Refuses a game of another kind
// or round.
Result<GamePtr> auxiliaryGameIn(const std::string& directory, int players, int round);

} // namespace tamarin
