#include "training/profile.h"

#include "tree/card_rank_keys.h"
#include "tree/deck.h"

#include <cmath>

namespace tamarin {

Profile uniformProfile(const SmallGame& game) {
    Profile profile(game.layout().numSets());
    for (const CompiledTree::Node& node : game.tree().nodes()) {
        int legal = 0;
        for (const int32_t child : node.child)
            legal += child != CompiledTree::noChild;
        for (uint32_t field = 0; field < game.layout().numBuckets(node.slot); ++field)
            for (size_t a = 0; a < numAbstractedActions; ++a)
                profile[game.layout().index(node, field)][a] =
                    node.child[a] == CompiledTree::noChild ? 0.0 : 1.0 / legal;
    }
    return profile;
}

namespace {

Result<std::array<double, numAbstractedActions>>
averageOf(const CompiledTree::Node& at, const CFRNode& node, const std::string& key) {
    std::array<double, numAbstractedActions> shares{};
    if (node.getNumValidActions() == 0) {
        shares[actionCall] = 1.0;
        return shares;
    }
    double average[numAbstractedActions];
    node.getAverageStrategy(average);
    for (int a = 0; a < numAbstractedActions; ++a) {
        if (!node.isActionValid(a))
            continue;
        if (at.child[a] == CompiledTree::noChild)
            return Error{"information set " + key + " allows " + abstractedActionNames[a] +
                         ", which the rules do not: the strategy is another game's"};
        if (!std::isfinite(average[a]) || average[a] < 0.0)
            return Error{"information set " + key + " has no strategy: its sums are damaged"};
        shares[static_cast<size_t>(a)] = average[a];
    }
    return shares;
}

} // namespace

Result<Profile> averageProfile(const SmallGame& game, const CFR& solver) {
    Profile profile(game.layout().numSets());
    const std::vector<CompiledTree::Node>& nodes = game.tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n) {
        const NodeMap& map = solver.nodeMap(nodes[n].player, nodes[n].round);
        for (uint32_t field = 0; field < game.layout().numBuckets(nodes[n].slot); ++field) {
            const std::string key =
                cardRankKey(game.tree(), static_cast<int32_t>(n), static_cast<int>(field));
            const auto found = map.find(key);
            if (found == map.end())
                return Error{"information set " + key +
                             " is missing: the strategy is another game's, or not whole"};
            auto shares = averageOf(nodes[n], *found->second, key);
            if (!shares)
                return Error{shares.error()};
            profile[game.layout().index(nodes[n], field)] = *shares;
        }
    }
    return profile;
}

} // namespace tamarin
