// Training of a blueprint, a strategy over a card abstraction, for `tamarin train --cards`.
//
// OUT holds the blueprint, convergence.jsonl, blueprint.checkpoint and the manifest.
#pragma once

#include "directory/holdem_game.h"
#include "toolbox/training_session.h"

#include <string>

namespace tamarin {

// cards: the abstraction, by its name or folder. Trains, saves, prints; returns the command's exit
// status. A signal leaves a checkpoint and the blueprint as it was; where a quality is named, it
// leaves what was trained so far instead, unless the blueprint that is there is worth more.
int trainBlueprint(const HoldemGame& game, const std::string& cards, TrainingRequest request);

} // namespace tamarin
