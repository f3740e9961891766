// Training of a hold'em game for a command: `tamarin train` in all its options, and the same work
// as a part of `tamarin prepare`.
//
// OUT holds the strategy (one file for all seats, as `player` reads it), convergence.jsonl,
// training.checkpoint and the manifest.
#pragma once

#include "toolbox/holdem.h"
#include "training/holdem_run.h"

#include <string>

namespace tamarin {

struct HoldemTraining {
    std::string directory = ".";
    std::string out; // directory of the strategy; where `player` looks when empty
    HoldemTrainerConfig config;
    HoldemGoal goal;
    uint64_t checkpointEvery = 0; // deals; 0: every ten minutes
    bool resume = false;          // go on from the checkpoint, which must be there
    bool resumeIfThere = false;   // the same where there is one of the same configuration
    bool fresh = false;
    bool dryRun = false;
    bool json = false;
    bool quiet = false;
    // Keep the strategy that is replaced as strategy.bad, unless the manifest says that it is whole
    // and of the same game and tables.
    bool keepOther = false;
    std::string made = "tamarin train"; // the command, for the manifest
};

// The defaults, by measurement: see docs/holdem-training.md.
HoldemTrainerConfig defaultHoldemConfig(const Game& game);
HoldemGoal defaultHoldemGoal(const Game& game);

// Makes missing tables, trains, saves; returns the command's exit status. A signal leaves a
// checkpoint and the strategy file as it was.
int trainHoldemGame(const HoldemGame& game, const HoldemTraining& options);

} // namespace tamarin
