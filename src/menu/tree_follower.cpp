#include "menu/tree_follower.h"

#include "menu/bet_translation.h"

#include <cassert>

namespace tamarin {

namespace {

__extension__ using Wide = __int128; // stacks may be unbounded

} // namespace

TreeFollower::TreeFollower(const Game& game, const MenuTree& tree) : game_(game), tree_(tree) {
    begin();
}

void TreeFollower::begin() {
    initState(&game_, 0, &state_);
    at_ = 0;
    lost_ = false;
}

std::optional<int32_t> TreeFollower::node(const State& real) const {
    if (lost_ || at_ < 0 || real.finished)
        return std::nullopt;
    const MenuTree::Node& node = tree_.node(at_);
    if (node.round != real.round || node.seat != currentPlayer(&game_, &real))
        return std::nullopt;
    return at_;
}

void TreeFollower::step(size_t edge) {
    const MenuTree::Node& node = tree_.node(at_);
    const Action action = tree_.action(node, edge);
    doAction(&game_, &action, &state_);
    at_ = tree_.edges(node)[edge].child;
}

// Of a raise, by its size.
double TreeFollower::potsOf(const MenuTree::Node& node, size_t edge) const {
    return static_cast<double>(tree_.edges(node)[edge].raiseTo - state_.maxSpent) /
           static_cast<double>(potAfterCall(game_, state_));
}

size_t TreeFollower::edgeOfRaise(const State& real, const Action& action, double draw) const {
    const MenuTree::Node& node = tree_.node(at_);
    const size_t call = callEdge(node);
    const size_t last = node.numEdges - size_t{1};
    if (last == call || game_.bettingRule == limitRule)
        return last;
    const int32_t stack = game_.stack[node.seat];
    if (action.size >= stack && tree_.edges(node)[last].raiseTo == stack)
        return last;
    const double bet = static_cast<double>(action.size - real.maxSpent) /
                       static_cast<double>(potAfterCall(game_, real));
    double smaller = 0; // of the call
    for (size_t edge = call + 1; edge <= last; ++edge) {
        const double larger = potsOf(node, edge);
        if (bet < larger)
            return draw < shareOfSmaller(smaller, larger, bet) ? edge - 1 : edge;
        smaller = larger;
    }
    return last;
}

std::optional<size_t> TreeFollower::edgeOf(const State& real, const Action& action,
                                           double draw) const {
    const MenuTree::Node& node = tree_.node(at_);
    switch (action.type) {
    case actionFold:
        return node.hasFold ? std::optional<size_t>(0) : std::nullopt;
    case actionCall:
        return callEdge(node);
    case actionRaise:
        return edgeOfRaise(real, action, draw);
    default:
        return std::nullopt;
    }
}

void TreeFollower::follow(const State& real, const Action& action, double draw) {
    if (lost_ || at_ < 0 || tree_.node(at_).round > real.round)
        return;
    const auto edge = node(real) ? edgeOf(real, action, draw) : std::nullopt;
    if (edge)
        step(*edge);
    else
        lost_ = true;
}

Action TreeFollower::actionOf(const State& real, size_t edge) const {
    assert(node(real));
    const MenuTree::Node& node = tree_.node(at_);
    Action action = tree_.action(node, edge);
    if (action.type == actionRaise && game_.bettingRule == noLimitRule) {
        const Wide pot = potAfterCall(game_, state_);
        const Wide more = Wide{action.size} - state_.maxSpent;
        int64_t total = game_.stack[node.seat];
        if (action.size < total && pot > 0) // to the nearest chip
            total = static_cast<int64_t>(real.maxSpent +
                                         (2 * more * potAfterCall(game_, real) + pot) / (2 * pot));
        action.size = legalRaise(total, game_, real).value_or(0);
    }
    int32_t least = 0;
    int32_t most = 0;
    const bool allowed = action.type == actionRaise ? mayRaise(game_, real, least, most)
                                                    : isValidAction(&game_, &real, 0, &action) != 0;
    return allowed ? action : Action{actionCall, 0};
}

Action TreeFollower::take(const State& real, size_t edge) {
    const Action action = actionOf(real, edge);
    const MenuTree::Node& node = tree_.node(at_);
    step(action.type == actionCall ? callEdge(node) : edge);
    return action;
}

Action TreeFollower::takeWithoutNode(const State& real) {
    assert(!node(real));
    const Action action{actionCall, 0};
    follow(real, action, 0);
    return action;
}

} // namespace tamarin
