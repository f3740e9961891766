// The betting of a strategy, node by node, as a view of one decision walks it: of limit games for
// two, and of trees with the sizes of a menu or with more seats.
#pragma once

#include "game/game.h"
#include "response/hand_strategy.h"
#include "sampling/ready_blueprint.h"
#include "support/result.h"
#include "tree/compiled_tree.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tamarin {

// A node and what was done on the way to it.
struct DecisionWay {
    int32_t node = 0;
    std::vector<std::pair<int32_t, size_t>> taken; // nodes before, each with the edge
};

// What may be done at a node.
struct DecisionEdge {
    ActionType type;
    std::string letters;            // "f", "c", "r", "r300"
    std::string name;               // "fold", "call", "raise", "raise 300"
    std::optional<int32_t> raiseTo; // of a no-limit raise: the total that is put in,
    double pots = 0;                // what that is more than a call, in pots after the call,
    bool allIn = false;             // and whether it is all that the seat has
    int32_t child;                  // a node; below 0 the hand ends
};

class DecisionTree {
public:
    struct Place {
        uint8_t seat; // to act
        uint8_t round;
    };

    virtual ~DecisionTree() = default;

    virtual Place place(int32_t node) const = 0;
    // In their order: fold, call, raises from the smallest.
    virtual std::vector<DecisionEdge> edges(const DecisionWay& way) const = 0;
    // By what a hand is known: cards are the seat's hole cards and the board up to the round.
    virtual uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const = 0;
    // Of each edge; they add up to 1.
    virtual std::vector<double> shares(int32_t node, size_t handClass) const = 0;
};

// All must outlive the object.
class LimitDecisions : public DecisionTree {
public:
    LimitDecisions(const CompiledTree& tree, const HandStrategy& strategy)
        : tree_(tree), strategy_(strategy) {}

    Place place(int32_t node) const override;
    std::vector<DecisionEdge> edges(const DecisionWay& way) const override;
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override;
    std::vector<double> shares(int32_t node, size_t handClass) const override;

private:
    const CompiledTree& tree_;
    const HandStrategy& strategy_;
};

class MenuDecisions : public DecisionTree {
public:
    MenuDecisions(const Game& game, const ReadyBlueprint& ready)
        : game_(game), tree_(ready.blueprint().tree()), ready_(ready) {}

    Place place(int32_t node) const override;
    std::vector<DecisionEdge> edges(const DecisionWay& way) const override;
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override;
    std::vector<double> shares(int32_t node, size_t handClass) const override;

private:
    const Game& game_;
    const MenuTree& tree_;
    const ReadyBlueprint& ready_;
};

// Where the actions lead, by their letters f, c and r, in no-limit with the total that is raised
// to: "r300c". "/" between rounds may stand or be missing. An error where the rules do not allow an
// action or the tree has no raise to that total, and where the hand is over.
Result<DecisionWay> followActions(const DecisionTree& tree, const std::string& actions);

// The actions of a way, "/" where a round begins.
std::string actionsOf(const DecisionTree& tree, const DecisionWay& way);

} // namespace tamarin
