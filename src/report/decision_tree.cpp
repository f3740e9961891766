#include "report/decision_tree.h"

#include "menu/bet_size.h"
#include "tree/abstracted_actions.h"

#include <algorithm>

#include <fmt/format.h>

namespace tamarin {

namespace {

// A letter and the digits behind it.
std::string_view actionAt(std::string_view text) {
    size_t length = 1;
    while (length < text.size() && text[length] >= '0' && text[length] <= '9')
        ++length;
    return text.substr(0, length);
}

std::string whatThereIs(const std::vector<DecisionEdge>& edges) {
    std::string all;
    for (const DecisionEdge& edge : edges)
        all += (all.empty() ? "" : ", ") + edge.letters;
    return all;
}

} // namespace

DecisionTree::Place LimitDecisions::place(int32_t node) const {
    const auto& at = tree_.nodes()[static_cast<size_t>(node)];
    return {at.player, at.round};
}

std::vector<DecisionEdge> LimitDecisions::edges(const DecisionWay& way) const {
    const auto& node = tree_.nodes()[static_cast<size_t>(way.node)];
    std::vector<DecisionEdge> edges;
    for (size_t a = 0; a < numAbstractedActions; ++a)
        if (node.child[a] != CompiledTree::noChild)
            edges.push_back({static_cast<ActionType>(a),
                             std::string(1, actionChars[a]),
                             abstractedActionNames[a],
                             {},
                             0,
                             false,
                             node.child[a]});
    return edges;
}

uint16_t LimitDecisions::classOf(int seat, int round, std::span<const uint8_t> cards) const {
    return strategy_.classOf(seat, round, cards);
}

std::vector<double> LimitDecisions::shares(int32_t node, size_t handClass) const {
    const ActionShares all = strategy_.shares(node, handClass);
    std::vector<double> shares;
    for (size_t a = 0; a < all.size(); ++a)
        if (tree_.nodes()[static_cast<size_t>(node)].child[a] != CompiledTree::noChild)
            shares.push_back(all[a]);
    return shares;
}

DecisionTree::Place MenuDecisions::place(int32_t node) const {
    return {tree_.node(node).seat, tree_.node(node).round};
}

std::vector<DecisionEdge> MenuDecisions::edges(const DecisionWay& way) const {
    State state{};
    initState(&game_, 0, &state);
    for (const auto& [node, edge] : way.taken) {
        const Action action = tree_.action(tree_.node(node), edge);
        doAction(&game_, &action, &state);
    }
    const MenuTree::Node& node = tree_.node(way.node);
    std::vector<DecisionEdge> edges;
    for (size_t e = 0; e < node.numEdges; ++e) {
        const Action action = tree_.action(node, e);
        DecisionEdge edge{action.type,
                          std::string(1, actionChars[action.type]),
                          abstractedActionNames[action.type],
                          {},
                          0,
                          false,
                          tree_.edges(node)[e].child};
        if (action.type == actionRaise && game_.bettingRule == noLimitRule) {
            edge.letters += std::to_string(action.size);
            edge.name += ' ' + std::to_string(action.size);
            edge.raiseTo = action.size;
            edge.pots = static_cast<double>(action.size - state.maxSpent) /
                        static_cast<double>(potAfterCall(game_, state));
            edge.allIn = action.size == game_.stack[node.seat];
        }
        edges.push_back(edge);
    }
    return edges;
}

uint16_t MenuDecisions::classOf(int, int round, std::span<const uint8_t> cards) const {
    return ready_.buckets().bucket(round, cards.first(game_.numHoleCards),
                                   cards.subspan(game_.numHoleCards));
}

std::vector<double> MenuDecisions::shares(int32_t node, size_t handClass) const {
    std::vector<double> shares;
    for (const uint8_t part : ready_.blueprint().parts(node, handClass))
        shares.push_back(part / 255.0);
    return shares;
}

Result<DecisionWay> followActions(const DecisionTree& tree, const std::string& actions) {
    DecisionWay way;
    std::string before;
    for (std::string_view left = actions; !left.empty();) {
        if (left.front() == '/') {
            left.remove_prefix(1);
            continue;
        }
        const std::string_view action = actionAt(left);
        if (std::string_view("fcr").find(left.front()) == std::string_view::npos)
            return Error{fmt::format("'{}' is no action: they are f, c and r", left.front())};
        const std::vector<DecisionEdge> edges = tree.edges(way);
        const auto edge = std::ranges::find(edges, action, &DecisionEdge::letters);
        before += action;
        const bool sized = std::ranges::any_of(
            edges, [](const DecisionEdge& each) { return each.raiseTo.has_value(); });
        if (edge == edges.end() && (action.size() > 1 || (sized && action == "r")))
            return Error{fmt::format("the last action of \"{}\" is none that the blueprint has "
                                     "there: {}",
                                     before, whatThereIs(edges))};
        if (edge == edges.end())
            return Error{fmt::format("the rules do not allow the last action of \"{}\"", before)};
        if (edge->child < 0)
            return Error{fmt::format("after \"{}\" the hand is over", before)};
        way.taken.emplace_back(way.node, static_cast<size_t>(edge - edges.begin()));
        way.node = edge->child;
        left.remove_prefix(action.size());
    }
    return way;
}

std::string actionsOf(const DecisionTree& tree, const DecisionWay& way) {
    std::string text;
    int round = 0;
    const auto roundAt = [&](int32_t node) {
        for (; round < tree.place(node).round; ++round)
            text += '/';
    };
    DecisionWay walked;
    for (const auto& [node, edge] : way.taken) {
        roundAt(node);
        walked.node = node;
        text += tree.edges(walked)[edge].letters;
        walked.taken.emplace_back(node, edge);
    }
    roundAt(way.node);
    return text;
}

} // namespace tamarin
