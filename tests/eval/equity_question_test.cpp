#include "eval/equity_question.h"

#include "eval/exact_equity.h"
#include "eval/plain_equity.h"
#include "eval/range_sweep.h"
#include "eval/sampled_equity.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

EquityQuestion question(const std::vector<std::string>& players, const std::string& board,
                        int random) {
    EquityQuestion asked;
    for (const std::string& player : players)
        asked.players.push_back(*parseHandRange(player));
    asked.board = plain::cards(board);
    asked.randomOpponents = random;
    return asked;
}

std::string refusal(const EquityQuestion& asked, EquityMethod method = EquityMethod::automatic) {
    EquityOptions options;
    options.method = method;
    const auto answer = answerEquity(asked, options);
    return answer ? "was answered" : answer.error();
}

EquityAnswer answer(const EquityQuestion& asked, EquityMethod method = EquityMethod::automatic) {
    EquityOptions options;
    options.method = method;
    options.deals = 100000;
    const auto given = answerEquity(asked, options);
    EXPECT_TRUE(given.ok()) << given.error();
    return given ? *given : EquityAnswer{};
}

// An exact answer, and in how many steps it was counted: matchups, or parts of the boards.
struct Counted {
    DealCounts counts;
    uint64_t steps = 0;
};

Counted countedExactly(const EquityQuestion& asked, int threads) {
    Counted counted;
    EquityOptions options;
    options.method = EquityMethod::exact;
    options.threads = threads;
    options.progress = [&](uint64_t, uint64_t total) { counted.steps = total; };
    const auto given = answerEquity(asked, options);
    EXPECT_TRUE(given.ok()) << given.error();
    if (given)
        counted.counts = given->counts;
    return counted;
}

RangeSweep sweepOf(const EquityQuestion& asked) {
    std::vector<HandRange> ranges = asked.players;
    for (int i = 0; i < asked.randomOpponents; ++i)
        ranges.push_back(*parseHandRange("random"));
    return RangeSweep(ranges, asked.board);
}

uint64_t partsOf(size_t boards) {
    return (boards + 127) / 128;
}

// Ranges of hands no two of which are in two of them.
EquityQuestion fourRangesOfEachSize(const std::array<size_t, 4>& sizes, const std::string& board) {
    EquityQuestion asked = question({}, board, 0);
    const std::vector<CardSet> all = plain::handsWithout(asked.board);
    size_t next = 0;
    for (const size_t size : sizes) {
        HandRange range;
        range.text = "some";
        for (size_t i = 0; i < size; ++i, next += 7)
            range.hands.push_back(all[next % all.size()]);
        std::ranges::sort(range.hands);
        asked.players.push_back(range);
    }
    return asked;
}

} // namespace

TEST(EquityQuestion, ClassesAreCountedByTheirHands) {
    const EquityAnswer given = answer(question({"AKs"}, "", 1));
    EXPECT_TRUE(given.exact);
    const std::vector<CardSet> hand{plain::cards("AsKs")};
    DealCounts four = exactEquity(hand, 0, 1);
    EXPECT_EQ(given.counts, four *= 4);
}

TEST(EquityQuestion, RangeAgainstRange) {
    const EquityQuestion asked = question({"KK", "AKs,KQs,44"}, "", 0);
    const EquityAnswer given = answer(asked);
    EXPECT_TRUE(given.exact);
    DealCounts sum;
    for (const CardSet a : asked.players[0].hands)
        for (const CardSet b : asked.players[1].hands)
            if ((a & b) == 0) {
                const std::vector<CardSet> hands{a, b};
                sum += exactEquity(hands, 0, 0);
            }
    EXPECT_EQ(given.counts, sum);
}

TEST(EquityQuestion, SamplesWhatCannotBeCounted) {
    const EquityAnswer given = answer(question({"AA"}, "", 5));
    EXPECT_FALSE(given.exact);
    EXPECT_GE(given.counts.deals, 100000U);
    EXPECT_FALSE(answer(question({"AA"}, "", 1), EquityMethod::sampled).exact);
    EXPECT_FALSE(answer(question({"random", "random", "random", "random"}, "", 0)).exact);
}

TEST(EquityQuestion, ExactRandomAgainstRandomIsEven) {
    const EquityAnswer given = answer(question({"random"}, "7c7d2h9sKs", 1));
    EXPECT_TRUE(given.exact);
    const Equity equity = equityOf(given.counts);
    EXPECT_DOUBLE_EQ(equity.win, equity.loss);
    EXPECT_DOUBLE_EQ(equity.pot, 0.5);
}

// Board by board, with one thread or several.
TEST(EquityQuestion, ThreePlayersAreCountedHoweverWideTheirRanges) {
    for (const char* board : {"Qs8h3d", "Qs8h3d2s", "Qs8h3d2s9h"}) {
        const EquityQuestion asked = question({"AsKs,JcJd", "22+,A2s+"}, board, 1);
        DealCounts sum;
        for (const CardSet own : asked.players[0].hands)
            for (const CardSet other : asked.players[1].hands)
                if (((own | asked.board) & other) == 0)
                    sum += exactEquity(std::vector<CardSet>{own, other}, asked.board, 1);
        const Counted counted = countedExactly(asked, 1);
        EXPECT_EQ(counted.counts, sum) << board;
        EXPECT_EQ(counted.steps, partsOf(sweepOf(asked).listBoards())) << board;
        EXPECT_EQ(countedExactly(asked, 3).counts, sum) << board;
    }
}

// Matchup by matchup, which is the sooner for single hands; board by board it is the same.
TEST(EquityQuestion, FewHandsAreCountedByTheirMatchups) {
    const EquityQuestion asked = question({"AsKs", "QdQc,7h6h,9c8d"}, "Qs8h3d", 0);
    const Counted counted = countedExactly(asked, 1);
    EXPECT_EQ(counted.steps, 3U);
    RangeSweep sweep = sweepOf(asked);
    const size_t boards = sweep.listBoards();
    ASSERT_NE(partsOf(boards), 3U);
    EXPECT_EQ(counted.counts, (DealCounts{sweep.count(0, boards), sweep.deals()}));
    EXPECT_EQ(countedExactly(asked, 3).counts, counted.counts);
}

TEST(EquityQuestion, FourPlayersAreCountedByTheirMatchups) {
    const EquityQuestion asked = question({"AsKs,9h9d", "QQ", "TT,7c6c"}, "Qs8h3d2s", 1);
    DealCounts sum;
    for (const CardSet a : asked.players[0].hands)
        for (const CardSet b : asked.players[1].hands)
            for (const CardSet c : asked.players[2].hands)
                if ((b & asked.board) == 0)
                    sum += exactEquity(std::vector<CardSet>{a, b, c}, asked.board, 1);
    EXPECT_EQ(countedExactly(asked, 1).counts, sum);
    EXPECT_EQ(countedExactly(asked, 3).counts, sum);
}

// Finding all of these 2.4 million combinations takes nearly as long as an answer may; what is left
// is enough for counting a few of them, and so the others are not looked for.
TEST(EquityQuestion, LooksForNoMoreMatchupsThanItCouldCount) {
    const EquityQuestion asked = fourRangesOfEachSize({39, 40, 40, 39}, "Qs8h3d2s");
    std::atomic<int> questions{0};
    EquityOptions options;
    options.deals = sampleBlock;
    options.stop = [&] {
        ++questions;
        return false;
    };
    const auto given = answerEquity(asked, options);
    ASSERT_TRUE(given.ok()) << given.error();
    EXPECT_FALSE(given->exact);
    EXPECT_FALSE(std::isfinite(given->exactSeconds));
    EXPECT_GT(questions, 50); // one every 1,024 combinations
    EXPECT_LT(questions, 400);
}

TEST(EquityQuestion, EndsWhereItIsInterrupted) {
    const auto interruptedAt = [](int most, const EquityQuestion& asked, EquityMethod method) {
        std::atomic<int> questions{0};
        EquityOptions options;
        options.method = method;
        options.threads = 1;
        options.stop = [&] { return ++questions > most; };
        const auto given = answerEquity(asked, options);
        return given ? "was answered" : given.error();
    };
    const EquityQuestion four = fourRangesOfEachSize({39, 40, 40, 39}, "Qs8h3d2s");
    for (const EquityMethod method : {EquityMethod::automatic, EquityMethod::exact})
        for (const int most : {0, 1, 20}) // while matchups are looked for
            EXPECT_EQ(interruptedAt(most, four, method), "interrupted") << most;
    const EquityQuestion two = question({"TT+,AK", "22+,A2s+"}, "Qs8h3d", 0);
    EXPECT_EQ(interruptedAt(3, two, EquityMethod::exact), "interrupted");
    EXPECT_EQ(interruptedAt(3, two, EquityMethod::sampled), "interrupted");
    EXPECT_EQ(interruptedAt(1 << 20, two, EquityMethod::exact), "was answered");
}

TEST(EquityQuestion, SaysWhatExactWouldTake) {
    const EquityAnswer wide = answer(
        question({"QhJh,T9s,A8o+,KTs,9c8c,87s,65s", "22+,AsKd,A9o+,KTs", "33+,AhKd,QTs+"}, "", 0));
    EXPECT_FALSE(wide.exact);
    EXPECT_GT(wide.exactSeconds, 10);
    EXPECT_LT(wide.exactSeconds, 1000);
    EXPECT_FALSE(std::isfinite(answer(question({"AA"}, "", 5)).exactSeconds));
    const EquityAnswer river = answer(question({"random"}, "7c7d2h9sKs", 2));
    EXPECT_TRUE(river.exact);
    EXPECT_LT(river.exactSeconds, 0.01);
}

TEST(EquityQuestion, Refusals) {
    EXPECT_NE(refusal(question({"AA"}, "", 0)).find("2 to 10 players, not 1"), std::string::npos);
    EXPECT_NE(refusal(question({"AA"}, "", 10)).find("not 11"), std::string::npos);
    EXPECT_NE(refusal(question({"AA"}, "2c3c", 1)).find("2 cards"), std::string::npos);
    EXPECT_NE(refusal(question({"AsAc"}, "As3c4c", 1)).find("nobody can hold AsAc"),
              std::string::npos);
    EXPECT_NE(refusal(question({"AsAc", "AsKs"}, "", 0)).find("cannot be held together"),
              std::string::npos);
    EXPECT_NE(refusal(question({"AA"}, "", 3), EquityMethod::exact).find("two random"),
              std::string::npos);
    EXPECT_NE(
        refusal(question({"random", "random", "random", "random"}, "", 0), EquityMethod::exact)
            .find("combinations"),
        std::string::npos);
}

// One that left the parallel region there would end the process, with a single thread too.
TEST(EquityQuestion, AnExceptionOfACallbackReachesTheCaller) {
    EquityOptions options;
    options.method = EquityMethod::exact;
    options.threads = 1;
    options.progress = [](uint64_t, uint64_t) { throw std::runtime_error("enough"); };
    EXPECT_THROW((void)answerEquity(question({"AKs", "QQ"}, "2c7d9h", 0), options),
                 std::runtime_error);
}

} // namespace tamarin::test
