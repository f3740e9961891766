#include "local_response/tree_opponent.h"

#include "holdem/pot_odds.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

void TreeOpponent::look(const PublicDeck& deck, int seat, int round, std::span<const uint8_t> board,
                        std::span<const uint16_t> holdings, SeenHands& seen) const {
    std::array<uint8_t, 2 + MAX_BOARD_CARDS> cards{};
    std::copy(board.begin(), board.end(), cards.begin() + 2);
    seen.classes.resize(holdings.size());
    seen.equities.resize(equity_ ? holdings.size() : 0);
    for (size_t i = 0; i < holdings.size(); ++i) {
        const auto hole = deck.cardsOf(holdings[i]);
        std::copy(hole.begin(), hole.end(), cards.begin());
        seen.classes[i] = strategy_.classOf(seat, round, {cards.data(), 2 + board.size()});
        if (equity_)
            seen.equities[i] = equity_(round, cards.data());
    }
}

int32_t TreeOpponent::nodeOf(const State& state) const {
    int32_t node = 0;
    for (size_t round = 0; round <= state.round; ++round)
        for (size_t i = 0; i < state.numActions[round]; ++i) {
            const auto action = static_cast<size_t>(state.action[round][i].type);
            node = tree_.nodes()[static_cast<size_t>(node)].child[action];
            if (node < 0)
                return noNode; // noChild; the hand is not over, so it is no settlement
        }
    return node;
}

void TreeOpponent::answer(const State& state, size_t hands, const SeenHands& seen,
                          RangeAnswer& answer) const {
    const int32_t node = nodeOf(state);
    if (node == noNode)
        answerByPotOdds(state, hands, seen, answer);
    else
        answerInTree(node, hands, seen, answer);
}

void TreeOpponent::answerInTree(int32_t node, size_t hands, const SeenHands& seen,
                                RangeAnswer& answer) const {
    const auto& child = tree_.nodes()[static_cast<size_t>(node)].child;
    answer.actions.clear();
    for (int a = 0; a < numAbstractedActions; ++a)
        if (child[a] != CompiledTree::noChild)
            answer.actions.push_back({static_cast<ActionType>(a), 0});
    answer.shares.resize(answer.actions.size());
    for (auto& row : answer.shares)
        row.resize(hands);
    for (size_t i = 0; i < hands; ++i) {
        const ActionShares shares = strategy_.shares(node, seen.classes[i]);
        for (size_t k = 0; k < answer.actions.size(); ++k)
            answer.shares[k][i] = shares[static_cast<size_t>(answer.actions[k].type)];
    }
}

void TreeOpponent::answerByPotOdds(const State& state, size_t hands, const SeenHands& seen,
                                   RangeAnswer& answer) const {
    assert(equity_ && seen.equities.size() == hands);
    const int seat = currentPlayer(&game_, &state);
    answer.actions = {{actionCall, 0}};
    answer.shares.resize(1);
    if (priceOfCall(game_, state, seat) <= 0) {
        answer.shares[0].assign(hands, 1.0);
        return;
    }
    answer.actions.push_back({actionFold, 0});
    answer.shares.resize(2);
    answer.shares[0].resize(hands);
    answer.shares[1].resize(hands);
    for (size_t i = 0; i < hands; ++i) {
        const bool calls = playByPotOdds(game_, state, seat, seen.equities[i]) == actionCall;
        answer.shares[0][i] = calls ? 1.0 : 0.0;
        answer.shares[1][i] = calls ? 0.0 : 1.0;
    }
}

} // namespace tamarin
