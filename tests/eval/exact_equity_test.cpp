#include "eval/exact_equity.h"

#include "eval/plain_equity.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

DealCounts exact(const std::vector<std::string>& hands, const std::string& board, int opponents) {
    std::vector<CardSet> sets;
    for (const std::string& hand : hands)
        sets.push_back(plain::cards(hand));
    return exactEquity(sets, plain::cards(board), opponents);
}

void expectAsEnumerated(const std::vector<std::string>& hands, const std::string& board,
                        int opponents) {
    std::vector<CardSet> sets;
    for (const std::string& hand : hands)
        sets.push_back(plain::cards(hand));
    EXPECT_EQ(exactEquity(sets, plain::cards(board), opponents),
              plain::equity(sets, plain::cards(board), opponents))
        << hands[0] << " on " << board << " against " << opponents << " random";
}

} // namespace

TEST(ExactEquity, RiverAsEnumerated) {
    for (const char* board : {"2c7d9hJsQc", "Ah2h7h9hKd", "AsKsQsJsTs", "9c9d9h2s2c", "4c5d6h7s8s"})
        for (const char* hand : {"3d3h", "8h8d", "ThTd"})
            for (int opponents = 0; opponents <= 2; ++opponents)
                expectAsEnumerated({hand}, board, opponents);
}

TEST(ExactEquity, TurnAndFlopAsEnumerated) {
    expectAsEnumerated({"AsKd"}, "Qs8h3d2s", 1);
    expectAsEnumerated({"5s6s"}, "7s8s3dKh", 2);
    expectAsEnumerated({"AsKd"}, "Qs8h3d", 1);
}

TEST(ExactEquity, KnownAndRandomOpponentsTogether) {
    expectAsEnumerated({"AsKd", "QhQd"}, "2c7d9hJs", 1);
    expectAsEnumerated({"AsKd", "AhKc"}, "2c7d9hJs", 1);
    expectAsEnumerated({"AsKd", "AhKc", "AcKh"}, "2c7d9hJsTc", 2);
    expectAsEnumerated({"8c8d", "9c9s"}, "AsKsQsJsTs", 2);
    expectAsEnumerated({"AsKd", "QhQd", "7s7c"}, "2c7d9h", 0);
}

TEST(ExactEquity, CardBytesAndSetsAgree) {
    const std::array<uint8_t, 2> hole{51, 46};
    const std::array<uint8_t, 4> board{3, 17, 29, 41};
    EXPECT_EQ(exactEquity(hole, board, 2), exact({"AsKh"}, "2s6d9dQd", 2));
}

// Boards counted in classes against boards dealt one by one.
TEST(PreflopEquity, KnownHandsAsEnumerated) {
    expectAsEnumerated({"AsAh", "KdKc"}, "", 0);
    expectAsEnumerated({"AsKs", "QhQs"}, "", 0);
    expectAsEnumerated({"7c2d", "7d2c"}, "", 0);
    expectAsEnumerated({"JsTs", "AhKd", "4c4d"}, "", 0);
    expectAsEnumerated({"AhKh", "AdQh", "AcJh"}, "", 0);
}

TEST(PreflopEquity, KnownAnswers) {
    const DealCounts one = exact({"AsAh"}, "", 1);
    EXPECT_EQ(one.deals, 2097572400U);
    EXPECT_NEAR(equityOf(one).win, 0.84932, 5e-6);
    EXPECT_NEAR(equityOf(one).tie, 0.00544, 5e-6);
    const DealCounts two = exact({"AsAh"}, "", 2);
    EXPECT_EQ(two.deals, 2118760ULL * 990 * 903);
    EXPECT_NEAR(equityOf(two).win, 0.73205, 5e-6);
}

// Suits have no order: the same hand in other suits has the same counts.
TEST(PreflopEquity, SuitsCanBeRenamed) {
    EXPECT_EQ(exact({"AsKd"}, "", 2), exact({"AcKh"}, "", 2));
    EXPECT_EQ(exact({"8s7s"}, "", 2), exact({"8d7d"}, "", 2));
    EXPECT_EQ(exact({"AsKd", "AdKs"}, "", 1), exact({"AhKc", "AcKh"}, "", 1));
}

} // namespace tamarin::test
