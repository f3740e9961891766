#include "eval/exact_equity.h"

#include "eval/hand_evaluator.h"
#include "eval/opponent_tally.h"
#include "eval/preflop_equity.h"
#include "eval/rank_masks.h"

#include <array>
#include <bit>
#include <cassert>

namespace tamarin {
namespace {

// What stays the same over all boards of a question.
struct Question {
    const HandEvaluator& evaluator = HandEvaluator::shared();
    std::array<HandKey, maxOpponents + 1> hands; // the known ones
    size_t known = 0;
    int randomOpponents = 0;
};

// Tallies the two-card hands of the unknown cards on a full board. Values of a row first, then
// their comparison, which the compiler makes in vectors.
template <bool perCard>
OpponentTally tallyHands(const HandEvaluator& evaluator, const HandKey& board, CardSet unknown,
                         uint16_t own) {
    std::array<HandKey, 52> cards;
    size_t count = 0;
    for (; unknown != 0; unknown &= unknown - 1)
        cards[count++] = keyOfCards(unknown & (~unknown + 1));
    std::array<uint16_t, 52> beaten{};
    std::array<uint16_t, 52> tied{};
    std::array<uint16_t, 52> values;
    OpponentTally tally;
    for (size_t a = 1; a < count; ++a) {
        const HandKey withA = board + cards[a];
        for (size_t b = 0; b < a; ++b)
            values[b] = static_cast<uint16_t>(evaluator.value<7>(withA + cards[b]));
        uint16_t beatenA = 0;
        uint16_t tiedA = 0;
        for (size_t b = 0; b < a; ++b) {
            const auto isBeaten = static_cast<uint16_t>(values[b] < own);
            const auto isTied = static_cast<uint16_t>(values[b] == own);
            beatenA = static_cast<uint16_t>(beatenA + isBeaten);
            tiedA = static_cast<uint16_t>(tiedA + isTied);
            if constexpr (perCard) {
                beaten[b] = static_cast<uint16_t>(beaten[b] + isBeaten);
                tied[b] = static_cast<uint16_t>(tied[b] + isTied);
            }
        }
        tally.beaten += beatenA;
        tally.tied += tiedA;
        if constexpr (perCard) {
            beaten[a] = static_cast<uint16_t>(beaten[a] + beatenA);
            tied[a] = static_cast<uint16_t>(tied[a] + tiedA);
        }
    }
    if constexpr (perCard)
        for (size_t a = 0; a < count; ++a)
            tally.addCard(beaten[a], tied[a]);
    return tally;
}

void countFullBoard(DealCounts& counts, const Question& question, const HandKey& board,
                    CardSet unknown) {
    counts.deals +=
        opponentDeals(static_cast<uint64_t>(std::popcount(unknown)), question.randomOpponents);
    const HandEvaluator& evaluator = question.evaluator;
    const uint32_t own = evaluator.value<7>(board + question.hands[0]);
    size_t alreadyTied = 0;
    for (size_t i = 1; i < question.known; ++i) {
        const uint32_t other = evaluator.value<7>(board + question.hands[i]);
        if (other > own)
            return;
        alreadyTied += other == own;
    }
    OpponentTally tally;
    if (question.randomOpponents == 1)
        tally = tallyHands<false>(evaluator, board, unknown, static_cast<uint16_t>(own));
    else if (question.randomOpponents == 2)
        tally = tallyHands<true>(evaluator, board, unknown, static_cast<uint16_t>(own));
    countBoard(counts, tally, question.randomOpponents, alreadyTied, 1);
}

// Completes the board with `left` of the candidates; unknown are all the cards not yet placed.
void completeBoard(DealCounts& counts, const Question& question, const HandKey& board,
                   CardSet unknown, CardSet candidates, int left) {
    if (left == 0) {
        countFullBoard(counts, question, board, unknown);
        return;
    }
    for (; candidates != 0; candidates &= candidates - 1) {
        const CardSet card = candidates & (~candidates + 1);
        completeBoard(counts, question, board + keyOfCards(card), unknown & ~card,
                      candidates & ~card, left - 1);
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
    Question question;
    for (const CardSet hand : hands)
        question.hands[question.known++] = keyOfCards(hand);
    question.randomOpponents = randomOpponents;
    DealCounts counts;
    completeBoard(counts, question, keyOfCards(board), unknown, unknown, 5 - boardCards);
    return counts;
}

DealCounts exactEquity(std::span<const uint8_t> hole, std::span<const uint8_t> board,
                       int opponents) {
    const CardSet hand = setOf(hole);
    return exactEquity(std::span(&hand, 1), setOf(board), opponents);
}

} // namespace tamarin
