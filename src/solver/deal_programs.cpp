#include "solver/deal_programs.h"

#include "tree/deck.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

constexpr double certain = 1.0;
constexpr size_t reachesPerNode = 2 * numAbstractedActions;
// Steps kept at most, over all deals: 80 MB.
constexpr size_t maxStepsKept = 1'000'000;

// The size of the table of kept programs, or 0 where they would be too many.
size_t cacheSize(size_t deckSize, size_t numCards, size_t numNodes) {
    size_t deals = 1;
    for (size_t i = 0; i < numCards; ++i) {
        deals *= deckSize;
        if (deals * numNodes > maxStepsKept)
            return 0;
    }
    return deals;
}

} // namespace

DealPrograms::DealPrograms(const Game& game, const CompiledTree& tree, Payoffs& payoffs,
                           InformationSets& sets)
    : game_(game), tree_(tree), payoffs_(payoffs), sets_(sets), deck_(solverDeck(game)),
      numCards_(static_cast<size_t>(cardsNeeded(game))),
      cache_(cacheSize(deck_.size(), numCards_, tree.nodes().size())),
      values_(tree.nodes().size() * payoffs.stride()),
      reaches_(tree.nodes().size() * reachesPerNode),
      edgeReach_(tree.nodes().size() * numAbstractedActions), bucketStart_(tree.slots().size()) {}

const Step* DealPrograms::scratchProgram(const uint32_t* positions) {
    uint8_t cards[MAX_PLAYERS * MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    for (size_t i = 0; i < numCards_; ++i)
        cards[i] = deck_[positions[i]];
    placeCards(game_, cards, &state_);
    const double* const settled = payoffs_.table(payoffs_.outcomeOf(state_));
    const size_t stride = payoffs_.stride();
    for (uint32_t slot = 0; slot < bucketStart_.size(); ++slot) {
        const int field = cardField(state_.holeCards[tree_.slots()[slot].player][0]);
        bucketStart_[slot] = sets_.layout().bucketStart(slot, static_cast<uint64_t>(field));
    }

    scratch_.clear();
    const std::vector<CompiledTree::Node>& nodes = tree_.nodes();
    for (size_t n = 0; n < nodes.size();) {
        const CompiledTree::Node& node = nodes[n];
        const auto reachOf = [&](int32_t edge) {
            return edge == CompiledTree::noEdge ? &certain : edgeReach_[static_cast<size_t>(edge)];
        };
        if (reachOf(node.parentEdge) == nullptr) {
            n = static_cast<size_t>(node.end);
            continue;
        }
        const size_t set = bucketStart_[node.slot] + node.offset;
        const SetActions& actions = sets_.actions(set);
        Step step{};
        step.numbers = &sets_.numbers()[set];
        step.ownReach = reachOf(node.ownEdge);
        step.parentReach = reachOf(node.parentEdge);
        step.reachBelow = &reaches_[n * reachesPerNode];
        step.value = &values_[n * stride];
        step.count = actions.count;
        step.player = node.player;
        std::fill_n(&edgeReach_[n * numAbstractedActions], numAbstractedActions, nullptr);
        for (size_t i = 0; i < actions.count; ++i) {
            const uint8_t a = actions.action[i];
            const int32_t child = node.child[a];
            assert(child < 0 || static_cast<size_t>(child) > n); // values are added up from behind
            step.childValue[i] = child >= 0 ? &values_[static_cast<size_t>(child) * stride]
                                            : settled + static_cast<size_t>(~child) * stride;
            edgeReach_[n * numAbstractedActions + a] = step.reachBelow + i;
        }
        scratch_.push_back(step);
        ++n;
    }
    return scratch_.data();
}

std::span<const Step> DealPrograms::keep(size_t index, const uint32_t* positions) {
    scratchProgram(positions);
    Cached& cached = cache_[index];
    cached.count = scratch_.size();
    cached.steps = std::make_unique<Step[]>(scratch_.size());
    std::copy(scratch_.begin(), scratch_.end(), cached.steps.get());
    return {cached.steps.get(), cached.count};
}

} // namespace tamarin
