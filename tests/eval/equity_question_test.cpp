#include "eval/equity_question.h"

#include "eval/exact_equity.h"
#include "eval/plain_equity.h"

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

// Both ways of counting, and every number of threads.
TEST(EquityQuestion, ThreePlayersAreCountedHoweverWideTheirRanges) {
    EquityOptions options;
    options.method = EquityMethod::exact;
    const auto counts = [&](const EquityQuestion& asked, int threads) {
        options.threads = threads;
        return answerEquity(asked, options)->counts;
    };
    for (const char* board : {"Qs8h3d", "Qs8h3d2s", "Qs8h3d2s9h"}) {
        const EquityQuestion asked = question({"AsKs,JcJd", "22+,A2s+"}, board, 1);
        DealCounts sum;
        for (const CardSet own : asked.players[0].hands)
            for (const CardSet other : asked.players[1].hands)
                if (((own | asked.board) & other) == 0)
                    sum += exactEquity(std::vector<CardSet>{own, other}, asked.board, 1);
        EXPECT_EQ(counts(asked, 1), sum) << board;
        EXPECT_EQ(counts(asked, 3), sum) << board;
    }
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
