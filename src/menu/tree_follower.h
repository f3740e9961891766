// Walks a tree along a real hand, in which bets have any size, and says where the hand is in the
// tree and what an edge chosen there is in the real hand.
//
// A real bet is taken for one of the tree's by its size in pots (bet_translation.h); a smaller one
// than the least may be taken for a check or a call. So pots and stacks of the tree and of the hand
// may differ, and the tree may be done with a round while the hand is not, or with the whole hand:
// there is no node then, and the answer is to call what was taken for nothing. With two seats no
// other state is without a node. With more, a hand may leave the tree for good, when a seat folds
// to a bet that the tree took for none; in limit games it never does.
#pragma once

#include "menu/menu_tree.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tamarin {

class TreeFollower {
public:
    // Both must outlive the object. At the beginning of a hand.
    TreeFollower(const Game& game, const MenuTree& tree);

    void begin();

    // The node of the real state, whose seat to act is then the node's, too.
    std::optional<int32_t> node(const State& real) const;

    // Whether the hand has left the tree for good.
    bool lost() const { return lost_; }

    // A legal action for the real state's seat to act, by an edge of node(real). A raise has the
    // tree's size in pots; all-in stays all-in. Where the real hand does not allow a raise it is a
    // call, and where nothing is owed a fold is a check.
    Action actionOf(const State& real, size_t edge) const;
    // The same, and the tree's step along it.
    Action take(const State& real, size_t edge);
    // The same where there is no node.
    Action takeWithoutNode(const State& real);

    // An action of somebody else, legal in the real state, in which it is not done yet. draw:
    // uniform in [0, 1), for sizes that the tree lacks.
    void follow(const State& real, const Action& action, double draw);

private:
    std::optional<size_t> edgeOf(const State& real, const Action& action, double draw) const;
    size_t edgeOfRaise(const State& real, const Action& action, double draw) const;
    double potsOf(const MenuTree::Node& node, size_t edge) const;
    void step(size_t edge);
    static size_t callEdge(const MenuTree::Node& node) { return node.hasFold ? 1 : 0; }

    const Game& game_;
    const MenuTree& tree_;
    State state_{}; // of the tree
    int32_t at_ = 0;
    bool lost_ = false;
};

} // namespace tamarin
