// What a hand wins against a strategy, card by card and hand by hand: the measure that is obvious.
#pragma once

#include "response/measured.h"

#include <functional>
#include <vector>

namespace tamarin::test {

class PlainResponse {
public:
    // Whether the seat plays best at a node, and not as the strategy does.
    using Chooses = std::function<bool(int32_t node)>;

    PlainResponse(const Measured& measured, int seat, bool best)
        : PlainResponse(measured, seat, [best](int32_t) { return best; }) {}
    PlainResponse(const Measured& measured, int seat, Chooses chooses)
        : measured_(measured), seat_(seat), chooses_(std::move(chooses)) {}

    // Always takes one action at one node.
    void force(int32_t node, size_t action) {
        forcedNode_ = node;
        forcedAction_ = action;
    }

    // Chips a hand, over all hands: one of each class of starting hands wins as all of it do.
    double mean() const {
        const PublicDeck& deck = measured_.deck;
        double sum = 0;
        for (size_t c = 0; c < deck.numHandClasses(); ++c) {
            size_t holding = 0;
            while (deck.handClassOf(holding) != c)
                ++holding;
            sum += deck.handClassSize(c) * ofHand(deck.cardsOf(holding));
        }
        return sum / static_cast<double>(deck.holdings().size());
    }

    double ofHand(std::array<uint8_t, 2> hand) const {
        std::vector<Other> others;
        const auto& deck = measured_.deck.cards();
        for (size_t high = 1; high < deck.size(); ++high)
            for (size_t low = 0; low < high; ++low)
                if (!has(hand, deck[low]) && !has(hand, deck[high]))
                    others.push_back({{deck[low], deck[high]}, 1.0});
        return at(0, hand, {}, others) / static_cast<double>(others.size());
    }

private:
    // A hand of the opponent, with the probability of its actions.
    struct Other {
        std::array<uint8_t, 2> cards;
        double reach;
    };
    using Cards = std::vector<uint8_t>;

    static bool has(std::span<const uint8_t> cards, uint8_t card) {
        return std::ranges::find(cards, card) != cards.end();
    }
    ActionShares shares(int32_t node, int seat, std::array<uint8_t, 2> hand,
                        const Cards& board) const {
        const int round = measured_.tree.nodes()[static_cast<size_t>(node)].round;
        std::array<uint8_t, 2 + MAX_BOARD_CARDS> cards{hand[0], hand[1]};
        std::ranges::copy(board, cards.begin() + 2);
        return measured_.strategy->shares(
            node, measured_.strategy->classOf(seat, round, {cards.data(), 2 + board.size()}));
    }

    // The sum over the others of what the hand wins against each.
    double at(int32_t number, std::array<uint8_t, 2> hand, const Cards& board,
              const std::vector<Other>& others) const {
        const auto& node = measured_.tree.nodes()[static_cast<size_t>(number)];
        const size_t cards = boardCardsUpTo(node.round);
        if (board.size() < cards)
            return dealt(number, hand, board, others, cards - board.size());
        std::vector<ActionShares> sharesOf;
        sharesOf.reserve(others.size());
        if (node.player != seat_)
            for (const Other& other : others)
                sharesOf.push_back(shares(number, 1 - seat_, other.cards, board));
        double result = 0;
        bool first = true;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            if (node.player != seat_) {
                std::vector<Other> next = others;
                for (size_t i = 0; i < next.size(); ++i)
                    next[i].reach *= sharesOf[i][a];
                result += follow(node.child[a], hand, board, next);
                continue;
            }
            if (number == forcedNode_ && a != forcedAction_)
                continue;
            const double value = follow(node.child[a], hand, board, others);
            if (number == forcedNode_)
                result = value;
            else if (!chooses_(number))
                result += shares(number, seat_, hand, board)[a] * value;
            else if (first || value > result)
                result = value;
            first = false;
        }
        return result;
    }

    double follow(int32_t child, std::array<uint8_t, 2> hand, const Cards& board,
                  const std::vector<Other>& others) const {
        if (child >= 0)
            return at(child, hand, board, others);
        const auto& settlement = measured_.tree.settlements()[static_cast<size_t>(~child)];
        const auto own = static_cast<size_t>(seat_);
        double sum = 0;
        for (const Other& other : others) {
            if (settlement.folded[own] != 0)
                sum -= other.reach * settlement.spent[own];
            else if (settlement.folded[1 - own] != 0)
                sum += other.reach * settlement.spent[1 - own];
            else
                sum += other.reach * settlement.spent[own] * compare(hand, other.cards, board);
        }
        return sum;
    }

    static int compare(std::array<uint8_t, 2> hand, std::array<uint8_t, 2> other,
                       const Cards& board) {
        const auto rank = [&](std::array<uint8_t, 2> cards) {
            CardSet set = cardBit(cards[0]) | cardBit(cards[1]);
            for (const uint8_t card : board)
                set |= cardBit(card);
            return rankCardSet(set);
        };
        const int difference = rank(hand) - rank(other);
        return difference > 0 ? 1 : difference < 0 ? -1 : 0;
    }

    // The mean over the cards that may come; every pair of hands leaves equally many.
    double dealt(int32_t node, std::array<uint8_t, 2> hand, const Cards& board,
                 const std::vector<Other>& others, size_t count) const {
        double sum = 0;
        double boards = 1;
        const size_t left = measured_.deck.cards().size() - board.size() - 4;
        for (size_t i = 0; i < count; ++i)
            boards = boards * static_cast<double>(left - i) / static_cast<double>(i + 1);
        Cards next = board;
        const auto choose = [&](const auto& self, size_t from, size_t more) -> void {
            if (more == 0) {
                std::vector<Other> live;
                for (const Other& other : others)
                    if (!has(next, other.cards[0]) && !has(next, other.cards[1]))
                        live.push_back(other);
                sum += at(node, hand, next, live);
                return;
            }
            const auto& deck = measured_.deck.cards();
            for (size_t i = from; i < deck.size(); ++i)
                if (!has(hand, deck[i]) && !has(board, deck[i])) {
                    next.push_back(deck[i]);
                    self(self, i + 1, more - 1);
                    next.pop_back();
                }
        };
        choose(choose, 0, count);
        return sum / boards;
    }

    size_t boardCardsUpTo(int round) const {
        size_t cards = 0;
        for (int r = 0; r <= round; ++r)
            cards += measured_.game->numBoardCards[r];
        return cards;
    }

    const Measured& measured_;
    int seat_;
    Chooses chooses_;
    int32_t forcedNode_ = -1;
    size_t forcedAction_ = 0;
};

} // namespace tamarin::test
