#include "menu/menu_tree.h"

#include "support/fnv.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace tamarin {

namespace {

struct SettlementHash {
    size_t operator()(const MenuTree::Settlement& settlement) const {
        Fnv1a hash;
        for (size_t seat = 0; seat < MAX_PLAYERS; ++seat) {
            if (settlement.spent[seat] == 0 && settlement.folded[seat] == 0)
                continue; // seats that the game lacks are most of them
            hash.add(settlement.spent[seat]);
            hash.add(settlement.folded[seat]);
        }
        return hash.value();
    }
};

// What an action changes of a state, but for the lists of actions: whatever lies beyond their
// lengths is not looked at. Copies of whole states, of 2.5 KB, took a third of the time.
class BeforeAction {
public:
    explicit BeforeAction(const State& state)
        : maxSpent_(state.maxSpent), minRaiseTo_(state.minRaiseTo), round_(state.round),
          finished_(state.finished), spent_(std::to_array(state.spent)),
          numActions_(std::to_array(state.numActions)),
          playerFolded_(std::to_array(state.playerFolded)) {}
    void restore(State& state) const {
        state.maxSpent = maxSpent_;
        state.minRaiseTo = minRaiseTo_;
        state.round = round_;
        state.finished = finished_;
        std::ranges::copy(spent_, state.spent);
        std::ranges::copy(numActions_, state.numActions);
        std::ranges::copy(playerFolded_, state.playerFolded);
    }

private:
    int32_t maxSpent_;
    int32_t minRaiseTo_;
    uint8_t round_;
    uint8_t finished_;
    std::array<int32_t, MAX_PLAYERS> spent_;
    std::array<uint8_t, MAX_ROUNDS> numActions_;
    std::array<uint8_t, MAX_PLAYERS> playerFolded_;
};

} // namespace

class MenuTree::Builder {
public:
    Builder(MenuTree& tree, const Game& game, const BettingMenu* menu, std::optional<int> ownSeat,
            size_t maxNodes)
        : tree_(tree), game_(game), menu_(menu), ownSeat_(ownSeat), maxNodes_(maxNodes) {}

    // Adds the state's subtree and returns what the edge above it holds. Leaves the state as it
    // was.
    int32_t add(State& state) {
        if (state.finished)
            return ~settle(state);
        if (tree_.nodes_.size() >= maxNodes_)
            throw std::length_error("the betting tree has more than " + std::to_string(maxNodes_) +
                                    " decision nodes");
        const auto id = static_cast<int32_t>(tree_.nodes_.size());
        Node node{};
        node.seat = currentPlayer(&game_, &state);
        node.round = state.round;
        std::array<Action, mostEdges> actions{};
        const size_t count = offer(state, node.seat, actions);
        node.numEdges = static_cast<uint8_t>(count);
        node.hasFold = actions[0].type == actionFold;
        node.firstEdge = static_cast<uint32_t>(tree_.edges_.size());
        size_t& numbers = tree_.numbers_[node.round][node.seat];
        node.numbers = static_cast<uint32_t>(numbers);
        numbers += count;
        ++tree_.nodesIn_[node.round];
        tree_.nodes_.push_back(node);
        tree_.edges_.resize(tree_.edges_.size() + count);
        const BeforeAction before(state);
        for (size_t i = 0; i < count; ++i) {
            doAction(&game_, &actions[i], &state);
            const int32_t below = add(state);
            before.restore(state);
            tree_.edges_[node.firstEdge + i] = {below, actions[i].size};
        }
        return id;
    }

private:
    size_t offer(const State& state, int seat, std::array<Action, mostEdges>& actions) const {
        size_t count = 0;
        const auto take = [&](Action action) {
            if (!isValidAction(&game_, &state, 0, &action))
                return;
            assert(count < actions.size());
            actions[count++] = action;
        };
        if (state.spent[seat] < state.maxSpent)
            take({actionFold, 0});
        take({actionCall, 0});
        if (menu_ == nullptr) {
            int32_t least = 0;
            int32_t most = 0;
            if (mayRaise(game_, state, least, most))
                take({actionRaise, 0});
        } else {
            const bool besides = ownSeat_ && *ownSeat_ != seat;
            for (const int32_t total : menu_->raises(game_, state, besides))
                take({actionRaise, total});
        }
        return count;
    }

    int32_t settle(const State& state) {
        Settlement settlement{};
        for (size_t p = 0; p < game_.numPlayers; ++p) {
            settlement.spent[p] = state.spent[p];
            settlement.folded[p] = state.playerFolded[p];
        }
        const auto [at, isNew] =
            rows_.try_emplace(settlement, static_cast<int32_t>(tree_.settlements_.size()));
        if (isNew)
            tree_.settlements_.push_back(settlement);
        return at->second;
    }

    MenuTree& tree_;
    const Game& game_;
    const BettingMenu* menu_;
    std::optional<int> ownSeat_;
    size_t maxNodes_;
    std::unordered_map<Settlement, int32_t, SettlementHash> rows_;
};

MenuTree::MenuTree(const Game& game, size_t maxNodes) {
    assert(game.bettingRule == limitRule);
    State state{};
    initState(&game, 0, &state);
    Builder(*this, game, nullptr, {}, maxNodes).add(state);
}

MenuTree::MenuTree(const Game& game, const BettingMenu& menu, std::optional<int> ownSeat,
                   size_t maxNodes) {
    assert(game.bettingRule == noLimitRule);
    State state{};
    initState(&game, 0, &state);
    Builder(*this, game, &menu, ownSeat, maxNodes).add(state);
}

Action MenuTree::action(const Node& node, size_t edge) const {
    assert(edge < node.numEdges);
    if (edge == 0 && node.hasFold)
        return {actionFold, 0};
    if (edge == (node.hasFold ? 1U : 0U))
        return {actionCall, 0};
    return {actionRaise, edges_[node.firstEdge + edge].raiseTo};
}

} // namespace tamarin
