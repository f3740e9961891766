#include "training/profile.h"

#include "strategy/soundness.h"
#include "tree/card_rank_keys.h"
#include "tree/deck.h"

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

std::array<double, numAbstractedActions> averageOf(const CFRNode& node) {
    std::array<double, numAbstractedActions> shares{};
    if (node.getNumValidActions() == 0) {
        shares[actionCall] = 1.0;
        return shares;
    }
    node.getAverageStrategy(shares.data());
    for (int a = 0; a < numAbstractedActions; ++a)
        if (!node.isActionValid(a))
            shares[static_cast<size_t>(a)] = 0.0;
    return shares;
}

} // namespace

Result<Profile> averageProfile(const SmallGame& game, const NodeStore& strategy) {
    Profile profile(game.layout().numSets());
    const std::vector<CompiledTree::Node>& nodes = game.tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (uint32_t field = 0; field < game.layout().numBuckets(nodes[n].slot); ++field) {
            const std::string key =
                cardRankKey(game.tree(), static_cast<int32_t>(n), static_cast<int>(field));
            CFRNode node;
            if (!strategy.find(nodes[n].round + nodes[n].player * game.game().numRounds, key, node))
                return Error{"information set " + key +
                             " is missing: the strategy is another game's, or not whole"};
            const std::string fault =
                faultOf(node, legalActions(nodes[n]), ValidActions::someLegal);
            if (!fault.empty())
                return Error{"information set " + key + " " + fault +
                             ": the strategy is damaged or another game's"};
            profile[game.layout().index(nodes[n], field)] = averageOf(node);
        }
    return profile;
}

} // namespace tamarin
