#include "holdem/walk.h"

#include "holdem/steps.h"

namespace tamarin {

namespace {

// Subtrees above this size are walked as tasks: about a millisecond's work each.
constexpr int32_t taskNodes = 50'000;

} // namespace

struct HoldemWalk::Parts {
    Parts(const Game& game, const CompiledTree& tree) : payoffs(game, tree), steps(tree) {}

    Payoffs payoffs;
    HoldemSteps steps;
    PlacedDeal deal;
};

HoldemWalk::HoldemWalk(const Game& game, HoldemSets& sets)
    : game_(game), sets_(sets), parts_(std::make_unique<Parts>(game, sets.tree())) {}

HoldemWalk::~HoldemWalk() = default;

// The same visit as HoldemSteps', with every large child a task of its own.
template <HoldemRule rule, size_t stride>
void HoldemWalk::visitWithTasks(int32_t id, const double* reach, double parentReach,
                                double* seatValues) const {
    const PlacedDeal& deal = parts_->deal;
    const HoldemSteps::Step& step = parts_->steps[id];
    const size_t p = step.player;
    HoldemVisit<rule, stride> node(deal.slotNumbers[step.slot][step.offset], step.first, step.last,
                                   p, deal);
    node.choose(reach);
    node.addStrategy();
    double childValue[numAbstractedActions][stride];
    double childReach[numAbstractedActions][stride];
    for (int a = step.first; a <= step.last; ++a) {
        const int32_t child = step.child[a];
        if (child < 0) {
            std::copy_n(deal.settled + static_cast<size_t>(~child) * stride, stride, childValue[a]);
            continue;
        }
        std::copy_n(reach, stride, childReach[a]);
        childReach[a][p] = node.below[a];
        const int32_t size = sets_.tree().nodes()[static_cast<size_t>(child)].end - child;
        if (size <= taskNodes) {
            parts_->steps.visit<rule, stride>(deal, child, childReach[a], node.below[a],
                                              childValue[a]);
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
        for (size_t q = 0; q < stride; ++q)
            value[q] += node.strategy[a] * childValue[a][q];
    }
    node.addRegret(reach, parentReach, actionValue, value[p]);
    std::copy_n(value, stride, seatValues);
}

template <HoldemRule rule, size_t stride>
void HoldemWalk::walkFromRoot(double* seatValues) const {
    double reach[stride];
    std::fill_n(reach, stride, 1.0);
    double value[stride];
    if (parts_->steps.size() <= static_cast<size_t>(taskNodes)) {
        parts_->steps.visit<rule, stride>(parts_->deal, 0, reach, 1.0, value);
    } else {
        // Nothing in here throws.
#pragma omp parallel default(none) shared(reach, value)
#pragma omp single
        visitWithTasks<rule, stride>(0, reach, 1.0, value);
    }
    std::copy_n(value, game_.numPlayers, seatValues);
}

template <HoldemRule rule>
void HoldemWalk::walk(double* seatValues) const {
    if (game_.numPlayers == 2)
        walkFromRoot<rule, 2>(seatValues);
    else
        walkFromRoot<rule, 4>(seatValues);
}

void HoldemWalk::iterate(HoldemRule rule, const State& deal, const DealBuckets& buckets,
                         double* seatValues) {
    HoldemSteps::place(sets_, parts_->payoffs, deal, buckets, parts_->deal);
    withRule(rule, [&]<HoldemRule fixed>() { walk<fixed>(seatValues); });
}

} // namespace tamarin
