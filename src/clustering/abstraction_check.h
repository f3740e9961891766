// Whether a card abstraction is what its description says: every byte of its files, and the buckets
// of random hands, counted afresh.
//
// The features of hands from the flop on are counted without the tables that the making shares
// between hands: board by board, from the ranks of the hands. A starting hand has too many futures
// for that: the pre-flop of emd is compared with what the making's own tables and code give once
// more. The centres and the clusters of starting hands are taken as they stand.
#pragma once

#include "clustering/card_abstraction.h"
#include "clustering/equity_histograms.h"
#include "support/result.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace tamarin {

struct AbstractionCheck {
    std::string directory = ".";
    std::string name;
    uint64_t seed = 1;
    uint64_t hands = 1000; // of the turn and of the river; of the flop a tenth, all before it
    int threads = 0;
    std::function<void(const std::string& step, uint64_t done, uint64_t total)> progress;
    std::function<bool()> stop;
};

// How many hands of each round were looked at. An error names the first that is not in the bucket
// where it belongs. The pre-flop of a percentile abstraction is not looked at.
Result<std::array<uint64_t, holdemRounds>> checkAbstraction(const AbstractionCheck& options);

// Of one hand, two hole cards and three or four board cards: how many rivers lie in each bin of
// equity, and the sum of the equities in halves.
struct PlainEquities {
    std::array<uint32_t, equityBins> bins{};
    uint64_t sum = 0;
    HistogramRow row() const; // counts of "that bin or above", scaled where there are too many
};
PlainEquities plainEquities(const uint8_t* cards, int boardCards);

} // namespace tamarin
