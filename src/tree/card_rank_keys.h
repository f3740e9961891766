// Information sets by the rank of the first hole card, as the player knows those of small games.
#pragma once

#include "tree/compiled_tree.h"

#include <cstdint>
#include <string>

namespace tamarin {

// "player:round:card field:actions". sequence: the actions on the way to the node.
std::string cardRankKey(const CompiledTree::Node& node, int field, const std::string& sequence);
std::string cardRankKey(const CompiledTree& tree, int32_t node, int field);

// The layout of a card-rank tree: every slot has one bucket for each card field.
SetLayout cardRankLayout(const CompiledTree& tree, const Game& game);

} // namespace tamarin
