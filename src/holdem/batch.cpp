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

// One batch on its way: reaches go down the trunk, subtrees are walked, values come up the trunk,
// and then the trunk's numbers change. Going down and coming up only look at the numbers.
template <HoldemRule rule, size_t stride>
class HoldemBatch::CutWalk {
public:
    CutWalk(Parts& parts, size_t numDeals)
        : parts_(parts), numDeals_(numDeals), numTrunk_(parts.trunk.size()) {
        parts.trunkPlaces.resize(numDeals * numTrunk_);
        parts.subtreePlaces.resize(numDeals * parts.subtrees.size());
    }

    void goDown(size_t d) const {
        Place& root = placeOf(d, 0);
        std::fill_n(root.reach, stride, 1.0);
        root.parentReach = 1.0;
        for (size_t i = 0; i < numTrunk_; ++i) {
            TrunkPlace& place = trunkPlace(d, i);
            const HoldemSteps::Step& step = stepOf(i);
            auto visit = visitOf(step, parts_.placed[d]);
            visit.choose(place.reach);
            for (int a = step.first; a <= step.last; ++a) {
                place.strategy[a] = visit.strategy[a];
                if (const Parts::Child child = parts_.trunk[i].child[a]; child >= 0) {
                    Place& below = placeOf(d, child);
                    std::copy_n(place.reach, stride, below.reach);
                    below.reach[step.player] = visit.below[a];
                    below.parentReach = visit.below[a];
                }
            }
        }
    }

    // For all deals in their order: each finds what the deal before it left.
    void walkSubtree(size_t s) const {
        for (size_t d = 0; d < numDeals_; ++d) {
            Place& place = parts_.subtreePlaces[s * numDeals_ + d];
            double reach[stride];
            std::copy_n(place.reach, stride, reach);
            parts_.steps.visit<rule, stride>(parts_.placed[d], parts_.subtrees[s], reach,
                                             place.parentReach, place.value);
        }
    }

    // Leaves the root's values in seatValues.
    void comeUp(size_t d, int players, double* seatValues) const {
        for (size_t i = numTrunk_; i-- > 0;) {
            TrunkPlace& place = trunkPlace(d, i);
            const HoldemSteps::Step& step = stepOf(i);
            std::fill_n(place.value, stride, 0.0);
            for (int a = step.first; a <= step.last; ++a) {
                const double* const below = valueOf(d, parts_.trunk[i].child[a]);
                for (size_t q = 0; q < stride; ++q)
                    place.value[q] += place.strategy[a] * below[q];
            }
        }
        std::copy_n(placeOf(d, 0).value, players, seatValues);
    }

    void updateTrunk(size_t i) const {
        const HoldemSteps::Step& step = stepOf(i);
        for (size_t d = 0; d < numDeals_; ++d) {
            const TrunkPlace& place = trunkPlace(d, i);
            auto visit = visitOf(step, parts_.placed[d]);
            double actionValue[numAbstractedActions];
            for (int a = step.first; a <= step.last; ++a) {
                visit.below[a] = place.strategy[a] * place.reach[step.player];
                actionValue[a] = valueOf(d, parts_.trunk[i].child[a])[step.player];
            }
            visit.addStrategy();
            visit.addRegret(place.reach, place.parentReach, actionValue, place.value[step.player]);
        }
    }

private:
    static HoldemVisit<rule, stride> visitOf(const HoldemSteps::Step& step,
                                             const PlacedDeal& deal) {
        return {deal.slotNumbers[step.slot][step.offset], step.first, step.last, step.player, deal};
    }
    const HoldemSteps::Step& stepOf(size_t i) const { return parts_.steps[parts_.trunk[i].node]; }
    TrunkPlace& trunkPlace(size_t deal, size_t i) const {
        return parts_.trunkPlaces[deal * numTrunk_ + i];
    }
    Place& placeOf(size_t deal, Parts::Child child) const {
        const auto at = static_cast<size_t>(child);
        if (at < numTrunk_)
            return trunkPlace(deal, at);
        return parts_.subtreePlaces[(at - numTrunk_) * numDeals_ + deal];
    }
    const double* valueOf(size_t deal, Parts::Child child) const {
        return child >= 0 ? placeOf(deal, child).value
                          : parts_.placed[deal].settled + static_cast<size_t>(~child) * stride;
    }

    Parts& parts_;
    size_t numDeals_;
    size_t numTrunk_;
};

template <HoldemRule rule, size_t stride>
void HoldemBatch::walkCut(std::span<BatchDeal> deals) {
    const size_t numDeals = deals.size();
    const size_t numTrunk = parts_->trunk.size();
    const size_t numSubtrees = parts_->subtrees.size();
    const CutWalk<rule, stride> walk(*parts_, numDeals);
    const int threads = numDeals * parts_->steps.size() < leastShared ? 1 : threads_;
    // Nothing in here throws.
#pragma omp parallel num_threads(threads) default(none) shared(walk, deals)                        \
    firstprivate(numDeals, numSubtrees, numTrunk)
    {
#pragma omp for schedule(dynamic, 1)
        for (size_t d = 0; d < numDeals; ++d)
            walk.goDown(d);
#pragma omp for schedule(dynamic, 1)
        for (size_t s = 0; s < numSubtrees; ++s)
            walk.walkSubtree(s);
#pragma omp for schedule(dynamic, 1)
        for (size_t d = 0; d < numDeals; ++d)
            walk.comeUp(d, game_.numPlayers, deals[d].value);
        if (rule != HoldemRule::average) {
#pragma omp for schedule(dynamic, 16)
            for (size_t i = 0; i < numTrunk; ++i)
                walk.updateTrunk(i);
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
    withRule(rule, [&]<HoldemRule fixed>() { walk<fixed>(deals); });
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
