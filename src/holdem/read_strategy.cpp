#include "holdem/read_strategy.h"

#include "strategy/mapped_strategy.h"

#include <algorithm>

namespace tamarin {

Status readStrategyFile(const std::string& path, HoldemSets& sets) {
    const auto& slots = sets.tree().slots();
    int numMaps = 0; // a tree has slots in every map up to the last
    for (const CompiledTree::Slot& slot : slots)
        numMaps = std::max(numMaps, slot.player + 1);
    numMaps *= sets.numRounds();
    const auto strategy = MappedStrategy::open(path, numMaps);
    if (!strategy)
        return Error{strategy.error()};
    for (int m = 0; m < numMaps; ++m) {
        if (strategy->count(m) != sets.count(m))
            return Error{path + ": section " + std::to_string(m) + " has " +
                         std::to_string(strategy->count(m)) + " nodes, the game has " +
                         std::to_string(sets.count(m)) + " there"};
        std::string last;
        const bool good = strategy->forEach(m, [&](const std::string& key, const CFRNode& node) {
            last = key;
            return sets.set(m, key, node);
        });
        if (!good)
            return Error{path + ": the node \"" + last + "\" of section " + std::to_string(m) +
                         " is damaged or another game's"};
    }
    return {};
}

} // namespace tamarin
