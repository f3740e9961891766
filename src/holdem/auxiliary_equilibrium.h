// An equilibrium of a two-player auxiliary game, from the exact numbers of meetings: every cluster
// of both seats at once, no deal is drawn.
//
// CFR+ (Tammelin 2014): regrets that never fall below zero, seats that learn in turn, averages that
// weigh a strategy by the number of its iteration.
#pragma once

#include "holdem/auxiliary_game.h"
#include "holdem/cluster_meetings.h"

#include <array>
#include <cstddef>
#include <vector>

namespace tamarin {

class AuxiliaryEquilibrium {
public:
    // auxiliary: of two players, after start(); it must outlive the object. A deal is a meeting of
    // which seat 0 or seat 1, one as often as the other, holds the hand that was looked at.
    AuxiliaryEquilibrium(AuxiliaryGame& auxiliary, const ClusterMeetings& meetings);

    // So many iterations more.
    void run(size_t iterations);

    // What the two seats could gain together by best responses to the other's average strategy, in
    // chips a deal.
    double nashConv() const;

    // Puts regrets and strategy sums into the game.
    void write() const;

private:
    static constexpr size_t buckets = AuxiliaryGame::numBuckets;
    static constexpr size_t lanes = ClusterMeetings::lanes;
    using Vector = std::array<double, lanes>; // by bucket, padded with zeros
    using Actions = std::array<Vector, numAbstractedActions>;

    // What each of the seat's buckets wins below a child of a node, times the probability of
    // meeting: `other` holds the other seat's probabilities on the way there, by its bucket.
    // choose(node, own, values of its actions) does what the seat does at its own nodes.
    template <class Choose>
    Vector below(int32_t child, size_t seat, const std::vector<Actions>& strategies,
                 const Vector& own, const Vector& other, const Choose& choose) const;
    Vector settle(size_t settlement, size_t seat, const Vector& other) const;
    std::vector<Actions> averages() const;
    double bestResponse(size_t seat, const std::vector<Actions>& averages) const;

    AuxiliaryGame& auxiliary_;
    // By seat and settlement: [the other's bucket][own bucket], the probability that they meet
    // times what the seat then wins.
    std::array<std::vector<std::vector<Vector>>, 2> payoffs_;
    // By node: 1 where the bucket may take the action, else 0.
    std::vector<Actions> open_;
    std::vector<Actions> regrets_;
    std::vector<Actions> current_;
    std::vector<Actions> sums_; // of strategies, weighted
    size_t iterations_ = 0;
};

} // namespace tamarin
