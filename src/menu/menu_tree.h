// The betting tree of a game and a menu in flat arrays: two or more seats, limit and no-limit.
//
// Beside CompiledTree: that one has three actions at most, raises without a size, and slots by who
// can still act, since `player` and its files know a node so. Here a node has as many raises as the
// menu offers, and what is kept of an edge is the total raised to. Both are built by the same rules
// (State, isValidAction, doAction) and number nodes alike, depth-first, fold before call before
// raises; of a limit game they have the same nodes.
//
// Numbers that training keeps for each action lie by round and seat: those of one bucket together,
// its nodes in depth-first order. A walk of one deal sees one bucket of each round and seat.
#pragma once

#include "menu/betting_menu.h"
#include "tree/compiled_tree.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tamarin {

class MenuTree {
public:
    static constexpr size_t mostEdges = 2 + BettingMenu::mostSizes + BettingMenu::mostBesides;
    static constexpr size_t mostNodes = 100'000'000;

    struct Node {
        uint32_t firstEdge;
        uint32_t numbers; // of its first edge, among those of its round and seat
        uint8_t numEdges; // fold, where something is owed; call; raises, ascending
        uint8_t seat;     // to act
        uint8_t round;
        bool hasFold;
    };
    struct Edge {
        int32_t child;   // a node, or ~settlement (< 0)
        int32_t raiseTo; // of a no-limit raise; otherwise 0
    };
    using Settlement = CompiledTree::Settlement;

    // Of a limit game, which has no menu.
    explicit MenuTree(const Game& game, size_t maxNodes = mostNodes);
    // Of a no-limit game. ownSeat: whose sizes are the menu's bets alone, while all others have
    // those of opponents, too; empty: everybody has the bets alone. Throws std::length_error beyond
    // maxNodes decision nodes, std::bad_alloc without memory.
    MenuTree(const Game& game, const BettingMenu& menu, std::optional<int> ownSeat = {},
             size_t maxNodes = mostNodes);

    const std::vector<Node>& nodes() const { return nodes_; }
    const Node& node(int32_t number) const { return nodes_[static_cast<size_t>(number)]; }
    std::span<const Edge> edges(const Node& node) const {
        return {edges_.data() + node.firstEdge, node.numEdges};
    }
    size_t numEdges() const { return edges_.size(); }
    const std::vector<Settlement>& settlements() const { return settlements_; }

    // What an edge of a node is in the rules: edge counts from 0 at each node.
    Action action(const Node& node, size_t edge) const;

    // Edges of all nodes of a round and seat: numbers of one bucket.
    size_t numbersOf(int round, int seat) const {
        return numbers_[static_cast<size_t>(round)][static_cast<size_t>(seat)];
    }
    size_t nodesIn(int round) const { return nodesIn_[static_cast<size_t>(round)]; }

private:
    class Builder;

    std::vector<Node> nodes_;
    std::vector<Edge> edges_;
    std::vector<Settlement> settlements_;
    std::array<std::array<size_t, MAX_PLAYERS>, MAX_ROUNDS> numbers_{};
    std::array<size_t, MAX_ROUNDS> nodesIn_{};
};

} // namespace tamarin
