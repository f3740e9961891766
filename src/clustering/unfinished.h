// A card abstraction that is being made: what is done of it, from which the same command goes on.
//
// The file `unfinished` of its folder, a checked file (checked_file.h) whose payload is the
// options, the bucket counts, the rounds that are done (as in abstraction_description.h; buckets is
// 0 for those that are not), the clusters of the starting hands, and the fit under way: its step (4
// bytes, 0 for none) and its state (fit_centres.h), field by field.
#pragma once

#include "clustering/abstraction_description.h"
#include "clustering/fit_centres.h"
#include "support/result.h"

#include <string>
#include <vector>

namespace tamarin {

// The fits, in order.
enum class FitStep : uint32_t { none, startingHands, preflop, flop, turn, river };

struct Unfinished {
    AbstractionOptions options;
    BucketCounts counts{};
    std::array<RoundDescription, holdemRounds> rounds;
    std::vector<uint8_t> startingHandClusters;
    FitStep step = FitStep::none;
    FitState fit;

    bool operator==(const Unfinished&) const = default;
    bool done(int round) const { return rounds[static_cast<size_t>(round)].buckets != 0; }
};

inline constexpr char unfinishedFileName[] = "unfinished";

Status writeUnfinished(const std::string& path, const Unfinished& unfinished);
// Refuses a file that is damaged or holds what no unfinished abstraction does.
Result<Unfinished> readUnfinished(const std::string& path);

} // namespace tamarin
