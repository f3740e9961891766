// Checkpoints of a small game's training run.
//
// A checkpoint is DIR/checkpoint.N, N the iteration in 20 digits; the newest two are kept, so that
// a damaged one is not the end of the run. It is the frame of training/checkpoint_frame.h around
// the state of the generator (8 bytes) and the TrainerNumbers of all information sets (72 bytes
// each). Version 1 had a frame of its own.
#pragma once

#include "support/file.h"
#include "training/small_game_trainer.h"

#include <string>
#include <vector>

namespace tamarin {

// What a run's numbers depend on: game, algorithm, sampled deals, seed.
std::string checkpointConfig(const SmallGame& game, const TrainerConfig& config);

// Writes DIR/checkpoint.ITERATION whole, then removes the older ones but for the last before it.
Status saveCheckpoint(const std::string& directory, const std::string& config,
                      const TrainerState& state, FileSystem& files = systemFiles());

// Reads one file. Refuses, in words, what CheckpointFile refuses. Takes no more memory than the
// file is long.
Result<TrainerState> readCheckpoint(const std::string& path, const std::string& config,
                                    FileSystem& files = systemFiles());

// The newest checkpoint in a directory that can be used. A damaged one is passed over with a line
// in warnings; one of another configuration, or no good one at all, is an error.
Result<TrainerState> newestCheckpoint(const std::string& directory, const std::string& config,
                                      std::vector<std::string>& warnings,
                                      FileSystem& files = systemFiles());

// The directory's checkpoints, oldest first: regular files whose names bear a number of 64 bits.
std::vector<std::string> listCheckpoints(const std::string& directory);

} // namespace tamarin
