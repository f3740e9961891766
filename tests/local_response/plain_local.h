// Local best response by the letter: hands are dealt to both, every deal is played, and every
// decision is worked out by Bayes' rule from all that went before.
#pragma once

#include "local_response/local_play.h"
#include "response/measured.h"
#include "showdown/plain_showdown.h"

#include <map>
#include <tuple>
#include <vector>

namespace tamarin::test {

// Of limit games.
class PlainLocal {
public:
    PlainLocal(const Measured& measured, int seat, bool raises, int from = 0)
        : measured_(measured), seat_(seat), raises_(raises), from_(from) {}

    // Chips a hand, over all deals.
    double mean() {
        double sum = 0;
        double deals = 0;
        for (size_t h = 0; h < measured_.deck.holdings().size(); ++h)
            for (size_t o = 0; o < measured_.deck.holdings().size(); ++o) {
                const Cards hand = cardsOf(h);
                const Cards other = cardsOf(o);
                if (has(hand, other[0]) || has(hand, other[1]))
                    continue;
                const Cards both{hand[0], hand[1], other[0], other[1]};
                eachBoard(*measured_.game, measured_.deck, both, [&](const Cards& board) {
                    sum += at(0, hand, other, board);
                    deals += 1;
                });
            }
        return sum / deals;
    }

private:
    using Node = CompiledTree::Node;

    const Node& node(int32_t number) const {
        return measured_.tree.nodes()[static_cast<size_t>(number)];
    }
    Cards cardsOf(size_t holding) const {
        const auto cards = measured_.deck.cardsOf(holding);
        return {cards[0], cards[1]};
    }
    Cards visible(const Cards& board, int round) const {
        return {board.begin(), board.begin() + sumBoardCards(measured_.game.get(), round)};
    }
    ActionShares shares(int32_t number, const Cards& hand, const Cards& board) const {
        Cards cards = hand;
        for (const uint8_t card : visible(board, node(number).round))
            cards.push_back(card);
        const HandStrategy& strategy = *measured_.strategy;
        return strategy.shares(number, strategy.classOf(1 - seat_, node(number).round, cards));
    }

    // What the hand wins on average against the other from a node on.
    double at(int32_t number, const Cards& hand, const Cards& other, const Cards& board) {
        if (node(number).player == seat_)
            return follow(node(number).child[decision(number, hand, board)], hand, other, board);
        const ActionShares share = shares(number, other, board);
        double sum = 0;
        for (size_t a = 0; a < share.size(); ++a)
            if (share[a] > 0)
                sum += share[a] * follow(node(number).child[a], hand, other, board);
        return sum;
    }
    double follow(int32_t child, const Cards& hand, const Cards& other, const Cards& board) {
        if (child >= 0)
            return at(child, hand, other, board);
        const auto& settlement = measured_.tree.settlements()[static_cast<size_t>(~child)];
        const auto own = static_cast<size_t>(seat_);
        if (settlement.folded[own] != 0)
            return -settlement.spent[own];
        if (settlement.folded[1 - own] != 0)
            return settlement.spent[1 - own];
        return settlement.spent[own] * showdown(hand, other, board);
    }

    int decision(int32_t number, const Cards& hand, const Cards& board) {
        const auto [known, isNew] = decisions_.try_emplace(
            {number, hand, visible(board, node(number).round)}, int{actionCall});
        if (isNew)
            known->second = weigh(number, hand, visible(board, node(number).round));
        return known->second;
    }

    State stateAt(int32_t number) const {
        State state{};
        initState(measured_.game.get(), 0, &state);
        for (const char letter : measured_.tree.sequence(number)) {
            const Action action{letter == 'f'   ? actionFold
                                : letter == 'c' ? actionCall
                                                : actionRaise,
                                0};
            doAction(measured_.game.get(), &action, &state);
        }
        return state;
    }

    int weigh(int32_t number, const Cards& hand, const Cards& board) {
        if (node(number).round < from_)
            return actionCall;
        const auto& child = node(number).child;
        const State state = stateAt(number);
        const int other = 1 - seat_;
        double all = 0;
        double won = 0;
        double folded = 0;
        double wonBehindRaise = 0;
        for (size_t o = 0; o < measured_.deck.holdings().size(); ++o) {
            const Cards cards = cardsOf(o);
            if (has(hand, cards[0]) || has(hand, cards[1]) || has(board, cards[0]) ||
                has(board, cards[1]))
                continue;
            const double reach = reachOf(number, cards, board);
            const double ahead = 2 * shareOf(hand, cards, board) - 1;
            all += reach;
            won += reach * ahead;
            if (child[actionRaise] == CompiledTree::noChild)
                continue;
            const double away = reach * shares(child[actionRaise], cards, board)[actionFold];
            folded += away;
            wonBehindRaise += (reach - away) * ahead;
        }
        constexpr double rounding = 1e-9; // what is better by less is as good
        int best = actionCall;
        double most = state.maxSpent * won;
        if (child[actionFold] != CompiledTree::noChild &&
            -state.spent[seat_] * all > most + rounding) {
            most = -state.spent[seat_] * all;
            best = actionFold;
        }
        if (raises_ && child[actionRaise] != CompiledTree::noChild) {
            const State raised = stateAt(child[actionRaise]);
            if (raised.spent[other] * folded + raised.maxSpent * wonBehindRaise > most + rounding)
                best = actionRaise;
        }
        return best;
    }

    // The probability of what the cards would have done on the way to the node.
    double reachOf(int32_t number, const Cards& cards, const Cards& board) const {
        const int32_t edge = node(number).parentEdge;
        if (edge == CompiledTree::noEdge)
            return 1;
        const int32_t parent = edge / numAbstractedActions;
        const auto action = static_cast<size_t>(edge % numAbstractedActions);
        const double before = reachOf(parent, cards, board);
        return node(parent).player == seat_ ? before
                                            : before * shares(parent, cards, board)[action];
    }

    // Of the pot, over all boards that may come.
    double shareOf(const Cards& hand, const Cards& other, const Cards& board) {
        const auto [known, isNew] = shares_.try_emplace({hand, other, board}, 0.0);
        if (!isNew)
            return known->second;
        uint64_t halves = 0;
        uint64_t boards = 0;
        const Cards both{hand[0], hand[1], other[0], other[1]};
        eachBoard(*measured_.game, measured_.deck, both, [&](const Cards& full) {
            if (!std::equal(board.begin(), board.end(), full.begin()))
                return;
            halves += static_cast<uint64_t>(1 + showdown(hand, other, full));
            ++boards;
        });
        return known->second = static_cast<double>(halves) / (2.0 * static_cast<double>(boards));
    }

    const Measured& measured_;
    int seat_;
    bool raises_;
    int from_;
    std::map<std::tuple<int32_t, Cards, Cards>, int> decisions_;
    std::map<std::tuple<Cards, Cards, Cards>, double> shares_;
};

// The mean of what LocalPlay says of every hole cards and board.
inline std::array<double, 2> meanOfAllDeals(const LocalGame& game) {
    LocalPlay play(game);
    std::array<double, 2> sum{};
    double deals = 0;
    for (size_t h = 0; h < game.deck.holdings().size(); ++h) {
        const auto hole = game.deck.cardsOf(h);
        eachBoard(game.game, game.deck, {hole[0], hole[1]}, [&](const Cards& board) {
            LocalDeal deal{hole, {}};
            std::ranges::copy(board, deal.board.begin());
            const auto values = play.values(deal);
            sum[0] += values[0];
            sum[1] += values[1];
            deals += 1;
        });
    }
    return {sum[0] / deals, sum[1] / deals};
}

} // namespace tamarin::test
