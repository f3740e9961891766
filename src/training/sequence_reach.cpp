#include "training/sequence_reach.h"

#include <numeric>

namespace tamarin {

double SequenceReach::ofNode(size_t n) const {
    return std::accumulate(node[n].begin(), node[n].end(), 0.0);
}

SequenceReach sequenceReaches(const SmallGame& game, const Profile& profile) {
    const auto& nodes = game.tree().nodes();
    const DealTable& deals = game.deals();
    const size_t seats = game.game().numPlayers;
    SequenceReach result;
    result.edge.resize(nodes.size() * numAbstractedActions);
    result.paid.resize(result.edge.size());
    for (const CompiledTree::Node& node : nodes)
        result.node.emplace_back(game.layout().numBuckets(node.slot));
    for (size_t n = 0; n < nodes.size(); ++n)
        for (size_t a = 0; a < numAbstractedActions; ++a)
            if (nodes[n].child[a] != CompiledTree::noChild && nodes[n].child[a] < 0)
                result.paid[n * numAbstractedActions + a].assign(seats, 0.0);

    std::vector<double> below(result.edge.size()); // one deal's probability of each edge
    for (size_t d = 0; d < deals.size; ++d) {
        const double* const table = game.payoffs().table(deals.outcome[d]);
        for (size_t n = 0; n < nodes.size(); ++n) {
            const CompiledTree::Node& node = nodes[n];
            const double reach = node.parentEdge == CompiledTree::noEdge
                                     ? deals.weight[d]
                                     : below[static_cast<size_t>(node.parentEdge)];
            const uint32_t field = deals.field[node.player][d];
            result.node[n][field] += reach;
            const auto& shares = profile[game.layout().index(node, field)];
            for (size_t a = 0; a < numAbstractedActions; ++a) {
                const size_t edge = n * numAbstractedActions + a;
                below[edge] = reach * shares[a];
                result.edge[edge] += below[edge];
                if (result.paid[edge].empty())
                    continue;
                const double* const paid =
                    table + static_cast<size_t>(~node.child[a]) * game.payoffs().stride();
                for (size_t p = 0; p < seats; ++p)
                    result.paid[edge][p] += below[edge] * paid[p];
            }
        }
    }
    for (size_t edge = 0; edge < result.edge.size(); ++edge)
        if (result.edge[edge] > 0.0)
            for (double& paid : result.paid[edge])
                paid /= result.edge[edge];
    return result;
}

} // namespace tamarin
