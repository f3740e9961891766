#include "eval/exact_equity.h"

#include "eval/opponent_tally.h"
#include "eval/preflop_equity.h"

#include <array>
#include <bit>
#include <cassert>

namespace tamarin {
namespace {

constexpr CardSet allCards = 0x1fff1fff1fff1fff;

// Tallies the two-card hands of the unknown cards on a full board.
template <bool perCard>
OpponentTally tallyHands(CardSet board, CardSet unknown, int own) {
    std::array<CardSet, 52> cards;
    size_t count = 0;
    for (; unknown != 0; unknown &= unknown - 1)
        cards[count++] = unknown & (~unknown + 1);
    std::array<uint32_t, 52> beaten{};
    std::array<uint32_t, 52> tied{};
    OpponentTally tally;
    for (size_t a = 0; a < count; ++a) {
        const CardSet withA = board | cards[a];
        uint32_t beatenA = 0;
        uint32_t tiedA = 0;
        for (size_t b = 0; b < a; ++b) {
            const int rank = rankCardSet(withA | cards[b]);
            const uint32_t isBeaten = rank < own;
            const uint32_t isTied = rank == own;
            beatenA += isBeaten;
            tiedA += isTied;
            if constexpr (perCard) {
                beaten[b] += isBeaten;
                tied[b] += isTied;
            }
        }
        tally.beaten += beatenA;
        tally.tied += tiedA;
        if constexpr (perCard) {
            beaten[a] += beatenA;
            tied[a] += tiedA;
        }
    }
    if constexpr (perCard)
        for (size_t a = 0; a < count; ++a)
            tally.addCard(beaten[a], tied[a]);
    return tally;
}

void countFullBoard(DealCounts& counts, std::span<const CardSet> hands, CardSet board,
                    CardSet unknown, int randomOpponents) {
    counts.deals += opponentDeals(static_cast<uint64_t>(std::popcount(unknown)), randomOpponents);
    const int own = rankCardSet(board | hands[0]);
    size_t alreadyTied = 0;
    for (size_t i = 1; i < hands.size(); ++i) {
        const int other = rankCardSet(board | hands[i]);
        if (other > own)
            return;
        alreadyTied += other == own;
    }
    OpponentTally tally;
    if (randomOpponents == 1)
        tally = tallyHands<false>(board, unknown, own);
    else if (randomOpponents == 2)
        tally = tallyHands<true>(board, unknown, own);
    countBoard(counts, tally, randomOpponents, alreadyTied, 1);
}

// Completes the board with `left` of the candidates; unknown are all the cards not yet placed.
void completeBoard(DealCounts& counts, std::span<const CardSet> hands, CardSet board,
                   CardSet unknown, CardSet candidates, int left, int randomOpponents) {
    if (left == 0) {
        countFullBoard(counts, hands, board, unknown, randomOpponents);
        return;
    }
    for (; candidates != 0; candidates &= candidates - 1) {
        const CardSet card = candidates & (~candidates + 1);
        completeBoard(counts, hands, board | card, unknown & ~card, candidates & ~card, left - 1,
                      randomOpponents);
    }
}

CardSet setOf(std::span<const uint8_t> cards) {
    CardSet set = 0;
    for (const uint8_t card : cards)
        set |= cardBit(card);
    assert(static_cast<size_t>(std::popcount(set)) == cards.size());
    return set;
}

} // namespace

DealCounts exactEquity(std::span<const CardSet> hands, CardSet board, int randomOpponents) {
    assert(!hands.empty() && randomOpponents >= 0 && randomOpponents <= 2);
    assert(hands.size() + static_cast<size_t>(randomOpponents) <= maxOpponents + 1);
    const int boardCards = std::popcount(board);
    assert(boardCards == 0 || (boardCards >= 3 && boardCards <= 5));
    CardSet unknown = allCards & ~board;
    for (const CardSet hand : hands) {
        assert(std::popcount(hand) == 2 && (unknown & hand) == hand);
        unknown &= ~hand;
    }
    if (boardCards == 0)
        return exactPreflopEquity(hands, randomOpponents);
    DealCounts counts;
    completeBoard(counts, hands, board, unknown, unknown, 5 - boardCards, randomOpponents);
    return counts;
}

DealCounts exactEquity(std::span<const uint8_t> hole, std::span<const uint8_t> board,
                       int opponents) {
    const CardSet hand = setOf(hole);
    return exactEquity(std::span(&hand, 1), setOf(board), opponents);
}

} // namespace tamarin
