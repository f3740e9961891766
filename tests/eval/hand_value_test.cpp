#include "eval/hand_value.h"

#include "eval/rank_masks.h"
#include "game/text.h"

#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

CardSet cardsOf(const std::string& text) {
    uint8_t cards[7];
    int consumed = 0;
    const int count = readCards(text.c_str(), 7, cards, &consumed);
    EXPECT_EQ(consumed, static_cast<int>(text.size())) << text;
    CardSet set = 0;
    for (int i = 0; i < count; ++i)
        set |= cardBit(cards[i]);
    return set;
}

uint32_t valueOf(const std::string& text) {
    return handValueOf(cardsOf(text));
}

} // namespace

TEST(HandValue, ExtremesOfEachCategory) {
    EXPECT_EQ(valueOf("7h5d4c3s2c"), 1U << 12 | 1);
    EXPECT_EQ(valueOf("AhKdQcJs9c"), 1U << 12 | 1277);
    EXPECT_EQ(valueOf("2h2d3c4s5c"), 2U << 12 | 1);
    EXPECT_EQ(valueOf("AhAdKcQsJc"), 2U << 12 | 2860);
    EXPECT_EQ(valueOf("3h3d2c2s4c"), 3U << 12 | 1);
    EXPECT_EQ(valueOf("AhAdKcKsQc"), 3U << 12 | 858);
    EXPECT_EQ(valueOf("2h2d2c3s4c"), 4U << 12 | 1);
    EXPECT_EQ(valueOf("AhAdAcKsQc"), 4U << 12 | 858);
    EXPECT_EQ(valueOf("Ah2d3c4s5c"), 5U << 12 | 1);
    EXPECT_EQ(valueOf("AhKdQcJsTc"), 5U << 12 | 10);
    EXPECT_EQ(valueOf("7h5h4h3h2h"), 6U << 12 | 1);
    EXPECT_EQ(valueOf("AhKhQhJh9h"), 6U << 12 | 1277);
    EXPECT_EQ(valueOf("2h2d2c3s3c"), 7U << 12 | 1);
    EXPECT_EQ(valueOf("AhAdAcKsKc"), 7U << 12 | 156);
    EXPECT_EQ(valueOf("2h2d2c2s3c"), 8U << 12 | 1);
    EXPECT_EQ(valueOf("AhAdAcAsKc"), 8U << 12 | 156);
    EXPECT_EQ(valueOf("Ah2h3h4h5h"), 9U << 12 | 1);
    EXPECT_EQ(valueOf("AhKhQhJhTh"), 36874U);
}

TEST(HandValue, DenseRanksCountTheValuesInOrder) {
    uint32_t next = 0;
    for (uint32_t value = 0; value < handValueCount; ++value) {
        const uint32_t category = value >> 12;
        const uint32_t within = value & 0xfff;
        const bool taken = category >= 1 && within >= 1 && within <= categorySizes[category - 1];
        EXPECT_EQ(denseRankOfValue(value), taken ? ++next : 0) << value;
    }
    EXPECT_EQ(next, 7462U);
    EXPECT_EQ(denseRankOfValue(handValueCount), 0U);
    EXPECT_EQ(denseRankOfValue(UINT32_MAX), 0U);
}

TEST(HandValue, RanksOfNoHandHaveNoValue) {
    EXPECT_EQ(handValueOfRank(0), 0U);    // a single deuce
    EXPECT_EQ(handValueOfRank(1287), 0U); // a pair of twos without kickers
    EXPECT_EQ(handValueOfRank(12115), largestHandValue);
}

TEST(HandValue, SaysItInWords) {
    EXPECT_EQ(describeHand(cardsOf("AhKdQcJs9c3d2h")), "High card, ace-king-queen-jack-nine");
    EXPECT_EQ(describeHand(cardsOf("6h6dQcJs9c")), "One pair, sixes, kickers queen-jack-nine");
    EXPECT_EQ(describeHand(cardsOf("KhKd9c9s4c4dAh")), "Two pair, kings and nines, kicker ace");
    EXPECT_EQ(describeHand(cardsOf("QhQd9c9s4c4d2h")), "Two pair, queens and nines, kicker four");
    EXPECT_EQ(describeHand(cardsOf("2h2d2cKsQc")), "Three of a kind, twos, kickers king-queen");
    EXPECT_EQ(describeHand(cardsOf("Ah2d3c4s5c")), "Straight, five high");
    EXPECT_EQ(describeHand(cardsOf("AhKdQcJsTc")), "Straight, ace high");
    EXPECT_EQ(describeHand(cardsOf("AhKh9h5h2hAdAc")), "Flush, ace-king-nine-five-two");
    EXPECT_EQ(describeHand(cardsOf("KhKdKc3s3c2d2h")), "Full house, kings over threes");
    EXPECT_EQ(describeHand(cardsOf("KhKdKc3s3c3d2h")), "Full house, kings over threes");
    EXPECT_EQ(describeHand(cardsOf("6h6d6c6sAc2d2h")), "Four of a kind, sixes, kicker ace");
    EXPECT_EQ(describeHand(cardsOf("9h8h7h6h5hAh2d")), "Straight flush, nine high");
    EXPECT_EQ(describeHand(cardsOf("AsKsQsJsTs2d3c")), "Straight flush, ace high (royal flush)");
}

// The mask evaluator and the rules engine agree on every five-card hand.
TEST(RankMasks, AgreesWithTheShowdownRanking) {
    const ShowdownTables& tables = showdownTables();
    uint8_t c[5];
    size_t hands = 0;
    for (c[0] = 0; c[0] < 52; ++c[0])
        for (c[1] = 0; c[1] < c[0]; ++c[1])
            for (c[2] = 0; c[2] < c[1]; ++c[2])
                for (c[3] = 0; c[3] < c[2]; ++c[3])
                    for (c[4] = 0; c[4] < c[3]; ++c[4]) {
                        CardSet set = 0;
                        RankMasks oneByOne;
                        for (const uint8_t card : c) {
                            set |= cardBit(card);
                            oneByOne = withRank(oneByOne, card >> 2U);
                        }
                        int flush = 0;
                        for (int suit = 0; suit < 4; ++suit)
                            flush = std::max<int>(flush,
                                                  tables.oneSuitVal[set >> (16 * suit) & 0x1fff]);
                        const RankMasks atOnce = rankMasksOf(set);
                        ASSERT_EQ(std::max(rankWithoutFlush(tables, atOnce), flush),
                                  rankCardSet(set));
                        ASSERT_EQ(rankWithoutFlush(tables, atOnce),
                                  rankWithoutFlush(tables, oneByOne));
                        ++hands;
                    }
    EXPECT_EQ(hands, 2598960U);
}

} // namespace tamarin::test
