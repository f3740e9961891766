#include "clustering/river_strength.h"

#include "abstraction/round_indexers.h"
#include "abstraction/showdown_sweep.h"
#include "eval/hand_evaluator.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

using Weights = WeightRow<int16_t, strengthWidth>;

// For all clusters at once.
void scaleRow(const Weights& wins, const Weights& deals, uint32_t clusters, StrengthRow& row) {
    int32_t allWins = 0;
    int32_t allDeals = 0;
    for (size_t c = 0; c < strengthWidth; ++c) {
        allWins += wins.lane[c];
        allDeals += deals.lane[c];
    }
    // One short loop a step: g++ makes vectors of these and of no longer one.
    std::array<int32_t, strengthWidth> ownWins;
    std::array<int32_t, strengthWidth> ownDeals;
    for (size_t c = 0; c < strengthWidth; ++c) {
        const int32_t none = -(deals.lane[c] == 0); // all bits, or none
        ownWins[c] = wins.lane[c] + (allWins & none);
        ownDeals[c] = deals.lane[c] + (allDeals & none);
    }
    std::array<int32_t, strengthWidth> scaled;
    for (size_t c = 0; c < strengthWidth; ++c)
        scaled[c] = static_cast<int32_t>(scaledEquity(ownWins[c], ownDeals[c]));
    for (size_t c = 0; c < strengthWidth; ++c)
        row[c] = static_cast<uint8_t>(scaled[c]);
    for (size_t c = clusters; c < strengthWidth; ++c)
        row[c] = 0;
}

} // namespace

RiverStrength::RiverStrength(const std::vector<uint8_t>& clusterOf, uint32_t clusters)
    : clusters_(clusters) {
    assert(clusterOf.size() == roundSizes[0] && clusters >= 1 && clusters <= strengthWidth);
    const RoundIndexer indexer(0);
    for (uint8_t high = 1; high < deckCards; ++high)
        for (uint8_t low = 0; low < high; ++low) {
            const uint8_t cards[] = {low, high};
            const uint8_t cluster = clusterOf[hand_index_last(indexer.get(), cards)];
            assert(cluster < clusters);
            clusterOf_[low][high] = clusterOf_[high][low] = cluster;
        }
}

void RiverStrength::rows(const uint8_t* board, StrengthRow* rows) const {
    std::array<uint16_t, riverHoldings> values;
    HandEvaluator::shared().rankHoldings({board, 5}, values.data());
    const HoldingOrder order(values.data(), 47);
    uint8_t left[deckCards];
    cardsWithout(board, 5, left);
    std::array<Weights, riverHoldings> weights{};
    for (size_t high = 1; high < 47; ++high)
        for (size_t low = 0; low < high; ++low)
            weights[holdingNumber(low, high)].lane[clusterOf_[left[low]][left[high]]] = 1;
    sweepShowdowns(
        order, weights.data(),
        [&](size_t holding, const Weights& beaten, const Weights& notBetter, const Weights& all) {
            Weights wins = beaten;
            wins.add(notBetter);
            // A holding ties with itself in its own cluster's lane, and is no opponent:
            // the sweep has left it out of both sums.
            scaleRow(wins, all, clusters_, rows[holding]);
        });
}

StrengthRow RiverStrength::row(const uint8_t* cards) const {
    std::array<uint16_t, riverHoldings> values;
    HandEvaluator::shared().rankHoldings({cards + 2, 5}, values.data());
    uint8_t left[deckCards];
    cardsWithout(cards + 2, 5, left);
    const auto a = static_cast<size_t>(std::find(left, left + 47, cards[0]) - left);
    const auto b = static_cast<size_t>(std::find(left, left + 47, cards[1]) - left);
    const uint16_t own = values[holdingNumber(std::min(a, b), std::max(a, b))];
    std::array<int32_t, strengthWidth> wins{};
    std::array<int32_t, strengthWidth> deals{};
    for (size_t high = 1; high < 47; ++high) {
        if (high == a || high == b)
            continue;
        const auto& clusters = clusterOf_[left[high]];
        const uint16_t* const ofHigh = &values[holdingNumber(0, high)];
        for (size_t low = 0; low < high; ++low) {
            if (low == a || low == b)
                continue;
            const uint8_t cluster = clusters[left[low]];
            wins[cluster] += (own > ofHigh[low]) + (own >= ofHigh[low]);
            ++deals[cluster];
        }
    }
    Weights winsRow;
    Weights dealsRow;
    for (size_t c = 0; c < strengthWidth; ++c) {
        winsRow.lane[c] = static_cast<int16_t>(wins[c]);
        dealsRow.lane[c] = static_cast<int16_t>(deals[c]);
    }
    StrengthRow row;
    scaleRow(winsRow, dealsRow, clusters_, row);
    return row;
}

} // namespace tamarin
