// Deals of the auxiliary games: training on them, and utilities sampled from them.
//
// Both deal as CFR::trainIS and CFR::fillUtility do, card for card, from the process-wide engine or
// from one of the caller's. Cluster tables are large and looked up at random, so deals are drawn in
// batches and their table entries asked for ahead of time.
#pragma once

#include "abstraction/round_indexers.h"
#include "holdem/auxiliary_game.h"

#include <cstddef>
#include <cstdint>
#include <random>

namespace tamarin {

// The clusters of a round: clusters[hand_index_last(indexer, hand)].
struct ClusterLookup {
    const hand_indexer_t* indexer;
    const uint8_t* clusters;
};

// iterations times every starting hand of every seat.
class AuxiliaryTraining {
public:
    AuxiliaryTraining(AuxiliaryGame& auxiliary, ClusterLookup lookup);

    void run(unsigned long long iterations); // process-wide engine
    void run(unsigned long long iterations, std::minstd_rand0& engine);

private:
    template <class Draws>
    void run(unsigned long long iterations, Draws& draws);

    static constexpr size_t hands = roundSizes[0];
    static constexpr size_t deckSize = 50;

    AuxiliaryGame& auxiliary_;
    ClusterLookup lookup_;
    uint8_t hand_[hands][2];
    uint8_t deck_[hands][64]; // without the hand, ascending
};

// Deals sampled for each hand of a round.
constexpr int samplesOfRound(int round) {
    return round == 3 ? 2 : 10;
}

// Fills utilities[seat][i - begin] for the hands begin <= i < end of the round. Any number of
// threads may fill different hands with engines of their own.
class UtilityFiller {
public:
    // The cluster table must have at least 256 entries, or as many as the round has hands: the
    // hero's own cluster is deliberately that of the hand's index modulo 256.
    UtilityFiller(const AuxiliaryGame& auxiliary, ClusterLookup lookup, int round)
        : auxiliary_(auxiliary), values_(auxiliary), lookup_(lookup), round_(round) {}

    void fill(size_t begin, size_t end, double* const* utilities) const; // process-wide engine
    void fill(size_t begin, size_t end, double* const* utilities, std::minstd_rand0& engine) const;

private:
    template <class Draws>
    void fill(size_t begin, size_t end, double* const* utilities, Draws& draws) const;

    const AuxiliaryGame& auxiliary_;
    AuxiliaryGame::Values values_;
    ClusterLookup lookup_;
    int round_;
};

} // namespace tamarin
