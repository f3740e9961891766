// Finished flops on disk, so that a measure of hours can be stopped and taken up again.
//
// A folder with a file for each flop, named by its cards ("2c7dKh"), whole or absent. Everything is
// native little-endian:
//
//   bytes   field
//   8       "tmrnflop"
//   4       version of the format, 2
//   4       0x01020304, in the writer's byte order
//   8       fingerprint of the game and the strategy
//   8       values of a seat, N
//   4*8*N   best of seat 0, best of seat 1, value of seat 0, value of seat 1 (FlopValues)
//   2*R*8*N later values of seat 0, those of seat 1; R: rounds after the flop
//   8       checksum of all bytes before it
//
// Version 1 had no later values. Its files are read, for they took as long; their flops have none.
#pragma once

#include "response/flop_response.h"
#include "support/result.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tamarin {

// Of everything that the values of a flop depend on: the game's betting, what the strategy does at
// each node with each class, and the classes of some hands of every round. Another strategy, or the
// same over other buckets, gives another one.
uint64_t fingerprintOf(const MeasuredGame& game);

// "2c7dKh".
std::string nameOfFlop(const PublicBoard& flop);

class FinishedFlops {
public:
    FinishedFlops(std::string folder, const MeasuredGame& game);

    // The flop's values where its file is there and sound; nothing where it is absent or damaged,
    // which is as if it were absent. Refuses one of another game or strategy.
    Result<std::optional<FlopValues>> read(const PublicBoard& flop) const;
    // Makes the folder where it is missing.
    Status write(const PublicBoard& flop, const FlopValues& values) const;

private:
    std::string pathOf(const PublicBoard& flop) const;

    std::string folder_;
    uint64_t fingerprint_;
    size_t size_;  // values of a seat
    size_t later_; // rounds after the flop
};

} // namespace tamarin
