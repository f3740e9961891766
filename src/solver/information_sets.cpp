#include "solver/information_sets.h"

#include "strategy/packed_node.h"
#include "tree/deck.h"

#include <cassert>

namespace tamarin {

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
            const auto actions = packNode(*found->second, at, sets.numbers_[set]);
            if (!actions)
                return std::nullopt;
            sets.actions_[set] = *actions;
            sets.nodes_[set] = found->second;
        }
    }
    return sets;
}

void InformationSets::write() const {
    for (size_t set = 0; set < nodes_.size(); ++set) {
        assert(nodes_[set] != nullptr);
        unpackNode(actions_[set], numbers_[set], *nodes_[set]);
    }
}

} // namespace tamarin
