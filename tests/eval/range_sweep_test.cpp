#include "eval/range_sweep.h"

#include "eval/exact_equity.h"
#include "eval/plain_equity.h"
#include "eval/ranges_of.h"
#include "support/split_mix.h"

#include <algorithm>
#include <bit>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

DealCounts swept(const std::vector<HandRange>& ranges, CardSet board) {
    RangeSweep sweep(ranges, board);
    const size_t boards = sweep.listBoards();
    DealCounts counts{sweep.count(0, boards / 3), sweep.deals()}; // in parts, which add up
    return counts += {sweep.count(boards / 3, boards), 0};
}

// Every combination of hands by itself, known hand against known hand.
DealCounts handByHand(const std::vector<HandRange>& ranges, CardSet board,
                      std::vector<CardSet> hands = {}, CardSet used = 0) {
    if (hands.size() == ranges.size())
        return board == 0 ? exactEquity(hands, board, 0) : plain::equity(hands, board, 0);
    DealCounts counts;
    for (const CardSet hand : ranges[hands.size()].hands)
        if ((hand & (used | board)) == 0) {
            hands.push_back(hand);
            counts += handByHand(ranges, board, hands, used | hand);
            hands.pop_back();
        }
    return counts;
}

void expectAsHandByHand(const std::vector<std::string>& texts, const std::string& board) {
    const auto ranges = rangesOf(texts);
    const DealCounts counts = swept(ranges, plain::cards(board));
    EXPECT_GT(counts.deals, 0U);
    EXPECT_EQ(counts, handByHand(ranges, plain::cards(board)))
        << texts[0] << " against " << texts[1] << " on " << board;
}

// Any hands at all, some of them in several ranges.
std::vector<HandRange> randomRanges(SplitMix& random, size_t players, size_t hands) {
    const std::vector<CardSet> all = plain::handsWithout(0);
    std::vector<HandRange> ranges(players);
    for (HandRange& range : ranges) {
        range.text = "some";
        while (range.hands.size() < hands) {
            const CardSet hand = all[random.below(static_cast<uint32_t>(all.size())) / 4];
            if (std::ranges::find(range.hands, hand) == range.hands.end())
                range.hands.push_back(hand);
        }
        std::ranges::sort(range.hands);
    }
    return ranges;
}

} // namespace

TEST(RangeSweep, RiverTurnAndFlopAsHandByHand) {
    for (const char* board : {"2c7d9hJsQc", "Ah2h7h9hKd", "AsKsQsJsTs", "9c9d9h2s2c"}) {
        expectAsHandByHand({"22+,AK", "random"}, board);
        expectAsHandByHand({"TT+,A2s", "98s,77-99", "77+,98s"}, board);
    }
    expectAsHandByHand({"TT+,AKs", "QQ,AKo"}, "Qs8h3d2s");
    expectAsHandByHand({"JJ,AKs", "QQ,AKs", "87s,AKs"}, "Qs8h3d2s");
    expectAsHandByHand({"AsKd", "QQ,87s,AJs"}, "Qs8h3d");
    expectAsHandByHand({"87s,AA", "QQ", "Ks9s,AsAc"}, "7s8s3s");
}

TEST(RangeSweep, BeforeTheFlopAsHandByHand) {
    expectAsHandByHand({"KcKd,As2s", "QhQs,AsKd"}, "");
    expectAsHandByHand({"AsKd,7c7d", "Ac9c", "9s9d"}, "");
}

TEST(RangeSweep, RandomRangesAsHandByHand) {
    SplitMix random(41);
    for (int i = 0; i < 6; ++i) {
        CardSet board = 0;
        while (std::popcount(board) < (i % 2 == 0 ? 5 : 4))
            board |= cardBit(static_cast<uint8_t>(random.below(52)));
        for (size_t players = 2; players <= 3; ++players) {
            const auto ranges = randomRanges(random, players, i % 2 == 0 ? 40 : 12);
            EXPECT_EQ(swept(ranges, board), handByHand(ranges, board)) << i;
        }
    }
}

// A random opponent is the range of all hands.
TEST(RangeSweep, RandomOpponentsAsCounted) {
    for (const char* board : {"2c7d9h", "2c7d9hJs", "2c7d9hJs7c"}) {
        const std::vector<CardSet> hand{plain::cards("AsKd")};
        EXPECT_EQ(swept(rangesOf({"AsKd", "random"}), plain::cards(board)),
                  exactEquity(hand, plain::cards(board), 1));
        EXPECT_EQ(swept(rangesOf({"AsKd", "random", "random"}), plain::cards(board)),
                  exactEquity(hand, plain::cards(board), 2));
    }
}

TEST(RangeSweep, BoardsAreListedBeforeTheyAreCounted) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // other tests have left their threads
    RangeSweep sweep(rangesOf({"AA", "KK"}), plain::cards("2s3s4s5h"));
    EXPECT_DEATH((void)sweep.count(0, 1), "boards_.size");
    const size_t boards = sweep.listBoards();
    EXPECT_NE(sweep.count(0, boards)[0], 0U);
    EXPECT_EQ(sweep.count(boards, boards), RangeSweep::Best{});
    EXPECT_DEATH((void)sweep.count(0, boards + 1), "boards_.size");
    EXPECT_DEATH((void)sweep.count(2, 1), "first <= last");
    EXPECT_DEATH((void)RangeSweep(rangesOf({"AA"}), 0), "ranges.size");
}

// Suits that no range and no board tells apart are exchanged: a board of two spades leaves three.
TEST(RangeSweep, CountsBoardsAlikeOnce) {
    const auto boards = [](const std::vector<std::string>& texts, const std::string& board) {
        return RangeSweep(rangesOf(texts), plain::cards(board)).listBoards();
    };
    EXPECT_EQ(boards({"AA", "KK"}, ""), 134'459U);
    EXPECT_EQ(boards({"AsKd", "KK"}, "2s3s4s5h"), 46U); // clubs and diamonds differ
    EXPECT_EQ(boards({"AA", "KK"}, "2s3s4s5h"), 35U);   // 48 less one of 13 pairs alike
    EXPECT_EQ(boards({"AsKs", "KK"}, "2s3s4s5h"), 33U); // and two cards less
}

} // namespace tamarin::test
