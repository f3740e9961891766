// Training of a blueprint by external sampling, for `tamarin train --cards`: no-limit games with a
// bet menu, and limit games for three.
//
// OUT holds the blueprint, convergence.jsonl, blueprint.checkpoint and the manifest.
#pragma once

#include "directory/holdem_game.h"
#include "toolbox/training_session.h"

#include <optional>
#include <string>

namespace tamarin {

// What is trained over.
struct SampledGame {
    std::string cards;          // the card abstraction, by its name or folder
    std::string menu;           // the file; empty in limit games
    std::string menuText;       // the menu itself, where it is in no file
    std::optional<int> ownSeat; // for a menu with sizes of opponents
};

// Trains, saves, prints; returns the command's exit status. A signal leaves a checkpoint and the
// blueprint as it was.
int trainBySampling(const HoldemGame& game, const SampledGame& over, TrainingRequest request);

} // namespace tamarin
