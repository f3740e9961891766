#include "holdem/batch.h"

#include "holdem/steps.h"

#include <omp.h>

namespace tamarin {

namespace {

// A subtree's ten buckets should fit into a core's second-level cache (480 bytes a node), and there
// should be enough subtrees to share out.
constexpr int32_t smallestCut = 8;
constexpr int32_t largestCut = 2000;
constexpr int32_t leastSubtrees = 50;

// Waking threads up is not worth it for fewer visits (deals times nodes).
constexpr size_t leastShared = 50'000;

// Most seats of a row of values.
constexpr size_t mostStride = 4;

// What one deal has at one place of the cut: on the way down, and on the way up.
struct Place {
    double reach[mostStride];
    double parentReach;
    double value[mostStride];
};
struct TrunkPlace : Place {
    double strategy[numAbstractedActions];
};

} // namespace

struct HoldemBatch::Parts {
    // Below a trunk node's action, and in the place of the root: a trunk node, a subtree (counted
    // from the number of trunk nodes on), or a settlement (negative).
    using Child = int32_t;
    struct Trunk {
        int32_t node;
        Child child[numAbstractedActions];
    };

    Parts(const Game& game, const CompiledTree& tree) : payoffs(game, tree), steps(tree) {
        const auto nodes = static_cast<int32_t>(tree.nodes().size());
        cut = std::clamp(nodes / leastSubtrees, smallestCut, largestCut);
        if (nodes > 0)
            collect(tree, 0);
        // Subtrees were counted from 0 while the trunk grew.
        for (Trunk& node : trunk) {
            for (Child& child : node.child) {
                child = child >= subtreesFrom
                            ? child - subtreesFrom + static_cast<int32_t>(trunk.size())
                            : child;
            }
        }
    }

    static constexpr int32_t subtreesFrom = 1 << 30;

    Child collect(const CompiledTree& tree, int32_t id) {
        const CompiledTree::Node& node = tree.nodes()[static_cast<size_t>(id)];
        if (node.end - id <= cut) {
            subtrees.push_back(id);
            return subtreesFrom + static_cast<int32_t>(subtrees.size()) - 1;
        }
        const size_t place = trunk.size();
        trunk.push_back({id, {}});
        for (int a = 0; a < numAbstractedActions; ++a) {
            const int32_t below = node.child[a];
            const Child child = below >= 0 ? collect(tree, below) : below;
            trunk[place].child[a] = child;
        }
        return static_cast<Child>(place);
    }

    Payoffs payoffs;
    HoldemSteps steps;
    int32_t cut;
    std::vector<Trunk> trunk; // in depth-first order: below comes after
    std::vector<int32_t> subtrees;
    std::vector<PlacedDeal> placed;
    std::vector<TrunkPlace> trunkPlaces; // [deal][trunk node]
    std::vector<Place> subtreePlaces;    // [subtree][deal]
};

HoldemBatch::HoldemBatch(const Game& game, HoldemSets& sets, int threads)
    : game_(game), sets_(sets), threads_(threads > 0 ? threads : omp_get_max_threads()),
      parts_(std::make_unique<Parts>(game, sets.tree())) {}

HoldemBatch::~HoldemBatch() = default;

size_t HoldemBatch::numTrunkNodes() const {
    return parts_->trunk.size();
}

size_t HoldemBatch::numSubtrees() const {
    return parts_->subtrees.size();
}

namespace {

// One deal at one trunk node.
template <HoldemRule rule, size_t stride>
HoldemVisit<rule, stride> visitOf(const HoldemSteps::Step& step, const PlacedDeal& deal) {
    return {deal.slotNumbers[step.slot][step.offset], step.first, step.last, step.player, deal};
}

} // namespace

template <HoldemRule rule, size_t stride>
void HoldemBatch::walkCut(std::span<BatchDeal> deals) {
    Parts& parts = *parts_;
    const size_t numDeals = deals.size();
    const size_t numTrunk = parts.trunk.size();
    const size_t numSubtrees = parts.subtrees.size();
    parts.trunkPlaces.resize(numDeals * numTrunk);
    parts.subtreePlaces.resize(numDeals * numSubtrees);

    const auto placeOf = [&](size_t deal, Parts::Child child) -> Place& {
        const auto at = static_cast<size_t>(child);
        if (at < numTrunk)
            return parts.trunkPlaces[deal * numTrunk + at];
        return parts.subtreePlaces[(at - numTrunk) * numDeals + deal];
    };
    const auto valueOf = [&](size_t deal, Parts::Child child) -> const double* {
        return child >= 0 ? placeOf(deal, child).value
                          : parts.placed[deal].settled + static_cast<size_t>(~child) * stride;
    };
    // Reaches go down the trunk, values come up it; both look at the numbers only.
    const auto goDown = [&](size_t d) {
        Place& root = placeOf(d, 0);
        std::fill_n(root.reach, stride, 1.0);
        root.parentReach = 1.0;
        for (size_t i = 0; i < numTrunk; ++i) {
            TrunkPlace& place = parts.trunkPlaces[d * numTrunk + i];
            const HoldemSteps::Step& step = parts.steps[parts.trunk[i].node];
            auto visit = visitOf<rule, stride>(step, parts.placed[d]);
            visit.choose(place.reach);
            for (int a = step.first; a <= step.last; ++a) {
                place.strategy[a] = visit.strategy[a];
                if (const Parts::Child child = parts.trunk[i].child[a]; child >= 0) {
                    Place& below = placeOf(d, child);
                    std::copy_n(place.reach, stride, below.reach);
                    below.reach[step.player] = visit.below[a];
                    below.parentReach = visit.below[a];
                }
            }
        }
    };
    const auto comeUp = [&](size_t d) {
        for (size_t i = numTrunk; i-- > 0;) {
            TrunkPlace& place = parts.trunkPlaces[d * numTrunk + i];
            const HoldemSteps::Step& step = parts.steps[parts.trunk[i].node];
            std::fill_n(place.value, stride, 0.0);
            for (int a = step.first; a <= step.last; ++a) {
                const double* const below = valueOf(d, parts.trunk[i].child[a]);
                for (size_t q = 0; q < stride; ++q) {
                    place.value[q] += place.strategy[a] * below[q];
                }
            }
        }
        std::copy_n(placeOf(d, 0).value, game_.numPlayers, deals[d].value);
    };
    const auto walkSubtree = [&](size_t s) {
        for (size_t d = 0; d < numDeals; ++d) {
            Place& place = parts.subtreePlaces[s * numDeals + d];
            double reach[stride];
            std::copy_n(place.reach, stride, reach);
            parts.steps.visit<rule, stride>(parts.placed[d], parts.subtrees[s], reach,
                                            place.parentReach, place.value);
        }
    };
    const auto updateTrunk = [&](size_t i) {
        const HoldemSteps::Step& step = parts.steps[parts.trunk[i].node];
        for (size_t d = 0; d < numDeals; ++d) {
            const TrunkPlace& place = parts.trunkPlaces[d * numTrunk + i];
            auto visit = visitOf<rule, stride>(step, parts.placed[d]);
            double actionValue[numAbstractedActions];
            for (int a = step.first; a <= step.last; ++a) {
                visit.below[a] = place.strategy[a] * place.reach[step.player];
                actionValue[a] = valueOf(d, parts.trunk[i].child[a])[step.player];
            }
            visit.addStrategy();
            visit.addRegret(place.reach, place.parentReach, actionValue, place.value[step.player]);
        }
    };

    const int threads = numDeals * parts.steps.size() < leastShared ? 1 : threads_;
    // Nothing in here throws.
#pragma omp parallel num_threads(threads) default(none)                                            \
    shared(goDown, comeUp, walkSubtree, updateTrunk) firstprivate(numDeals, numSubtrees, numTrunk)
    {
#pragma omp for schedule(dynamic, 1)
        for (size_t d = 0; d < numDeals; ++d)
            goDown(d);
#pragma omp for schedule(dynamic, 1)
        for (size_t s = 0; s < numSubtrees; ++s)
            walkSubtree(s);
#pragma omp for schedule(dynamic, 1)
        for (size_t d = 0; d < numDeals; ++d)
            comeUp(d);
        if (rule != HoldemRule::average) {
#pragma omp for schedule(dynamic, 16)
            for (size_t i = 0; i < numTrunk; ++i)
                updateTrunk(i);
        }
    }
}

template <HoldemRule rule>
void HoldemBatch::walk(std::span<BatchDeal> deals) {
    if (game_.numPlayers == 2)
        walkCut<rule, 2>(deals);
    else
        walkCut<rule, 4>(deals);
}

void HoldemBatch::place(std::span<BatchDeal> deals) {
    parts_->placed.resize(deals.size());
    for (size_t d = 0; d < deals.size(); ++d) {
        HoldemSteps::place(sets_, parts_->payoffs, deals[d].cards, deals[d].buckets,
                           parts_->placed[d]);
        parts_->placed[d].weight = deals[d].weight;
    }
}

void HoldemBatch::replaceSeat(HoldemSets& responder, int seat) {
    for (PlacedDeal& deal : parts_->placed)
        HoldemSteps::replaceSeat(sets_, responder, seat, deal);
}

void HoldemBatch::iterate(HoldemRule rule, std::span<BatchDeal> deals) {
    place(deals);
    switch (rule) {
    case HoldemRule::player:
        walk<HoldemRule::player>(deals);
        break;
    case HoldemRule::counterfactual:
        walk<HoldemRule::counterfactual>(deals);
        break;
    case HoldemRule::counterfactualPlus:
        walk<HoldemRule::counterfactualPlus>(deals);
        break;
    case HoldemRule::average:
        walk<HoldemRule::average>(deals);
        break;
    case HoldemRule::respond:
        assert(!"respond() has its own arguments");
    }
}

void HoldemBatch::respond(HoldemSets& responder, int seat, std::span<BatchDeal> deals) {
    place(deals);
    replaceSeat(responder, seat);
    walk<HoldemRule::respond>(deals);
}

void HoldemBatch::valueOfResponse(HoldemSets& responder, int seat, std::span<BatchDeal> deals) {
    place(deals);
    replaceSeat(responder, seat);
    walk<HoldemRule::average>(deals);
}

} // namespace tamarin
