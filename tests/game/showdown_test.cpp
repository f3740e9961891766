#include "game/showdown.h"

#include "game/games.h"
#include "game/plain_ranking.h"

#include <array>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {
namespace {

CardSet cardSet(const char* text) {
    uint8_t cards[MAX_RANKS * MAX_SUITS];
    int consumed = 0;
    const int count = readCards(text, MAX_RANKS * MAX_SUITS, cards, &consumed);
    EXPECT_EQ(text[consumed], '\0');
    CardSet set = 0;
    for (int i = 0; i < count; ++i)
        set |= cardBit(cards[i]);
    return set;
}

int rank(const char* text) {
    return rankCardSet(cardSet(text));
}

TEST(RankCardSet, FewCardsRankByHighCardAndPairs) {
    EXPECT_EQ(rank("2c"), 0);
    EXPECT_EQ(rank("Ah"), 12);
    EXPECT_EQ(rank("3c2d"), 0);
    EXPECT_EQ(rank("AcKd"), 77);
    EXPECT_EQ(rank("2c2d"), 1287);
    EXPECT_EQ(rank("AcAd"), 1287 + 286 * 12);
}

TEST(RankCardSet, TheWheelIsTheLowestStraight) {
    EXPECT_EQ(rank("Ac2d3h4s5c"), 9623);
    EXPECT_EQ(rank("2c3d4h5s6c"), 9624);
    EXPECT_EQ(rank("TcJdQhKsAc"), 9632);
    EXPECT_EQ(rank("Ac2c3c4c5c"), 12106);
    EXPECT_EQ(rank("TsJsQsKsAs"), 12115);
}

TEST(RankCardSet, TwoTripsMakeAFullHouse) {
    EXPECT_EQ(rank("9c9d9h5c5d5hAs"), rank("9c9d9h5c5d"));
    EXPECT_GT(rank("9c9d9h5c5d5hAs"), rank("9c9d9h4c4d"));
}

TEST(RankCardSet, OfThreePairsTheThirdMayBeTheKicker) {
    EXPECT_EQ(rank("9c9d5c5d4c4d2s"), rank("9c9d5c5d4c"));
    EXPECT_EQ(rank("9c9d5c5d4c4d8s"), rank("9c9d5c5d8s"));
}

TEST(RankCardSet, AFlushBeatsAStraight) {
    EXPECT_EQ(rank("2c3c4c5d6c9cKd"), rank("2c3c4c6c9c"));
    EXPECT_GE(rank("2c3c4c5d6c9cKd"), flushRank);
}

TEST(RankCardSet, ClassesFollowOneAnother) {
    const char* const hands[] = {
        "2c3d4h5s7c", "AcKdQhJs9c", "2c2d3h4s5c", "AcAdKhQsJc", "2c2d3h3s4c", "AcAdKhKsQc",
        "2c2d2h3s4c", "AcAdAhKsQc", "Ac2d3h4s5c", "TcJdQhKsAc", "2c3c4c5c7c", "AcKcQcJc9c",
        "2c2d2h3s3c", "AcAdAhKsKc", "2c2d2h2s3c", "AcAdAhAsKc", "Ac2c3c4c5c", "TcJcQcKcAc",
    };
    for (size_t i = 1; i < std::size(hands); ++i)
        EXPECT_GT(rank(hands[i]), rank(hands[i - 1])) << hands[i];
}

TEST(ShowdownTables, AboutFiftyEightKilobytes) {
    EXPECT_LT(sizeof(ShowdownTables), 66000U);
    EXPECT_EQ(showdownTables().topBit[0], 0);
    EXPECT_EQ(showdownTables().anySuitVal[0x1FFF], 9632);
    EXPECT_EQ(showdownTables().oneSuitVal[0xF], 0);
}

// Every hand of five cards: the classes have the sizes that combinatorics gives.
TEST(RankCardSet, AllFiveCardHands) {
    std::set<int> values;
    std::array<int, 9> count{};
    int hands = 0;
    for (CardSet a = 0; a < 52; ++a) {
        for (CardSet b = a + 1; b < 52; ++b) {
            for (CardSet c = b + 1; c < 52; ++c) {
                for (CardSet d = c + 1; d < 52; ++d) {
                    const CardSet four =
                        cardBit(static_cast<uint8_t>(a)) | cardBit(static_cast<uint8_t>(b)) |
                        cardBit(static_cast<uint8_t>(c)) | cardBit(static_cast<uint8_t>(d));
                    for (CardSet e = d + 1; e < 52; ++e) {
                        const int value = rankCardSet(four | cardBit(static_cast<uint8_t>(e)));
                        values.insert(value);
                        ++count[static_cast<size_t>(handClass(value))];
                        ++hands;
                    }
                }
            }
        }
    }
    EXPECT_EQ(hands, 2598960);
    EXPECT_EQ(values.size(), 7462U);
    const std::array<int, 9> expected = {1302540, 1098240, 123552, 54912, 10200,
                                         5108,    3744,    624,    40};
    EXPECT_EQ(count, expected);
}

// The best of the 21 five-card hands, each ranked from the definitions of the classes, decides.
RC_GTEST_PROP(RankCardSet, OrdersSevenCardsAsTheirBestFive, ()) {
    std::array<uint8_t, 52> deck;
    for (uint8_t i = 0; i < 52; ++i)
        deck[i] = i;
    std::array<PlainRank, 2> plain;
    std::array<int, 2> fast{};
    for (size_t hand = 0; hand < 2; ++hand) {
        for (size_t i = 0; i < 7; ++i)
            std::swap(deck[i], deck[*rc::gen::inRange(i, size_t{52})]);
        const std::vector<uint8_t> cards(deck.begin(), deck.begin() + 7);
        plain[hand] = plainRank(cards);
        CardSet set = 0;
        for (const uint8_t card : cards)
            set |= cardBit(card);
        fast[hand] = rankCardSet(set);
    }
    RC_ASSERT((plain[0] < plain[1]) == (fast[0] < fast[1]));
    RC_ASSERT((plain[0] == plain[1]) == (fast[0] == fast[1]));
    RC_ASSERT(plain[0].front() == handClass(fast[0]));
}

} // namespace
} // namespace tamarin::test
