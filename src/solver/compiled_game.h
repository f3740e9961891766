// A small game, compiled: its betting tree and what its hands are worth. Made once a solver.
#pragma once

#include "solver/compiled_tree.h"
#include "solver/information_sets.h"
#include "solver/payoffs.h"

namespace tamarin {

class CompiledGame {
public:
    // maxNodes: as in CompiledTree.
    explicit CompiledGame(const Game& game, size_t maxNodes = CompiledTree::mostNodes)
        : tree(game, maxNodes), payoffs(game, tree) {}
    CompiledGame(const CompiledGame&) = delete;
    CompiledGame& operator=(const CompiledGame&) = delete;

    CompiledTree tree;
    Payoffs payoffs;
};

// Adds to the node maps what CFR::createAbstractedGameTree leaves after every deal: a zeroed node
// for each decision node and each card field of the deck.
void addCardRankNodes(const CompiledTree& tree, const Game& game, NodeMap* nodeMaps);

// What CFR::calcUtility computes, to the bit: the value to each seat over all deals when everybody
// plays the average strategy of sets.
void averageValues(const Game& game, CompiledGame& compiled, const InformationSets& sets,
                   double* result);

} // namespace tamarin
