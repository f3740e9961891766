#include "strategy/cfr_node.h"

#include "support/rng.h"

#include <bit>
#include <cstdint>
#include <sstream>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

constexpr double invalid = std::numeric_limits<double>::quiet_NaN();

CFRNode nodeWith(double fold, double call, double raise) {
    bool all[3] = {true, true, true};
    CFRNode node(all);
    node.regretSum[0] = fold;
    node.regretSum[1] = call;
    node.regretSum[2] = raise;
    return node;
}

std::string textOf(CFRNode& node) {
    std::ostringstream text;
    text << node;
    return text.str();
}

TEST(CFRNode, NamesItsActions) {
    EXPECT_STREQ(abstractedActionNames[0], "fold");
    EXPECT_STREQ(abstractedActionNames[1], "call");
    EXPECT_STREQ(abstractedActionNames[2], "raise");
}

TEST(CFRNode, StartsAtZeroWithNanForInvalidActions) {
    bool valid[3] = {false, true, true};
    CFRNode node(valid);
    EXPECT_EQ(std::bit_cast<uint64_t>(node.regretSum[0]), 0x7FF8000000000000U);
    EXPECT_EQ(node.regretSum[1], 0.0);
    EXPECT_EQ(node.regretSum[2], 0.0);
    for (const double sum : node.strategySum)
        EXPECT_EQ(sum, 0.0);
    EXPECT_FALSE(node.isActionValid(0));
    EXPECT_TRUE(node.isActionValid(1));
    EXPECT_EQ(node.getNumValidActions(), 2);
}

TEST(CFRNode, FreshNodePlaysUniformlyAndGathersItsShareOfTheWeight) {
    bool valid[3] = {false, true, true};
    CFRNode node(valid);
    double strategy[3];
    node.getStrategy(0.5, strategy);
    EXPECT_EQ(strategy[0], 0.0);
    EXPECT_EQ(strategy[1], 0.5);
    EXPECT_EQ(strategy[2], 0.5);
    EXPECT_EQ(node.strategySum[0], 0.0);
    EXPECT_EQ(node.strategySum[1], 0.25);
    EXPECT_EQ(node.strategySum[2], 0.25);
}

TEST(CFRNode, MatchesPositiveRegrets) {
    CFRNode node = nodeWith(-1, 2, 6);
    double strategy[3];
    node.getStrategy(1.0, strategy);
    EXPECT_EQ(strategy[0], 0.0);
    EXPECT_EQ(strategy[1], 0.25);
    EXPECT_EQ(strategy[2], 0.75);
    node.getStrategy(0.5, strategy);
    EXPECT_EQ(node.strategySum[1], 0.375);
    EXPECT_EQ(node.strategySum[2], 1.125);
    EXPECT_EQ(node.regretSum[0], -1); // negative regrets stay
}

TEST(CFRNode, PlaysUniformlyWithoutPositiveRegrets) {
    CFRNode node = nodeWith(-1, 0, -6);
    double strategy[3];
    node.getStrategy(1.0, strategy);
    for (const double share : strategy)
        EXPECT_EQ(share, 1.0 / 3);
}

TEST(CFRNode, NeverPlaysAnInvalidAction) {
    CFRNode node = nodeWith(9, 1, 1);
    node.setActionInvalid(0);
    double strategy[3];
    node.getStrategy(1.0, strategy);
    EXPECT_EQ(strategy[0], 0.0);
    EXPECT_EQ(strategy[1], 0.5);
    EXPECT_EQ(node.strategySum[0], 0.0);
    EXPECT_EQ(textOf(node), "( call: 0.5 raise: 0.5 )");
}

TEST(CFRNode, AverageIsUniformBeforeAnyWeight) {
    bool valid[3] = {true, true, false};
    CFRNode node(valid);
    double avg[3];
    node.getAverageStrategy(avg);
    EXPECT_EQ(avg[0], 0.5);
    EXPECT_EQ(avg[1], 0.5);
    EXPECT_EQ(avg[2], 0.0);
}

TEST(CFRNode, AnActionInvalidatedLateKeepsAShareOfTheAverage) {
    CFRNode node = nodeWith(0, 0, 0);
    node.strategySum[0] = 1;
    node.strategySum[1] = 1;
    node.strategySum[2] = 3;
    node.setActionInvalid(0);
    EXPECT_EQ(node.strategySum[0], 1);
    double avg[3];
    node.getAverageStrategy(avg);
    EXPECT_EQ(avg[0], 0.25);
    EXPECT_EQ(avg[1], 0.25);
    EXPECT_EQ(avg[2], 0.75);
    EXPECT_EQ(textOf(node), "( call: 0.25 raise: 0.75 )");
}

TEST(CFRNode, WithoutValidActionsNothingIsPlayedAndTheDrawIsCall) {
    bool none[3] = {false, false, false};
    CFRNode node(none);
    double strategy[3] = {7, 7, 7};
    node.getStrategy(1.0, strategy);
    double avg[3];
    node.getAverageStrategy(avg);
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(strategy[a], 0.0);
        EXPECT_EQ(avg[a], 0.0);
        EXPECT_EQ(node.strategySum[a], 0.0);
    }
    EXPECT_EQ(node.getNumValidActions(), 0);
    EXPECT_EQ(node.getRandomActionIndex(), 1);
    EXPECT_EQ(textOf(node), "( )");
}

TEST(CFRNode, DrawsTheOnlyActionWithWeight) {
    CFRNode node = nodeWith(0, 0, 0);
    node.strategySum[2] = 5;
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(node.getRandomActionIndex(), 2);
}

TEST(CFRNode, DrawBeyondEveryCumulativeSumIsCall) {
    // The shares of a sum that overflows are all 0.
    CFRNode node = nodeWith(0, 0, 0);
    for (double& sum : node.strategySum)
        sum = std::numeric_limits<double>::max();
    double avg[3];
    node.getAverageStrategy(avg);
    ASSERT_EQ(avg[0] + avg[1] + avg[2], 0.0);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(node.getRandomActionIndex(), 1);
}

TEST(CFRNode, DrawsInProportionToTheAverage) {
    CFRNode node = nodeWith(0, 0, 0);
    node.strategySum[0] = 1;
    node.strategySum[1] = 2;
    node.strategySum[2] = 5;
    global_urng().seed(7);
    int count[3] = {};
    constexpr int draws = 80000;
    for (int i = 0; i < draws; ++i)
        ++count[node.getRandomActionIndex()];
    EXPECT_NEAR(count[0], draws / 8, 500); // five standard deviations
    EXPECT_NEAR(count[1], draws / 4, 620);
    EXPECT_NEAR(count[2], draws * 5 / 8, 690);
}

TEST(CFRNode, ConsumesOneDrawOfTheSharedEngine) {
    CFRNode node = nodeWith(0, 0, 0);
    node.strategySum[1] = 1;
    global_urng().seed(3);
    node.getRandomActionIndex();
    const std::minstd_rand0 left = global_urng();
    global_urng().seed(3);
    pick_a_number(0.0, 1.0);
    EXPECT_EQ(left, global_urng());
}

TEST(CFRNode, PrintsValidActionsInOrder) {
    CFRNode node = nodeWith(invalid, 0, 0);
    node.strategySum[1] = 1;
    node.strategySum[2] = 3;
    EXPECT_EQ(textOf(node), "( call: 0.25 raise: 0.75 )");
    CFRNode third = nodeWith(0, 0, 0);
    EXPECT_EQ(textOf(third), "( fold: 0.333333 call: 0.333333 raise: 0.333333 )");
}

} // namespace

} // namespace tamarin::test
