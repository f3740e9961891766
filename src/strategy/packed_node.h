// A node's numbers as training holds them: of the valid actions alone, one behind the other.
#pragma once

#include "strategy/cfr_node.h"
#include "tree/compiled_tree.h"
#include "tree/set_numbers.h"

#include <cmath>
#include <optional>

namespace tamarin {

// The valid actions, their numbers into numbers; nothing where one leads nowhere in the tree or has
// a sum that no training leaves: fast forms would not treat it as the plain ones do.
inline std::optional<SetActions> packNode(const CFRNode& node, const CompiledTree::Node& at,
                                          SetNumbers& numbers) {
    SetActions actions;
    for (uint8_t a = 0; a < numAbstractedActions; ++a) {
        if (!node.isActionValid(a))
            continue;
        if (at.child[a] == CompiledTree::noChild || !std::isfinite(node.regretSum[a]) ||
            !std::isfinite(node.strategySum[a]) || node.strategySum[a] < 0.0)
            return std::nullopt;
        numbers.regret[actions.count] = node.regretSum[a];
        numbers.strategy[actions.count] = node.strategySum[a];
        actions.action[actions.count++] = a;
    }
    return actions;
}

inline void unpackNode(const SetActions& actions, const SetNumbers& numbers, CFRNode& node) {
    for (uint8_t i = 0; i < actions.count; ++i) {
        node.regretSum[actions.action[i]] = numbers.regret[i];
        node.strategySum[actions.action[i]] = numbers.strategy[i];
    }
}

} // namespace tamarin
