// What a solver does with the nodes of a small game on its compiled tree, besides training.
#pragma once

#include "solver/information_sets.h"
#include "tree/compiled_game.h"

namespace tamarin {

// Adds to the node maps what CFR::createAbstractedGameTree leaves after every deal: a zeroed node
// for each decision node and each card field of the deck.
void addCardRankNodes(const CompiledTree& tree, const Game& game, NodeMap* nodeMaps);

// What CFR::calcUtility computes, to the bit: the value to each seat over all deals when everybody
// plays the average strategy of sets.
void averageValues(const Game& game, CompiledGame& compiled, const InformationSets& sets,
                   double* result);

} // namespace tamarin
