#include "eval/hand_evaluator.h"

#include "eval/hand_value.h"
#include "support/split_mix.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const HandEvaluator& evaluator() {
    return HandEvaluator::shared();
}

// Different cards in any order; of the suits below `suits` alone, so that flushes are not rare.
template <size_t count>
std::array<uint8_t, count> draw(SplitMix& random, uint32_t suits) {
    std::array<uint8_t, count> cards;
    CardSet used = 0;
    for (uint8_t& card : cards) {
        do
            card = static_cast<uint8_t>(random.below(13) * 4 + random.below(suits));
        while ((used & cardBit(card)) != 0);
        used |= cardBit(card);
    }
    return cards;
}

CardSet setOf(std::span<const uint8_t> cards) {
    CardSet set = 0;
    for (const uint8_t card : cards)
        set |= cardBit(card);
    return set;
}

template <size_t count>
HandKey keyOf(const std::array<uint8_t, count>& cards) {
    HandKey key;
    for (const uint8_t card : cards)
        key = key + keyOfCard(card);
    return key;
}

} // namespace

TEST(HandKey, HoldsRanksSuitsAndCards) {
    EXPECT_EQ(keyOfCard(0).sum, 0x1'0000'0001U);                    // 2c
    EXPECT_EQ(keyOfCard(5).sum, 0x10'0000'0005U);                   // 3d
    EXPECT_EQ(keyOfCard(51).sum, 0x1000'0000'0000U + 244'140'625U); // As: 5^12
    for (uint8_t card = 0; card < 52; ++card)
        EXPECT_EQ(keyOfCard(card).cards, cardBit(card));
    const HandKey both = keyOfCard(0) + keyOfCard(51);
    EXPECT_EQ(both.sum, keyOfCard(0).sum + keyOfCard(51).sum);
    EXPECT_EQ(both.cards, cardBit(0) | cardBit(51));
    EXPECT_EQ(keyOfCards(both.cards | cardBit(5)).sum, (both + keyOfCard(5)).sum);
    EXPECT_EQ(keyOfCards(both.cards | cardBit(5)).cards, both.cards | cardBit(5));
    for (uint8_t card = 0; card < 52; ++card)
        EXPECT_EQ(keyOfCards(cardBit(card)).sum, cardKeys[card].sum);
}

TEST(HandEvaluator, RanksSevenRanksAndSuits) {
    SplitMix random(4);
    for (int i = 0; i < 20'000; ++i) {
        const auto seven = draw<7>(random, i % 2 == 0 ? 2 : 4);
        const CardSet cards = setOf(seven);
        uint32_t value = evaluator().valueOfSevenRanks(static_cast<uint32_t>(keyOf(seven).sum));
        for (int suit = 0; suit < 4; ++suit)
            value = std::max(value, evaluator().valueOfSuit(cards >> (16 * suit) & 0x1fff));
        ASSERT_EQ(value, handValueOf(cards)) << i;
    }
    EXPECT_EQ(evaluator().valueOfSuit(0x0f), 0U);
    EXPECT_EQ(evaluator().valueOfSuit(0x1f00), largestHandValue);
}

TEST(HandEvaluator, StaysInTheCache) {
    EXPECT_LE(sizeof(HandEvaluator), 256U * 1024);
}

TEST(HandEvaluator, RanksEveryHandOfFiveCards) {
    std::array<uint64_t, 16> categories{};
    size_t wrong = 0;
    for (uint8_t a = 4; a < 52; ++a)
        for (uint8_t b = 3; b < a; ++b)
            for (uint8_t c = 2; c < b; ++c)
                for (uint8_t d = 1; d < c; ++d)
                    for (uint8_t e = 0; e < d; ++e) {
                        const HandKey hand = keyOf(std::array{a, b, c, d, e});
                        const uint32_t value = evaluator().value<5>(hand);
                        wrong += value != handValueOf(hand.cards);
                        ++categories[value >> 12U];
                    }
    EXPECT_EQ(wrong, 0U);
    const std::array<uint64_t, 10> known{0,     1302540, 1098240, 123552, 54912,
                                         10200, 5108,    3744,    624,    40};
    EXPECT_TRUE(std::equal(known.begin(), known.end(), categories.begin()));
}

TEST(HandEvaluator, RanksHandsOfSixAndSevenCardsAsTheRulesDo) {
    SplitMix random(1);
    for (int i = 0; i < 300'000; ++i) {
        const uint32_t suits = i % 3 == 0 ? 2 : 4;
        const auto six = draw<6>(random, suits);
        ASSERT_EQ(evaluator().value<6>(keyOf(six)), handValueOf(setOf(six))) << i;
        const auto seven = draw<7>(random, suits);
        ASSERT_EQ(evaluator().value<7>(keyOf(seven)), handValueOf(setOf(seven))) << i;
        ASSERT_EQ(evaluator().rank7(seven.data()), handValueOf(setOf(seven))) << i;
    }
}

TEST(HandEvaluator, RanksManyAsItRanksOne) {
    SplitMix random(2);
    for (const size_t count : {0U, 1U, 4U, 7U, 10'000U}) {
        std::vector<std::array<uint8_t, 7>> hands(count);
        for (size_t i = 0; i < count; ++i)
            hands[i] = draw<7>(random, i % 2 == 0 ? 2 : 4);
        std::vector<uint16_t> values(count + 1, 77);
        evaluator().rankMany(reinterpret_cast<const uint8_t(*)[7]>(hands.data()), values.data(),
                             count);
        for (size_t i = 0; i < count; ++i)
            ASSERT_EQ(values[i], handValueOf(setOf(hands[i]))) << i;
        EXPECT_EQ(values[count], 77) << "none behind the last";
    }
}

// Boards with no flush in reach, and with three, four and five cards of a suit.
TEST(HandEvaluator, RanksAllHoldingsOfABoard) {
    SplitMix random(3);
    for (size_t i = 0; i < 150; ++i) {
        const auto cards = draw<5>(random, static_cast<uint32_t>(1 + i % 4));
        const auto board = std::span(cards).first(3 + i / 4 % 3);
        std::vector<uint8_t> left;
        for (uint8_t card = 0; card < 52; ++card)
            if ((setOf(board) & cardBit(card)) == 0)
                left.push_back(card);
        std::vector<uint16_t> values(left.size() * (left.size() - 1) / 2 + 1, 77);
        evaluator().rankHoldings(board, values.data());
        for (size_t high = 1; high < left.size(); ++high)
            for (size_t low = 0; low < high; ++low)
                ASSERT_EQ(values[high * (high - 1) / 2 + low],
                          handValueOf(setOf(board) | cardBit(left[low]) | cardBit(left[high])));
        EXPECT_EQ(values.back(), 77);
    }
}

} // namespace tamarin::test
