// One hold'em training iteration over the compiled tree, with the player's own update rule.
//
// The same strategies, sums and regrets, to the bit, as the plain recursion CFR::calc leaves for
// the same deal. Large trees are walked by all threads: within one deal every information set
// belongs to one node, so subtrees touch different numbers and the result does not depend on who
// walks which.
#pragma once

#include "solver/holdem_buckets.h"
#include "solver/holdem_sets.h"
#include "solver/payoffs.h"

#include <vector>

namespace tamarin {

class HoldemWalk {
public:
    // Everything must outlive the object.
    HoldemWalk(const Game& game, HoldemSets& sets);

    // Updates every information set of the deal (hole cards and whole board in the state). util
    // receives the value to each seat.
    void iterate(const State& deal, const DealBuckets& buckets, double* util);

private:
    // What a visit needs of a node: 20 bytes, in depth-first order.
    struct Step {
        int32_t child[numAbstractedActions];
        uint32_t offset;
        uint8_t slot;
        uint8_t player;
        uint8_t first; // valid actions are first..last
        uint8_t last;
    };

    template <size_t stride>
    void visit(int32_t id, double* reach, double parentReach, double* util) const;
    template <size_t stride, int first, int last>
    void visitKind(const Step& step, double* reach, double parentReach, double* util) const;
    template <size_t stride>
    void visitWithTasks(int32_t id, const double* reach, double parentReach, double* util) const;
    template <size_t stride>
    void iterateFrom(double* util) const;

    const Game& game_;
    HoldemSets& sets_;
    Payoffs payoffs_;
    std::vector<Step> steps_;
    std::vector<SetNumbers*> slotNumbers_; // [slot]: the deal's bucket
    const double* settled_ = nullptr;      // the deal's payoffs
};

} // namespace tamarin
