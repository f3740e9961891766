// Training of a small game for `tamarin train`.
//
// OUT holds each seat's strategy, convergence.jsonl, the newest checkpoints and the manifest.
#pragma once

#include "directory/strategies.h"
#include "toolbox/training_session.h"

namespace tamarin {

// Trains, saves, prints; returns the command's exit status. A signal ends it like a goal.
int trainSmallGame(const NamedGame& game, TrainingRequest request);

} // namespace tamarin
