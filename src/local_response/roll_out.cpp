#include "local_response/roll_out.h"

#include "local_response/showdown_counts.h"
#include "support/choose.h"

#include <cassert>

namespace tamarin {

namespace {

size_t boardCardsOf(const Game& game) {
    return sumBoardCards(&game, game.numRounds - 1);
}

// Calls visit(cards) for every choice of so many of the cards beside those that are chosen.
template <class Visit>
void eachChoice(std::span<const CardSet> cards, size_t count, CardSet chosen, const Visit& visit) {
    if (count == 0) {
        visit(chosen);
        return;
    }
    for (size_t i = 0; i + count <= cards.size(); ++i)
        eachChoice(cards.subspan(i + 1), count - 1, chosen | cards[i], visit);
}

} // namespace

// Of the cards that neither player holds.
uint64_t RollOut::boardsToCome(size_t cardsOut) const {
    return choose(deck_.cards().size() - 4 - cardsOut, boardCardsOf(game_) - cardsOut);
}

bool RollOut::isExact(int round) const {
    return boardsToCome(sumBoardCards(&game_, round)) <= mostBoards;
}

bool RollOut::can(int round) const {
    return isExact(round) || (preflop_ && sumBoardCards(&game_, round) == 0);
}

void RollOut::against(std::span<const uint8_t> hole, std::span<const uint8_t> board,
                      std::span<const uint16_t> holdings, std::vector<double>& shares) const {
    if (boardsToCome(board.size()) > mostBoards) {
        assert(preflop_ && board.empty());
        preflop_->against(hole, holdings, shares);
        return;
    }
    const CardSet out = setOfCards(board);
    std::vector<CardSet> left;
    for (const uint8_t card : deck_.cards())
        if (((out | setOfCards(hole)) & cardBit(card)) == 0)
            left.push_back(cardBit(card));
    const size_t cards = boardCardsOf(game_);
    const auto counts = countShowdowns(deck_, cards, hole, holdings, [&](const auto& visit) {
        eachChoice(left, cards - board.size(), out, visit);
    });
    shares.resize(holdings.size());
    for (size_t i = 0; i < holdings.size(); ++i)
        shares[i] = counts.share(i);
}

} // namespace tamarin
