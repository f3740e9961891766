// What the built-in bots do, as strategies whose probabilities are known.
#pragma once

#include "bots/rule_choice.h"
#include "response/hand_strategy.h"
#include "tree/compiled_tree.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tamarin {

// The rule bot: it knows a hand by how good it looks.
class RulePlay : public HandStrategy {
public:
    // The game must outlive the object.
    RulePlay(const Game& game, const CompiledTree& tree);

    size_t numClasses(int, int) const override { return handClasses; }
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override;
    ActionShares shares(int32_t node, size_t handClass) const override;

private:
    static constexpr size_t handClasses = static_cast<size_t>(HandClass::strong) + 1;
    void ask(const CompiledTree& tree, int32_t node, const State& state);

    const Game& game_;
    std::vector<std::array<uint8_t, handClasses>> actions_; // by node
};

// "random", "call", "raise" and "rule", as botKinds() has them, in a limit game; null for any other
// name. The game and the tree must outlive what is made.
std::unique_ptr<HandStrategy> botPlay(std::string_view bot, const Game& game,
                                      const CompiledTree& tree);

} // namespace tamarin
