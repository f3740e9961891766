#include "solver/holdem_walk.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

// Subtrees above this size are walked as tasks: about a millisecond's work each.
constexpr int32_t taskNodes = 50'000;

// Regret matching at one set and its strategy sums. below: the actor's reach below each action.
inline void matchRegrets(SetNumbers& numbers, int first, int last, double reach, double* strategy,
                         double* below) {
    double total = 0.0;
    for (int a = first; a <= last; ++a) {
        strategy[a] = numbers.regret[a] > 0.0 ? numbers.regret[a] : 0.0;
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
    for (int a = first; a <= last; ++a) {
        below[a] = strategy[a] * reach;
        numbers.strategy[a] += below[a];
    }
}

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
template <size_t stride, int first, int last>
void HoldemWalk::visitKind(const Step& step, double* reach, double parentReach,
                           double* util) const {
    SetNumbers& numbers = slotNumbers_[step.slot][step.offset];
    const size_t p = step.player;
    double strategy[numAbstractedActions];
    double below[numAbstractedActions];
    double actionValue[numAbstractedActions];
    const double ownReach = reach[p];
    matchRegrets(numbers, first, last, ownReach, strategy, below);

    double value[stride] = {};
    for (int a = first; a <= last; ++a) {
        const int32_t child = step.child[a];
        double visited[stride];
        const double* childValue = visited;
        if (child >= 0) {
            reach[p] = below[a];
            visit<stride>(child, reach, below[a], visited);
        } else {
            childValue = settled_ + static_cast<size_t>(~child) * stride;
        }
        actionValue[a] = childValue[p];
        for (size_t q = 0; q < stride; ++q) {
            value[q] += strategy[a] * childValue[q];
        }
    }
    reach[p] = ownReach;
    for (int a = first; a <= last; ++a) {
        numbers.regret[a] += parentReach * (actionValue[a] - value[p]);
    }
    std::copy_n(value, stride, util);
}

template <size_t stride>
void HoldemWalk::visit(int32_t id, double* reach, double parentReach, double* util) const {
    const Step& step = steps_[static_cast<size_t>(id)];
    if (step.first == actionFold) {
        if (step.last == actionRaise) {
            visitKind<stride, actionFold, actionRaise>(step, reach, parentReach, util);
        } else {
            visitKind<stride, actionFold, actionCall>(step, reach, parentReach, util);
        }
    } else if (step.last == actionRaise) {
        visitKind<stride, actionCall, actionRaise>(step, reach, parentReach, util);
    } else {
        visitKind<stride, actionCall, actionCall>(step, reach, parentReach, util);
    }
}

// The same visit, with every large child a task of its own.
template <size_t stride>
void HoldemWalk::visitWithTasks(int32_t id, const double* reach, double parentReach,
                                double* util) const {
    const Step& step = steps_[static_cast<size_t>(id)];
    SetNumbers& numbers = slotNumbers_[step.slot][step.offset];
    const size_t p = step.player;
    double strategy[numAbstractedActions];
    double below[numAbstractedActions];
    matchRegrets(numbers, step.first, step.last, reach[p], strategy, below);

    double childValue[numAbstractedActions][stride];
    double childReach[numAbstractedActions][stride];
    for (int a = step.first; a <= step.last; ++a) {
        const int32_t child = step.child[a];
        if (child < 0) {
            std::copy_n(settled_ + static_cast<size_t>(~child) * stride, stride, childValue[a]);
            continue;
        }
        std::copy_n(reach, stride, childReach[a]);
        childReach[a][p] = below[a];
        const int32_t size = sets_.tree().nodes()[static_cast<size_t>(child)].end - child;
        if (size <= taskNodes) {
            visit<stride>(child, childReach[a], below[a], childValue[a]);
            continue;
        }
#pragma omp task default(none) firstprivate(child, a) shared(childReach, below, childValue)
        visitWithTasks<stride>(child, childReach[a], below[a], childValue[a]);
    }
#pragma omp taskwait

    double value[stride] = {};
    for (int a = step.first; a <= step.last; ++a) {
        for (size_t q = 0; q < stride; ++q) {
            value[q] += strategy[a] * childValue[a][q];
        }
    }
    for (int a = step.first; a <= step.last; ++a) {
        numbers.regret[a] += parentReach * (childValue[a][p] - value[p]);
    }
    std::copy_n(value, stride, util);
}

template <size_t stride>
void HoldemWalk::iterateFrom(double* util) const {
    double reach[stride];
    std::fill_n(reach, stride, 1.0);
    double value[stride];
    if (steps_.size() <= static_cast<size_t>(taskNodes)) {
        visit<stride>(0, reach, 1.0, value);
    } else {
#pragma omp parallel default(none) shared(reach, value)
#pragma omp single
        visitWithTasks<stride>(0, reach, 1.0, value);
    }
    std::copy_n(value, game_.numPlayers, util);
}

void HoldemWalk::iterate(const State& deal, const DealBuckets& buckets, double* util) {
    const std::vector<CompiledTree::Slot>& slots = sets_.tree().slots();
    for (uint32_t i = 0; i < slots.size(); ++i) {
        const CompiledTree::Slot& slot = slots[i];
        slotNumbers_[i] =
            sets_.numbers() +
            sets_.layout().bucketStart(i, buckets.of[slot.round][slot.acting][slot.player]);
    }
    settled_ = payoffs_.table(payoffs_.outcomeOf(deal));
    if (game_.numPlayers == 2) {
        iterateFrom<2>(util);
    } else {
        iterateFrom<4>(util);
    }
}

} // namespace tamarin
