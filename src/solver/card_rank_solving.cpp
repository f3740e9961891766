#include "solver/card_rank_solving.h"

#include "tree/deck.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

void addCardRankNodes(const CompiledTree& tree, const Game& game, NodeMap* nodeMaps) {
    for (size_t n = 0; n < tree.nodes().size(); ++n) {
        const CompiledTree::Node& node = tree.nodes()[n];
        bool valid[numAbstractedActions];
        for (int a = 0; a < numAbstractedActions; ++a)
            valid[a] = node.child[a] != CompiledTree::noChild;
        NodeMap& map = nodeMaps[node.round + node.player * game.numRounds];
        for (int field = 0; field < numCardFields(game); ++field) {
            CFRNode*& at = map[cardRankKey(tree, static_cast<int32_t>(n), field)];
            if (at == nullptr)
                at = new CFRNode;
            at->initialize(valid);
        }
    }
}

namespace {

// One set's average strategy over its valid actions.
struct Average {
    double share[numAbstractedActions];
};

std::vector<Average> averagesOf(const InformationSets& sets) {
    std::vector<Average> averages(sets.layout().numSets());
    for (size_t set = 0; set < averages.size(); ++set) {
        double all[numAbstractedActions];
        sets.node(set).getAverageStrategy(all);
        const SetActions& actions = sets.actions(set);
        for (uint8_t i = 0; i < actions.count; ++i)
            averages[set].share[i] = all[actions.action[i]];
    }
    return averages;
}

} // namespace

void averageValues(const Game& game, CompiledGame& compiled, const InformationSets& sets,
                   double* result) {
    const std::vector<Average> averages = averagesOf(sets);
    const std::vector<CompiledTree::Node>& nodes = compiled.tree.nodes();
    const std::vector<CompiledTree::Slot>& slots = compiled.tree.slots();
    const size_t stride = compiled.payoffs.stride();
    const size_t players = game.numPlayers;
    std::vector<double> values(nodes.size() * stride);
    std::vector<size_t> bucketStart(slots.size());
    State state{};
    std::fill_n(result, players, 0.0);
    int deals = 0;
    for (DealWalk walk(game); walk.next();) {
        placeCards(game, walk.cards(), &state);
        const double* const settled = compiled.payoffs.table(compiled.payoffs.outcomeOf(state));
        for (uint32_t s = 0; s < slots.size(); ++s)
            bucketStart[s] = sets.layout().bucketStart(
                s, static_cast<uint64_t>(cardField(state.holeCards[slots[s].player][0])));
        // Depth-first order puts children behind their parents.
        for (size_t n = nodes.size(); n-- > 0;) {
            const size_t set = bucketStart[nodes[n].slot] + nodes[n].offset;
            const SetActions& actions = sets.actions(set);
            double* const value = &values[n * stride];
            std::fill_n(value, stride, 0.0);
            for (uint8_t i = 0; i < actions.count; ++i) {
                const int32_t child = nodes[n].child[actions.action[i]];
                assert(child != CompiledTree::noChild); // as it was when the sets were read
                const double* const below = child >= 0
                                                ? &values[static_cast<size_t>(child) * stride]
                                                : settled + static_cast<size_t>(~child) * stride;
                for (size_t q = 0; q < players; ++q)
                    value[q] += below[q] * averages[set].share[i];
            }
        }
        for (size_t q = 0; q < players; ++q)
            result[q] += values[q];
        ++deals;
    }
    for (size_t q = 0; q < players; ++q)
        result[q] = result[q] / deals;
}

} // namespace tamarin
