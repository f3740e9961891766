#include "solver/cfr.h"
#include "solver/games.h"
#include "tree/deck.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class TreeSolver : public CFR {
public:
    using CFR::CFR;
    // As training leaves it: a class of its own takes the plain road.
    void buildPlain() {
        State state{};
        initState(game, 0, &state);
        for (DealWalk walk(*game); walk.next();) {
            placeCards(*game, walk.cards(), &state);
            createAbstractedGameTree(&state);
        }
    }
};

CFRNode& at(const CFR& solver, int player, int round, const std::string& key) {
    return *solver.nodeMap(player, round).at(key);
}

void expectSameTree(const CFR& a, const CFR& b) {
    for (int p = 0; p < a.getGame().numPlayers; ++p)
        for (int r = 0; r < a.getGame().numRounds; ++r) {
            const NodeMap& left = a.nodeMap(p, r);
            const NodeMap& right = b.nodeMap(p, r);
            ASSERT_EQ(left.size(), right.size());
            for (auto i = left.begin(), j = right.begin(); i != left.end(); ++i, ++j) {
                ASSERT_EQ(i->first, j->first);
                for (int k = 0; k < numAbstractedActions; ++k) {
                    EXPECT_EQ(i->second->isActionValid(k), j->second->isActionValid(k)) << i->first;
                    EXPECT_EQ(i->second->strategySum[k], 0.0);
                }
            }
        }
}

TEST(Tree, OneDealGivesOneSetADecision) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State state{};
    initState(game.get(), 0, &state);
    const uint8_t cards[] = {0, 4, 8};
    placeCards(*game, cards, &state);
    solver.createAbstractedGameTree(&state);
    EXPECT_EQ(solver.numInformationSets(), 12U);
    EXPECT_FALSE(solver.isTreeReady());
    EXPECT_EQ(solver.nodeMap(0, 0).count("0:0:0:"), 1U);
    EXPECT_EQ(solver.nodeMap(2, 0).count("2:0:2:rf"), 1U);
}

TEST(Tree, AFinishedStateAddsNothing) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State state{};
    initState(game.get(), 0, &state);
    state.finished = 1;
    solver.createAbstractedGameTree(&state);
    EXPECT_EQ(solver.numInformationSets(), 0U);
}

TEST(Tree, FoldNeedsSomethingOwedAndRaisesEndAtTheLimit) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    solver.buildTree();
    CFRNode& root = at(solver, 0, 0, "0:0:0:");
    EXPECT_FALSE(root.isActionValid(0));
    EXPECT_TRUE(root.isActionValid(1));
    EXPECT_TRUE(root.isActionValid(2));
    CFRNode& raised = at(solver, 1, 0, "1:0:0:r");
    EXPECT_TRUE(raised.isActionValid(0));
    EXPECT_TRUE(raised.isActionValid(1));
    EXPECT_FALSE(raised.isActionValid(2));
}

TEST(Tree, NoLimitRaisesAreNeverOffered) {
    const GamePtr game =
        gameFrom("GAMEDEF\nnolimit\nnumPlayers = 2\nnumRounds = 1\nstack = 20 20\nblind = 1 2\n"
                 "firstPlayer = 1\nnumSuits = 1\nnumRanks = 3\nnumHoleCards = 1\n"
                 "numBoardCards = 0\nEND GAMEDEF\n");
    CFR solver(game.get());
    solver.buildTree();
    ASSERT_GT(solver.numInformationSets(), 0U);
    for (int p = 0; p < 2; ++p)
        for (const auto& [key, node] : solver.nodeMap(p, 0)) {
            EXPECT_FALSE(node->isActionValid(2)) << key;
            EXPECT_TRUE(node->isActionValid(1)) << key;
        }
}

TEST(Tree, BuildingAgainStartsFromZero) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State state{};
    initState(game.get(), 0, &state);
    const uint8_t cards[] = {12, 4, 8};
    placeCards(*game, cards, &state);
    solver.createAbstractedGameTree(&state);
    CFRNode& root = at(solver, 0, 0, "0:0:3:");
    root.regretSum[1] = 5;
    root.strategySum[2] = 6;
    root.setActionInvalid(2);
    solver.createAbstractedGameTree(&state);
    EXPECT_EQ(solver.numInformationSets(), 12U);
    EXPECT_EQ(&root, &at(solver, 0, 0, "0:0:3:"));
    EXPECT_EQ(root.regretSum[1], 0.0);
    EXPECT_EQ(root.strategySum[2], 0.0);
    EXPECT_TRUE(root.isActionValid(2));
}

TEST(Tree, CompiledBuildingLeavesWhatEnumerationLeaves) {
    for (const auto& make : {kuhn3, kuhn2, leduc2, four, twoCards, longSuit}) {
        const GamePtr game = make();
        CFR compiled(game.get());
        compiled.buildTree();
        TreeSolver plain(game.get());
        plain.buildPlain();
        expectSameTree(compiled, plain);
    }
}

TEST(Elimination, TopRankNeverFoldsAndBottomRankNeverCallsARaise) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    solver.buildTree();
    ::testing::internal::CaptureStdout();
    solver.eliminateActions();
    // All twelve decisions of the top rank lose fold; nine of the bottom rank face a bet.
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "Eliminating useless actions...\n21 actions were eliminated!\n");
    for (int p = 0; p < 3; ++p)
        for (const auto& [key, node] : solver.nodeMap(p, 0)) {
            const char rank = key[4];
            const bool facingBet = key.find('r') != std::string::npos;
            EXPECT_EQ(node->isActionValid(0), facingBet && rank != '3') << key;
            EXPECT_EQ(node->isActionValid(1), !(facingBet && rank == '0')) << key;
            EXPECT_EQ(node->isActionValid(2), !facingBet) << key;
        }
}

// A solver that says what its cards are worth, to reach the thresholds.
class Odds : public CFR {
public:
    using CFR::CFR;
    double winProb(int bucket) override { return odds[bucket]; }
    double odds[4] = {0.05, 0.0500001, 0.9499999, 0.95};
};

TEST(Elimination, ThresholdsAreInclusive) {
    const GamePtr game = kuhn3();
    Odds solver(game.get());
    solver.buildTree();
    const QuietOutput quiet;
    solver.eliminateActions();
    EXPECT_FALSE(at(solver, 1, 0, "1:0:0:r").isActionValid(1));
    EXPECT_TRUE(at(solver, 1, 0, "1:0:1:r").isActionValid(1));
    EXPECT_TRUE(at(solver, 1, 0, "1:0:2:r").isActionValid(0));
    EXPECT_FALSE(at(solver, 1, 0, "1:0:3:r").isActionValid(0));
}

TEST(Elimination, CallIsTakenInTheLastRoundOnly) {
    const GamePtr game = leduc2();
    Odds solver(game.get());
    solver.buildTree();
    const QuietOutput quiet;
    solver.eliminateActions();
    EXPECT_TRUE(at(solver, 1, 0, "1:0:0:crr").isActionValid(1));
    EXPECT_FALSE(at(solver, 0, 1, "0:1:0:ccrr").isActionValid(1));
}

TEST(WinProb, IsTheRankOverTheTopRank) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    EXPECT_EQ(solver.winProb(0), 0.0);
    EXPECT_EQ(solver.winProb(1), 1 / 3.0);
    EXPECT_EQ(solver.winProb(2), 2 / 3.0);
    EXPECT_EQ(solver.winProb(3), 1.0);
}

void expectThrow(CFR& solver, const char* expected) {
    try {
        solver.winProb(0);
        FAIL();
    } catch (const char* text) {
        EXPECT_STREQ(text, expected);
    }
}

TEST(WinProb, IsUnknownForOtherGames) {
    for (const auto& make : {holdem2, leduc2, twoCards}) {
        const GamePtr game = make();
        CFR solver(game.get());
        expectThrow(solver, "not implemented");
    }
}

TEST(WinProb, NeedsClusterEquityForBuckets) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    solver.useCardAbstraction = true;
    expectThrow(solver, "Not working... only at 5am");
}

} // namespace
} // namespace tamarin::test
