#include "solver/holdem_walk.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

// Subtrees above this size are walked as tasks: about a millisecond's work each.
constexpr int32_t taskNodes = 50'000;

// The strategy of a set of valid actions first..last: shares of the positive parts of numbers, or
// uniform when there are none.
inline void sharesOf(const double* numbers, int first, int last, double* strategy) {
    double total = 0.0;
    for (int a = first; a <= last; ++a) {
        strategy[a] = numbers[a] > 0.0 ? numbers[a] : 0.0;
        total += strategy[a];
    }
    if (total > 0.0) {
        for (int a = first; a <= last; ++a) {
            strategy[a] /= total;
        }
    } else {
        const double uniform = 1.0 / static_cast<double>(last - first + 1);
        for (int a = first; a <= last; ++a) {
            strategy[a] = uniform;
        }
    }
}

// One node of a walk, before and after its children are visited.
template <HoldemRule rule, size_t stride>
struct Visit {
    SetNumbers& numbers;
    int first;
    int last;
    size_t p;      // to act
    bool trains;   // whether the numbers change
    double weight; // of this deal

    double strategy[numAbstractedActions];
    double below[numAbstractedActions]; // the actor's reach below each action

    Visit(SetNumbers& numbers_, int first_, int last_, size_t p_, bool trains_, double weight_)
        : numbers(numbers_), first(first_), last(last_), p(p_), trains(trains_), weight(weight_) {}

    void begin(const double* reach) {
        sharesOf(trains ? numbers.regret : numbers.strategy, first, last, strategy);
        for (int a = first; a <= last; ++a) {
            below[a] = strategy[a] * reach[p];
            if (trains) {
                numbers.strategy[a] += weight * below[a];
            }
        }
    }

    void end(const double* reach, double parentReach, const double* actionValue, double ownValue) {
        if (!trains) {
            return;
        }
        double regretWeight = parentReach; // the player's own rule
        if constexpr (rule != HoldemRule::player) {
            // CFR+ weighs the average only.
            regretWeight = rule == HoldemRule::counterfactualPlus ? 1.0 : weight;
            for (size_t q = 0; q < stride; ++q) {
                regretWeight *= q == p ? 1.0 : reach[q];
            }
        }
        for (int a = first; a <= last; ++a) {
            numbers.regret[a] += regretWeight * (actionValue[a] - ownValue);
            if constexpr (rule == HoldemRule::counterfactualPlus) {
                numbers.regret[a] = std::max(numbers.regret[a], 0.0);
            }
        }
    }
};

} // namespace

HoldemWalk::HoldemWalk(const Game& game, HoldemSets& sets)
    : game_(game), sets_(sets), payoffs_(game, sets.tree()),
      slotNumbers_(sets.tree().slots().size()) {
    assert(slotNumbers_.size() <= 256);
    steps_.reserve(sets.tree().nodes().size());
    for (const CompiledTree::Node& node : sets.tree().nodes()) {
        Step step{};
        std::copy_n(node.child, numAbstractedActions, step.child);
        step.offset = node.offset;
        step.slot = static_cast<uint8_t>(node.slot);
        step.player = node.player;
        // A call is always valid, so that the valid actions are a run around it.
        step.first = node.child[actionFold] != CompiledTree::noChild ? actionFold : actionCall;
        step.last = node.child[actionRaise] != CompiledTree::noChild ? actionRaise : actionCall;
        steps_.push_back(step);
    }
}

// The loops over a node's actions have constant bounds here, so that its numbers stay in registers.
template <HoldemRule rule, size_t stride, int first, int last>
void HoldemWalk::visitKind(const Step& step, double* reach, double parentReach,
                           double* util) const {
    const size_t p = step.player;
    const bool trains = rule == HoldemRule::respond ? p == responder_ : rule != HoldemRule::average;
    Visit<rule, stride> node(slotNumbers_[step.slot][step.offset], first, last, p, trains, weight_);
    node.begin(reach);
    const double ownReach = reach[p];
    double actionValue[numAbstractedActions];
    double value[stride] = {};
    for (int a = first; a <= last; ++a) {
        const int32_t child = step.child[a];
        double visited[stride];
        const double* childValue = visited;
        if (child >= 0) {
            reach[p] = node.below[a];
            visit<rule, stride>(child, reach, node.below[a], visited);
        } else {
            childValue = settled_ + static_cast<size_t>(~child) * stride;
        }
        actionValue[a] = childValue[p];
        for (size_t q = 0; q < stride; ++q) {
            value[q] += node.strategy[a] * childValue[q];
        }
    }
    reach[p] = ownReach;
    node.end(reach, parentReach, actionValue, value[p]);
    std::copy_n(value, stride, util);
}

template <HoldemRule rule, size_t stride>
void HoldemWalk::visit(int32_t id, double* reach, double parentReach, double* util) const {
    const Step& step = steps_[static_cast<size_t>(id)];
    if (step.first == actionFold) {
        if (step.last == actionRaise) {
            visitKind<rule, stride, actionFold, actionRaise>(step, reach, parentReach, util);
        } else {
            visitKind<rule, stride, actionFold, actionCall>(step, reach, parentReach, util);
        }
    } else if (step.last == actionRaise) {
        visitKind<rule, stride, actionCall, actionRaise>(step, reach, parentReach, util);
    } else {
        visitKind<rule, stride, actionCall, actionCall>(step, reach, parentReach, util);
    }
}

// The same visit, with every large child a task of its own.
template <HoldemRule rule, size_t stride>
void HoldemWalk::visitWithTasks(int32_t id, const double* reach, double parentReach,
                                double* util) const {
    const Step& step = steps_[static_cast<size_t>(id)];
    const size_t p = step.player;
    const bool trains = rule == HoldemRule::respond ? p == responder_ : rule != HoldemRule::average;
    Visit<rule, stride> node(slotNumbers_[step.slot][step.offset], step.first, step.last, p, trains,
                             weight_);
    node.begin(reach);
    double childValue[numAbstractedActions][stride];
    double childReach[numAbstractedActions][stride];
    for (int a = step.first; a <= step.last; ++a) {
        const int32_t child = step.child[a];
        if (child < 0) {
            std::copy_n(settled_ + static_cast<size_t>(~child) * stride, stride, childValue[a]);
            continue;
        }
        std::copy_n(reach, stride, childReach[a]);
        childReach[a][p] = node.below[a];
        const int32_t size = sets_.tree().nodes()[static_cast<size_t>(child)].end - child;
        if (size <= taskNodes) {
            visit<rule, stride>(child, childReach[a], node.below[a], childValue[a]);
            continue;
        }
#pragma omp task default(none) firstprivate(child, a) shared(childReach, node, childValue)
        visitWithTasks<rule, stride>(child, childReach[a], node.below[a], childValue[a]);
    }
#pragma omp taskwait

    double actionValue[numAbstractedActions];
    double value[stride] = {};
    for (int a = step.first; a <= step.last; ++a) {
        actionValue[a] = childValue[a][p];
        for (size_t q = 0; q < stride; ++q) {
            value[q] += node.strategy[a] * childValue[a][q];
        }
    }
    node.end(reach, parentReach, actionValue, value[p]);
    std::copy_n(value, stride, util);
}

template <HoldemRule rule, size_t stride>
void HoldemWalk::walkFromRoot(double* util) const {
    double reach[stride];
    std::fill_n(reach, stride, 1.0);
    double value[stride];
    if (steps_.size() <= static_cast<size_t>(taskNodes)) {
        visit<rule, stride>(0, reach, 1.0, value);
    } else {
#pragma omp parallel default(none) shared(reach, value)
#pragma omp single
        visitWithTasks<rule, stride>(0, reach, 1.0, value);
    }
    std::copy_n(value, game_.numPlayers, util);
}

template <HoldemRule rule>
void HoldemWalk::walk(double* util) const {
    if (game_.numPlayers == 2) {
        walkFromRoot<rule, 2>(util);
    } else {
        walkFromRoot<rule, 4>(util);
    }
}

void HoldemWalk::placeDeal(const State& deal, const DealBuckets& buckets) {
    const std::vector<CompiledTree::Slot>& slots = sets_.tree().slots();
    for (uint32_t i = 0; i < slots.size(); ++i) {
        const CompiledTree::Slot& slot = slots[i];
        const uint8_t bucket = buckets.of[slot.round][slot.acting][slot.player];
        slotNumbers_[i] = sets_.numbers() + sets_.layout().bucketStart(i, bucket);
    }
    settled_ = payoffs_.table(payoffs_.outcomeOf(deal));
}

void HoldemWalk::iterate(HoldemRule rule, const State& deal, const DealBuckets& buckets,
                         double weight, double* util) {
    placeDeal(deal, buckets);
    weight_ = weight;
    switch (rule) {
    case HoldemRule::player:
        walk<HoldemRule::player>(util);
        break;
    case HoldemRule::counterfactual:
        walk<HoldemRule::counterfactual>(util);
        break;
    case HoldemRule::counterfactualPlus:
        walk<HoldemRule::counterfactualPlus>(util);
        break;
    case HoldemRule::average:
        walk<HoldemRule::average>(util);
        break;
    case HoldemRule::respond:
        assert(!"respond() has its own arguments");
    }
}

void HoldemWalk::respond(HoldemSets& responder, int seat, const State& deal,
                         const DealBuckets& buckets, double weight, double* util) {
    placeDeal(deal, buckets);
    const std::vector<CompiledTree::Slot>& slots = sets_.tree().slots();
    for (size_t i = 0; i < slots.size(); ++i) {
        if (slots[i].player == seat) {
            slotNumbers_[i] = responder.numbers() + (slotNumbers_[i] - sets_.numbers());
        }
    }
    weight_ = weight;
    responder_ = static_cast<size_t>(seat);
    walk<HoldemRule::respond>(util);
}

} // namespace tamarin
