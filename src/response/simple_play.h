// Strategies that do not look at their cards.
#pragma once

#include "response/hand_strategy.h"
#include "tree/compiled_tree.h"

#include <optional>
#include <string_view>

namespace tamarin {

enum class SimplePlay : uint8_t { uniform, fold, call, raise };

// "uniform", "fold", "call", "raise".
std::optional<SimplePlay> simplePlayNamed(std::string_view name);

// Every action that the rules allow with the same probability; or one action always. Where nothing
// is owed, who folds calls; where the raises are used up, who raises calls.
class SimpleStrategy : public HandStrategy {
public:
    // The tree must outlive the object.
    SimpleStrategy(const CompiledTree& tree, SimplePlay play) : tree_(tree), play_(play) {}

    size_t numClasses(int, int) const override { return 1; }
    uint16_t classOf(int, int, std::span<const uint8_t>) const override { return 0; }
    ActionShares shares(int32_t node, size_t handClass) const override;

private:
    const CompiledTree& tree_;
    SimplePlay play_;
};

} // namespace tamarin
