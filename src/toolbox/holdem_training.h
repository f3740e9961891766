// Training of a hold'em game for a command: `tamarin train` in all its options, and the same work
// as a part of `tamarin prepare`.
//
// OUT holds the strategy (one file for all seats, as `player` reads it), convergence.jsonl,
// training.checkpoint and the manifest.
#pragma once

#include "directory/holdem_game.h"
#include "toolbox/training_session.h"

namespace tamarin {

// Makes missing tables, trains, saves; returns the command's exit status. A signal leaves a
// checkpoint and the strategy file as it was.
int trainHoldemGame(const HoldemGame& game, TrainingRequest request);

} // namespace tamarin
