#include "tree/card_rank_keys.h"

#include "tree/deck.h"

namespace tamarin {

std::string cardRankKey(const CompiledTree::Node& node, int field, const std::string& sequence) {
    return std::to_string(node.player) + ':' + std::to_string(node.round) + ':' +
           std::to_string(field) + ':' + sequence;
}

std::string cardRankKey(const CompiledTree& tree, int32_t node, int field) {
    return cardRankKey(tree.nodes()[static_cast<size_t>(node)], field, tree.sequence(node));
}

SetLayout cardRankLayout(const CompiledTree& tree, const Game& game) {
    return SetLayout(tree, std::vector<uint32_t>(tree.slots().size(),
                                                 static_cast<uint32_t>(numCardFields(game))));
}

} // namespace tamarin
