#include "showdown/board_margins.h"

#include "eval/hand_evaluator.h"
#include "game/showdown.h"
#include "support/choose.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

// Adds to net, for every holding that the board leaves, whether it beats the other hand.
class Showdowns {
public:
    Showdowns(const PublicDeck& deck, std::span<const uint8_t> other, bool fast)
        : deck_(deck), other_(other), fast_(fast), net_(deck.holdings().size()) {}

    void add(std::span<const uint8_t> board) {
        left_.clear();
        for (size_t place = 0; place < deck_.cards().size(); ++place)
            if (std::ranges::find(board, deck_.cards()[place]) == board.end())
                left_.push_back(place);
        const size_t hands = left_.size() * (left_.size() - 1) / 2;
        ranks_.resize(hands);
        if (fast_)
            HandEvaluator::shared().rankHoldings(board, ranks_.data());
        else
            rankPlainly(board);
        const uint16_t theirs = ranks_[theirNumber()];
        size_t i = 0;
        for (size_t high = 1; high < left_.size(); ++high) {
            int32_t* const net = net_.data() + left_[high] * (left_[high] - 1) / 2;
            for (size_t low = 0; low < high; ++low, ++i)
                net[left_[low]] += static_cast<int32_t>(ranks_[i] > theirs) -
                                   static_cast<int32_t>(ranks_[i] < theirs);
        }
    }
    const std::vector<int32_t>& net() const { return net_; }

private:
    void rankPlainly(std::span<const uint8_t> board) {
        CardSet cards = 0;
        for (const uint8_t card : board)
            cards |= cardBit(card);
        size_t i = 0;
        for (size_t high = 1; high < left_.size(); ++high)
            for (size_t low = 0; low < high; ++low)
                ranks_[i++] =
                    static_cast<uint16_t>(rankCardSet(cards | cardBit(deck_.cards()[left_[low]]) |
                                                      cardBit(deck_.cards()[left_[high]])));
    }
    size_t theirNumber() const {
        const auto at = [&](uint8_t card) {
            return static_cast<size_t>(std::ranges::find(left_, deck_.placeOf(card)) -
                                       left_.begin());
        };
        const size_t one = at(other_[0]);
        const size_t two = at(other_[1]);
        const size_t high = std::max(one, two);
        return high * (high - 1) / 2 + std::min(one, two);
    }

    const PublicDeck& deck_;
    std::span<const uint8_t> other_;
    bool fast_;
    std::vector<int32_t> net_;
    std::vector<size_t> left_; // places of the cards that are not on the board
    std::vector<uint16_t> ranks_;
};

// visit(board) for every way to complete the board with cards that are not the other's.
template <class Visit>
void forEachWhole(const PublicDeck& deck, std::span<const uint8_t> other,
                  std::vector<uint8_t>& board, size_t whole, size_t from, const Visit& visit) {
    if (board.size() == whole) {
        visit(board);
        return;
    }
    for (size_t place = from; place < deck.cards().size(); ++place) {
        const uint8_t card = deck.cards()[place];
        if (std::ranges::find(other, card) != other.end() ||
            std::ranges::find(board, card) != board.end())
            continue;
        board.push_back(card);
        forEachWhole(deck, other, board, whole, place + 1, visit);
        board.pop_back();
    }
}

bool touches(std::span<const uint8_t> hand, std::span<const uint8_t> cards) {
    return std::ranges::any_of(
        hand, [&](uint8_t card) { return std::ranges::find(cards, card) != cards.end(); });
}

} // namespace

BoardMargins::BoardMargins(const Game& game, const PublicDeck& deck)
    : deck_(deck), wholeBoard_(sumBoardCards(&game, game.numRounds - 1)),
      fullDeck_(deck.cards().size() == cardKeys.size() && wholeBoard_ == 5) {}

Status BoardMargins::prepare(const Work& work) {
    if (!fullDeck_ || preflop_)
        return {};
    auto counted = PreflopMargins::count(deck_, work);
    if (!counted)
        return Error{counted.error()};
    preflop_ = std::move(*counted);
    return {};
}

// Of the cards that neither player holds.
uint64_t BoardMargins::boardsToCome(size_t boardCards) const {
    return choose(deck_.cards().size() - 4 - boardCards, wholeBoard_ - boardCards);
}

bool BoardMargins::can(size_t boardCards) const {
    return boardsToCome(boardCards) <= mostBoards || (fullDeck_ && boardCards == 0);
}

std::vector<double> BoardMargins::of(std::span<const uint8_t> other,
                                     std::span<const uint8_t> board) const {
    if (!fullDeck_ || !board.empty())
        return counted(other, board);
    assert(preflop_); // prepare() comes first
    const size_t theirs = deck_.numberOf(other[0], other[1]);
    std::vector<double> row(deck_.holdings().size());
    for (size_t h = 0; h < row.size(); ++h)
        row[h] = static_cast<double>(preflop_->net(h, theirs)) / PreflopMargins::boards();
    return row;
}

// Every hand that shares no card meets equally many boards.
std::vector<double> BoardMargins::counted(std::span<const uint8_t> other,
                                          std::span<const uint8_t> board) const {
    Showdowns showdowns(deck_, other, fullDeck_);
    std::vector<uint8_t> cards(board.begin(), board.end());
    forEachWhole(deck_, other, cards, wholeBoard_, 0,
                 [&](const std::vector<uint8_t>& whole) { showdowns.add(whole); });
    const auto boards = static_cast<double>(boardsToCome(board.size()));
    std::vector<double> row(deck_.holdings().size());
    for (size_t h = 0; h < row.size(); ++h)
        if (const auto hand = deck_.cardsOf(h); !touches(hand, other) && !touches(hand, board))
            row[h] = showdowns.net()[h] / boards;
    return row;
}

} // namespace tamarin
