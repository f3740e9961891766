// Whether nodes are a strategy of a game: one rule for whoever plays, checks, measures or trains on
// them.
//
// A strategy file names no game. One of another game can read well and know nothing of this one,
// which would be noticed in the first hand and never mended.
#pragma once

#include "strategy/cfr_node.h"
#include "strategy/node_store.h"
#include "support/file.h"
#include "tree/compiled_tree.h"

#include <array>
#include <cstdint>
#include <string>

namespace tamarin {

using LegalActions = std::array<bool, numAbstractedActions>;
LegalActions legalActions(const CompiledTree::Node& decision);

// Which actions a node has: training of small games takes useless ones away.
enum class ValidActions : uint8_t { allLegal, someLegal };

// What is wrong with a node where these actions are legal: "allows fold, which the rules do not",
// "lacks call" or "has a damaged sum for raise". Empty when nothing is.
std::string faultOf(const CFRNode& node, const LegalActions& legal, ValidActions expected);

// Whether the nodes are exactly the card-rank information sets of a game small enough to enumerate,
// each with an action at least.
bool holdsSmallGame(const NodeStore& nodes, const Game& game);

// The same of a file, whose tree this is, but for sets without any action: training that takes away
// what is useless may leave them, and they call. And everything else that can be known of a file
// without a header: its exact size, and its keys, complete, in ascending order, in their own
// section, padded with zeros. An error names the file, the record and its byte offset, and what is
// wrong there.
Status checkStrategyFile(const Game& game, const CompiledTree& tree, const std::string& path,
                         FileSystem& files = systemFiles());

} // namespace tamarin
