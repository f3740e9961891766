#include "holdem/cluster_meetings.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

constexpr size_t lanes = ClusterMeetings::lanes;
using Counts = std::array<uint16_t, lanes>; // of holdings by cluster

// The holdings added so far, by cluster: all of them, and those with each card.
struct Holdings {
    alignas(64) Counts sum{};
    alignas(64) std::array<Counts, deckCards> with{};

    void add(const HoldingOrder::Holding& holding, size_t cluster) {
        ++sum[cluster];
        ++with[holding.low][cluster];
        ++with[holding.high][cluster];
    }
    // Adds weight x those that share no card with the holding; one with both its cards, the holding
    // itself if it is there, is taken off twice and the caller's to put back.
    void addDisjoint(const HoldingOrder::Holding& holding, uint32_t weight, uint32_t* to) const {
        const Counts& low = with[holding.low];
        const Counts& high = with[holding.high];
        for (size_t i = 0; i < lanes; ++i) {
            const auto count = static_cast<uint16_t>(sum[i] - low[i] - high[i]);
            to[i] += weight * static_cast<uint32_t>(static_cast<int16_t>(count));
        }
    }
};

} // namespace

ClusterMeetings::ClusterMeetings() {
    for (auto& sums : sums_)
        sums.resize(cells);
    for (auto& sums : recent_)
        sums.resize(cells);
}

void ClusterMeetings::addBoard(const HoldingOrder& order, const uint8_t* cluster,
                               const uint8_t* weight) {
    if (recentBoards_ == boardsOfASum)
        flush();
    ++recentBoards_;
    const auto clusterAt = [&](size_t place) { return size_t{cluster[order[place].number]}; };
    Holdings all;
    for (size_t i = 0; i < order.size(); ++i)
        all.add(order[i], clusterAt(i));
    Holdings below;
    const auto addTo = [&](size_t which, const Holdings& holdings, size_t place, uint32_t itself) {
        const uint32_t times = weight[order[place].number];
        uint32_t* const row = &recent_[which][clusterAt(place) * lanes];
        holdings.addDisjoint(order[place], times, row);
        row[clusterAt(place)] += itself * times;
    };
    for (size_t begin = 0; begin < order.size();) {
        const size_t end = order.groupEnd(begin);
        for (size_t i = begin; i < end; ++i)
            addTo(0, below, i, 0);
        for (size_t i = begin; i < end; ++i)
            below.add(order[i], clusterAt(i));
        for (size_t i = begin; i < end; ++i) {
            addTo(1, below, i, 1);
            addTo(2, all, i, 1);
        }
        begin = end;
    }
}

void ClusterMeetings::flush() {
    for (size_t which = 0; which < sums_.size(); ++which) {
        for (size_t cell = 0; cell < cells; ++cell)
            sums_[which][cell] += recent_[which][cell];
        std::fill(recent_[which].begin(), recent_[which].end(), 0);
    }
    recentBoards_ = 0;
}

void ClusterMeetings::add(size_t own, size_t other, uint64_t worse, uint64_t asGood,
                          uint64_t better) {
    assert(own < numClusters && other < numClusters);
    const size_t cell = own * lanes + other;
    sums_[0][cell] += worse;
    sums_[1][cell] += worse + asGood;
    sums_[2][cell] += worse + asGood + better;
}

void ClusterMeetings::add(const ClusterMeetings& other) {
    for (size_t which = 0; which < sums_.size(); ++which)
        for (size_t cell = 0; cell < cells; ++cell)
            sums_[which][cell] += other.sums_[which][cell] + other.recent_[which][cell];
}

} // namespace tamarin
