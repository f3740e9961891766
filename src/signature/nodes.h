// Information sets as the signature takes them: keys, regrets and strategy sums, in byte order of
// the keys.
#pragma once

#include "solver/cfr.h"
#include "strategy/node_store.h"
#include "support/fnv.h"

namespace tamarin::signature {

inline void addNode(Fnv1a& hash, const std::string& key, const CFRNode& node) {
    hash.add(key);
    for (int a = 0; a < numAbstractedActions; ++a) {
        hash.add(node.regretSum[a]);
        hash.add(node.strategySum[a]);
    }
}

inline void addNodes(Fnv1a& hash, const CFR& solver) {
    const Game& game = solver.getGame();
    for (int player = 0; player < game.numPlayers; ++player)
        for (int round = 0; round < game.numRounds; ++round)
            for (const auto& [key, node] : solver.nodeMap(player, round))
                addNode(hash, key, *node);
}

inline void addNodes(Fnv1a& hash, const NodeStore& store, const Game& game) {
    for (int m = 0; m < game.numPlayers * game.numRounds; ++m)
        store.forEach(m, [&](const std::string& key, const CFRNode& node) {
            addNode(hash, key, node);
            return true;
        });
}

} // namespace tamarin::signature
