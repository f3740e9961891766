#include "solver/cfr.h"
#include "solver/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(CalcUtility, OfUniformPlayIsKnown) {
    const GamePtr game = kuhn2();
    CFR solver(game.get());
    solver.buildTree();
    double value[2];
    solver.calcUtility(value);
    // Showdowns cancel over all deals; what folding moves is left:
    // after a call and a raise the first player folds half of 1/4, after a raise the second 1/4.
    EXPECT_NEAR(value[0], 1.0 / 4 - 1.0 / 8, 1e-15);
    EXPECT_NEAR(value[0] + value[1], 0.0, 1e-15);
}

TEST(CalcUtility, OfTwoPlayersAddsUpToNothing) {
    for (const auto& make : {kuhn2, twoCards, leduc2}) {
        const GamePtr game = make();
        CFR solver(game.get());
        solver.buildTree();
        const QuietOutput quiet;
        solver.train(2000);
        double value[2];
        solver.calcUtility(value);
        EXPECT_NEAR(value[0] + value[1], 0.0, 1e-12);
        EXPECT_NE(value[0], 0.0);
    }
}

TEST(CalcUtility, LeavesTheNodesAlone) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    const QuietOutput quiet;
    solver.train(100);
    const CFRNode before = *solver.nodeMap(2, 0).at("2:0:1:cr");
    double value[3];
    solver.calcUtility(value);
    const CFRNode& after = *solver.nodeMap(2, 0).at("2:0:1:cr");
    for (int a = 0; a < 2; ++a) {
        EXPECT_EQ(before.regretSum[a], after.regretSum[a]);
        EXPECT_EQ(before.strategySum[a], after.strategySum[a]);
    }
}

TEST(CalcUtility, OfAFullDeckHasNoKeys) {
    const GamePtr game = holdem2();
    CFR solver(game.get());
    double value[2];
    try {
        solver.calcUtility(value);
        FAIL();
    } catch (const char* text) {
        EXPECT_STREQ(text, "Falta fazer tabela de abstracao do indice do indexador");
    }
}

TEST(CalcUtil, ValuesOneDealFromOneState) {
    const GamePtr game = kuhn2();
    CFR solver(game.get());
    solver.buildTree();
    State state{};
    initState(game.get(), 0, &state);
    state.holeCards[0][0] = 8;
    state.holeCards[1][0] = 0;
    double value[2];
    solver.calcUtil(&state, value);
    EXPECT_EQ(value[0], 1.125);
    EXPECT_EQ(value[1], -1.125);
}

} // namespace
} // namespace tamarin::test
