// A small game, compiled: its betting tree and what its hands are worth. Made once a solver.
#pragma once

#include "tree/compiled_tree.h"
#include "tree/payoffs.h"

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

} // namespace tamarin
