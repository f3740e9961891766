// A strong player in one command, for limit and no-limit hold'em for two and limit for three:
// `tamarin prepare --quality`.
#pragma once

#include "directory/holdem_game.h"
#include "toolbox/training_session.h"

#include <string>
#include <vector>

namespace tamarin {

// "quick", "good", "best".
std::vector<std::string> qualityNames();

// Makes the card abstraction of that quality where it is missing, and trains a blueprint over it:
// quick for five minutes (limit for two) or ten, good for an hour, best until it is stopped; or as
// the goal has it. No-limit is trained with the sizes of menus/middle.menu. What was stopped is
// taken up again, for the time that is left. A blueprint that is there and whole stays: one of a
// finished training of this quality, and one of a higher quality. One of a lower quality is
// replaced when the new one is written; one over other cards, or without the checkpoint to go on
// from, is then kept as NAME.bad.
int prepareBlueprint(const HoldemGame& game, const std::string& quality, TrainingRequest request);

} // namespace tamarin
