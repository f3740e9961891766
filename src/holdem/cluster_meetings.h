// How often hands of two clusters meet in a round, and which of them is better: all that an
// auxiliary game depends on, counted over every board, hand and opponent.
//
// Counts are whole numbers, so they may be added up in any order.
#pragma once

#include "abstraction/showdown_sweep.h"
#include "holdem/auxiliary_game.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

class ClusterMeetings {
public:
    static constexpr size_t numClusters = AuxiliaryGame::numBuckets;

    // Clusters padded to whole vectors.
    static constexpr size_t lanes = 112;

    ClusterMeetings();

    // Adds every pair of holdings of a board that share no card, in both orders. cluster: by
    // holding, below numClusters. weight: by holding, how many times a meeting counts in which it
    // is the one that is looked at; at most mostWeight. times: how many times all of it counts; at
    // most mostTimes.
    static constexpr uint32_t mostWeight = 3;
    static constexpr uint32_t mostTimes = 24;
    void addBoard(const HoldingOrder& order, const uint8_t* cluster, const uint8_t* weight,
                  uint32_t times);

    void add(const ClusterMeetings& other);
    // Adds meetings that are known otherwise, of an own with another cluster that was worse, as
    // good or better so many times.
    void add(size_t own, size_t other, uint64_t worse, uint64_t asGood, uint64_t better);

    // Meetings in which a hand of cluster `own` was looked at and met one of cluster `other`: that
    // was worse, as good or better; in all.
    uint64_t beaten(size_t own, size_t other) const { return at(0, own, other); }
    uint64_t tied(size_t own, size_t other) const { return at(1, own, other); }
    uint64_t better(size_t own, size_t other) const {
        return any(own, other) - tied(own, other) - beaten(own, other);
    }
    uint64_t any(size_t own, size_t other) const { return at(2, own, other); }

private:
    static constexpr size_t cells = numClusters * lanes;
    // After so many boards a sum of 32 bits may be full.
    static constexpr size_t boardsOfASum =
        UINT32_MAX /
        (size_t{mostTimes} * mostWeight * numHoldings(deckCards) * numHoldings(deckCards - 2));

    // By how the other hand compares: worse, as good, any; by own cluster; by the other's.
    uint64_t at(size_t which, size_t own, size_t other) const {
        const size_t cell = own * lanes + other;
        return sums_[which][cell] + recent_[which][cell];
    }
    void flush();

    std::array<std::vector<uint64_t>, 3> sums_;
    std::array<std::vector<uint32_t>, 3> recent_; // of the last boards
    size_t recentBoards_ = 0;
};

} // namespace tamarin
