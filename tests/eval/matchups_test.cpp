#include "eval/matchups.h"

#include "eval/exact_equity.h"
#include "eval/plain_equity.h"
#include "eval/ranges_of.h"

#include <chrono>

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(Matchups, StartingHandsUpToSuits) {
    const auto found = matchups(rangesOf({"random"}), 0);
    ASSERT_TRUE(found.ok());
    EXPECT_EQ(found->size(), 169U);
    uint64_t times = 0;
    for (const Matchup& matchup : *found)
        times += matchup.times;
    EXPECT_EQ(times, 1326U);
}

TEST(Matchups, TwoHandsUpToSuits) {
    const auto found = matchups(rangesOf({"random", "random"}), 0);
    ASSERT_TRUE(found.ok());
    EXPECT_LT(found->size(), 1326U * 1225U / 12); // 24 renamings, fewer for hands alike in suits
    uint64_t times = 0;
    for (const Matchup& matchup : *found)
        times += matchup.times;
    EXPECT_EQ(times, 1326U * 1225U);
}

// Whoever can use only so many need not wait for the rest: 1.6 million combinations here.
TEST(Matchups, GiveUpAtTheFirstOneTooMany) {
    const auto ranges = rangesOf({"random", "random"});
    const size_t all = matchups(ranges, 0)->size();
    EXPECT_EQ(matchups(ranges, 0, all)->size(), all);
    const auto refused = matchups(ranges, 0, all - 1);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(),
              "the hands meet in more than " + std::to_string(all - 1) + " different ways");
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) // enough to show by its time that nothing is looked for
        EXPECT_FALSE(matchups(ranges, 0, 1000).ok());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

// Counted by matchups and hand by hand is the same, on a board that leaves two suits alike.
TEST(Matchups, CountAsTheirHandsDo) {
    const auto ranges = rangesOf({"QJs,88", "AQ,88", "KTs"});
    const CardSet board = plain::cards("Qs8s3d2d");
    const auto found = matchups(ranges, board);
    ASSERT_TRUE(found.ok());
    DealCounts byMatchup;
    for (const Matchup& matchup : *found) {
        DealCounts one = exactEquity(matchup.hands, board, 0);
        byMatchup += one *= matchup.times;
    }
    DealCounts byHand;
    for (const CardSet a : ranges[0].hands)
        for (const CardSet b : ranges[1].hands)
            for (const CardSet c : ranges[2].hands)
                if ((a & b) == 0 && ((a | b) & c) == 0 && ((a | b | c) & board) == 0)
                    byHand += plain::equity({a, b, c}, board, 0);
    EXPECT_EQ(byMatchup, byHand);
    EXPECT_GT(byHand.deals, 0U);
}

TEST(Matchups, EndWhereTheyAreStopped) {
    const auto ranges = rangesOf({"random", "random"});
    int questions = 0;
    const auto found = matchups(ranges, 0, SIZE_MAX, [&] { return ++questions == 3; });
    ASSERT_FALSE(found.ok());
    EXPECT_EQ(found.error(), "interrupted");
    EXPECT_EQ(questions, 3);
    questions = 0;
    EXPECT_TRUE(matchups(ranges, 0, SIZE_MAX, [&] { return ++questions < 0; }).ok());
    EXPECT_EQ(questions, 1326 * 1225 / 1024);
}

TEST(Matchups, HandsThatCannotBeHeldTogether) {
    EXPECT_TRUE(matchups(rangesOf({"AA", "AsAh", "AcAd"}), 0)->size() == 0);
    EXPECT_FALSE(canBeHeld(rangesOf({"AA", "AsAh", "AcAd"}), 0));
    EXPECT_FALSE(canBeHeld(rangesOf({"AsKs"}), plain::cards("As2c3d")));
    EXPECT_TRUE(canBeHeld(rangesOf({"AA", "AA"}), 0));
}

TEST(Matchups, TooManyAreRefused) {
    const auto found = matchups(rangesOf({"random", "random", "random"}), 0);
    ASSERT_FALSE(found.ok());
    EXPECT_NE(found.error().find("4000000"), std::string::npos);
}

} // namespace tamarin::test
