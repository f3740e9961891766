// Checkpoints of a training run.
//
// A checkpoint is DIR/checkpoint.N, N the iteration in 20 digits; the newest two are kept, so that
// a damaged one is not the end of the run. Everything is native little-endian:
//
//   bytes   field
//   8       "tmrnckpt"
//   4       version, 1
//   4       0x01020304, in the writer's byte order
//   8       hash of the configuration text
//   8       its length, L
//   L       the configuration: one "field=value" a line, so that a refusal can name the field
//   8       iteration
//   8       the generator's state
//   8       number of information sets, S
//   72 S    TrainerNumbers
//   8       checksum of all bytes before it (both hashes FNV-1a, 64 bits)
//
// Threads are no part of the configuration: the numbers do not depend on them.
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

// Reads one file. Refuses, in words: what is no checkpoint, one of a newer version, one that is
// cut, extended or damaged, and one made with another configuration, naming the field, its value
// there and the one wanted. Takes no more memory than the file is long.
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
