#include "solver/information_sets.h"

#include "tree/deck.h"

#include <cmath>

namespace tamarin {

namespace {

// The valid actions' numbers, or nothing when an action leads nowhere or a number is not finite.
std::optional<SetActions> readNode(const CompiledTree::Node& at, const CFRNode& node,
                                   SetNumbers& numbers) {
    SetActions actions;
    for (uint8_t a = 0; a < numAbstractedActions; ++a) {
        if (!node.isActionValid(a))
            continue;
        if (at.child[a] == CompiledTree::noChild || !std::isfinite(node.regretSum[a]) ||
            !std::isfinite(node.strategySum[a]))
            return std::nullopt;
        numbers.regret[actions.count] = node.regretSum[a];
        numbers.strategy[actions.count] = node.strategySum[a];
        actions.action[actions.count++] = a;
    }
    return actions;
}

} // namespace

InformationSets::InformationSets(const CompiledTree& tree, const Game& game)
    : layout_(cardRankLayout(tree, game)), numbers_(layout_.numSets()), actions_(layout_.numSets()),
      nodes_(layout_.numSets()) {}

std::optional<InformationSets> InformationSets::read(const CompiledTree& tree, const Game& game,
                                                     const NodeMap* nodeMaps) {
    InformationSets sets(tree, game);
    const int fields = numCardFields(game);
    for (size_t n = 0; n < tree.nodes().size(); ++n) {
        const CompiledTree::Node& at = tree.nodes()[n];
        const NodeMap& map = nodeMaps[at.round + at.player * game.numRounds];
        const std::string sequence = tree.sequence(static_cast<int32_t>(n));
        for (int field = 0; field < fields; ++field) {
            const auto found = map.find(cardRankKey(at, field, sequence));
            if (found == map.end())
                return std::nullopt;
            const size_t set = sets.layout_.index(at, static_cast<uint64_t>(field));
            const auto actions = readNode(at, *found->second, sets.numbers_[set]);
            if (!actions)
                return std::nullopt;
            sets.actions_[set] = *actions;
            sets.nodes_[set] = found->second;
        }
    }
    return sets;
}

void InformationSets::write() const {
    for (size_t set = 0; set < nodes_.size(); ++set)
        for (uint8_t i = 0; i < actions_[set].count; ++i) {
            const uint8_t a = actions_[set].action[i];
            nodes_[set]->regretSum[a] = numbers_[set].regret[i];
            nodes_[set]->strategySum[a] = numbers_[set].strategy[i];
        }
}

} // namespace tamarin
