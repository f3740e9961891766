// Walks of the compiled hold'em tree for one deal: training iterations and values.
//
// Within one deal every information set belongs to one node, so subtrees touch different numbers:
// large trees are walked by all threads, and the result does not depend on who walks which. Many
// deals at once are walked faster by holdem/batch.h.
#pragma once

#include "holdem/buckets.h"
#include "holdem/sets.h"

#include <cstdint>
#include <memory>

namespace tamarin {

// What a walk does at a node.
enum class HoldemRule : uint8_t {
    // The player's own training: regrets weighed with the reach of the player who acted last. The
    // same sums, to the bit, as the plain recursion CFR::calc leaves for the same deal.
    player,
    // Regrets weighed with all other players' reaches (Zinkevich and others 2007; one sampled deal
    // at a time as in Lanctot and others 2009).
    counterfactual,
    // The same with regrets floored at 0 after each update, and only the strategies weighted
    // (Tammelin 2014).
    counterfactualPlus,
    // One seat trains by counterfactual regrets in sets of its own against the others' average
    // strategies.
    respond,
    // Everybody plays the average strategy; nothing is changed.
    average,
};

class HoldemWalk {
public:
    // Everything must outlive the object.
    HoldemWalk(const Game& game, HoldemSets& sets);
    ~HoldemWalk();

    // Walks the deal (hole cards and whole board in the state), updating what the rule says.
    // seatValues receives the value to each seat. Any rule but respond.
    void iterate(HoldemRule rule, const State& deal, const DealBuckets& buckets,
                 double* seatValues);

private:
    template <HoldemRule rule>
    void walk(double* seatValues) const;
    template <HoldemRule rule, size_t stride>
    void walkFromRoot(double* seatValues) const;
    template <HoldemRule rule, size_t stride>
    void visitWithTasks(int32_t id, const double* reach, double parentReach,
                        double* seatValues) const;

    struct Parts;
    const Game& game_;
    HoldemSets& sets_;
    std::unique_ptr<Parts> parts_;
};

} // namespace tamarin
