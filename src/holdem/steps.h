// The walk of one deal down the compiled hold'em tree: what HoldemWalk does from the root and
// HoldemBatch subtree by subtree. An inner part of the two.
#pragma once

#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "holdem/walk.h"
#include "tree/payoffs.h"
#include "tree/regret_matching.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <vector>

namespace tamarin {

// Calls walk with any rule but respond as a template argument: each rule's walk is compiled for
// itself.
template <class Walk>
void withRule(HoldemRule rule, const Walk& walk) {
    switch (rule) {
    case HoldemRule::player:
        return walk.template operator()<HoldemRule::player>();
    case HoldemRule::counterfactual:
        return walk.template operator()<HoldemRule::counterfactual>();
    case HoldemRule::counterfactualPlus:
        return walk.template operator()<HoldemRule::counterfactualPlus>();
    case HoldemRule::average:
        return walk.template operator()<HoldemRule::average>();
    case HoldemRule::respond:
        assert(!"respond() has its own arguments");
    }
}

// Where a deal's numbers and payoffs lie.
struct PlacedDeal {
    std::vector<SetNumbers*> slotNumbers; // [slot]: the deal's bucket
    const double* settled = nullptr;      // its payoffs
    double weight = 1.0;
    size_t responder = 0;
};

// One node of a walk, before and after its children are visited.
template <HoldemRule rule, size_t stride>
struct HoldemVisit {
    SetNumbers& numbers;
    int first;
    int last;
    size_t p;      // to act
    bool trains;   // whether the numbers change
    double weight; // of this deal

    double strategy[numAbstractedActions];
    double below[numAbstractedActions]; // the actor's reach below each action

    HoldemVisit(SetNumbers& numbers_, int first_, int last_, size_t p_, const PlacedDeal& deal)
        : numbers(numbers_), first(first_), last(last_), p(p_),
          trains(rule == HoldemRule::respond ? p_ == deal.responder : rule != HoldemRule::average),
          weight(deal.weight) {}

    void choose(const double* reach) {
        matchRegrets((trains ? numbers.regret : numbers.strategy) + first,
                     static_cast<size_t>(last - first + 1), strategy + first);
        for (int a = first; a <= last; ++a)
            below[a] = strategy[a] * reach[p];
    }

    void addStrategy() {
        for (int a = first; trains && a <= last; ++a)
            numbers.strategy[a] += weight * below[a];
    }

    void addRegret(const double* reach, double parentReach, const double* actionValue,
                   double ownValue) {
        if (!trains)
            return;
        double regretWeight = parentReach; // the player's own rule
        if constexpr (rule != HoldemRule::player) {
            // CFR+ weighs the average only.
            regretWeight = rule == HoldemRule::counterfactualPlus ? 1.0 : weight;
            for (size_t q = 0; q < stride; ++q)
                regretWeight *= q == p ? 1.0 : reach[q];
        }
        for (int a = first; a <= last; ++a) {
            numbers.regret[a] += regretWeight * (actionValue[a] - ownValue);
            if constexpr (rule == HoldemRule::counterfactualPlus)
                numbers.regret[a] = std::max(numbers.regret[a], 0.0);
        }
    }
};

class HoldemSteps {
public:
    // What a visit needs of a node: 20 bytes, in depth-first order.
    struct Step {
        int32_t child[numAbstractedActions];
        uint32_t offset;
        uint8_t slot;
        uint8_t player;
        uint8_t first; // valid actions are first..last
        uint8_t last;
    };

    explicit HoldemSteps(const CompiledTree& tree);

    size_t size() const { return steps_.size(); }
    const Step& operator[](int32_t id) const { return steps_[static_cast<size_t>(id)]; }

    // Points the deal at its buckets' numbers.
    static void place(HoldemSets& sets, Payoffs& payoffs, const State& cards,
                      const DealBuckets& buckets, PlacedDeal& deal);
    // Lets seat's numbers be those of another HoldemSets of the same game.
    static void replaceSeat(const HoldemSets& sets, HoldemSets& responder, int seat,
                            PlacedDeal& deal);

    // Visits the node and all below it. seatValues receives the value to each seat.
    template <HoldemRule rule, size_t stride>
    void visit(const PlacedDeal& deal, int32_t id, double* reach, double parentReach,
               double* seatValues) const;

private:
    template <HoldemRule rule, size_t stride, int first, int last>
    void visitKind(const PlacedDeal& deal, const Step& step, double* reach, double parentReach,
                   double* seatValues) const;

    std::vector<Step> steps_;
};

// The loops over a node's actions have constant bounds here, so that its numbers stay in registers.
template <HoldemRule rule, size_t stride, int first, int last>
void HoldemSteps::visitKind(const PlacedDeal& deal, const Step& step, double* reach,
                            double parentReach, double* seatValues) const {
    const size_t p = step.player;
    HoldemVisit<rule, stride> node(deal.slotNumbers[step.slot][step.offset], first, last, p, deal);
    node.choose(reach);
    node.addStrategy();
    const double ownReach = reach[p];
    double actionValue[numAbstractedActions];
    double value[stride] = {};
    for (int a = first; a <= last; ++a) {
        const int32_t child = step.child[a];
        double visited[stride];
        const double* childValue = visited;
        if (child >= 0) {
            reach[p] = node.below[a];
            visit<rule, stride>(deal, child, reach, node.below[a], visited);
        } else {
            childValue = deal.settled + static_cast<size_t>(~child) * stride;
        }
        actionValue[a] = childValue[p];
        for (size_t q = 0; q < stride; ++q)
            value[q] += node.strategy[a] * childValue[q];
    }
    reach[p] = ownReach;
    node.addRegret(reach, parentReach, actionValue, value[p]);
    std::copy_n(value, stride, seatValues);
}

template <HoldemRule rule, size_t stride>
void HoldemSteps::visit(const PlacedDeal& deal, int32_t id, double* reach, double parentReach,
                        double* seatValues) const {
    const Step& step = steps_[static_cast<size_t>(id)];
    if (step.first == actionFold)
        if (step.last == actionRaise)
            visitKind<rule, stride, actionFold, actionRaise>(deal, step, reach, parentReach,
                                                             seatValues);
        else
            visitKind<rule, stride, actionFold, actionCall>(deal, step, reach, parentReach,
                                                            seatValues);
    else if (step.last == actionRaise)
        visitKind<rule, stride, actionCall, actionRaise>(deal, step, reach, parentReach,
                                                         seatValues);
    else
        visitKind<rule, stride, actionCall, actionCall>(deal, step, reach, parentReach, seatValues);
}

} // namespace tamarin
