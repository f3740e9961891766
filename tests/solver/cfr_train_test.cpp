#include "abstraction/EquityTables.h"
#include "abstraction/table_names.h"
#include "solver/cfr.h"
#include "solver/fnv1a.h"
#include "solver/games.h"
#include "support/rng.h"
#include "support/temp_directory.h"

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class Solver : public CFR {
public:
    using CFR::CFR;
    const double* utility() const { return gameUtility; }
};

std::string trainingOutput(CFR& solver, unsigned long long iterations) {
    ::testing::internal::CaptureStdout();
    solver.train(iterations);
    return ::testing::internal::GetCapturedStdout();
}

TEST(Train, PrintsItsCounts) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    EXPECT_EQ(trainingOutput(solver, 10), "Number of starting nodes: 24\n"
                                          "Eliminating useless actions...\n"
                                          "21 actions were eliminated!\n"
                                          "Number of information sets: 48\n");
    EXPECT_TRUE(solver.isTreeReady());
}

TEST(Train, SecondCallSkipsConstruction) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    trainingOutput(solver, 10);
    EXPECT_EQ(trainingOutput(solver, 10), "Number of information sets: 48\n");
}

TEST(Train, ZeroIterationsLeaveTheSumsAndMakeTheUtilityNan) {
    const GamePtr game = kuhn3();
    Solver solver(game.get());
    EXPECT_EQ(solver.utility(), nullptr);
    const QuietOutput quiet;
    solver.train(0);
    ASSERT_NE(solver.utility(), nullptr);
    for (int p = 0; p < 3; ++p) {
        EXPECT_TRUE(std::isnan(solver.utility()[p]));
        for (const auto& [key, node] : solver.nodeMap(p, 0))
            for (int a = 0; a < 3; ++a) {
                EXPECT_EQ(node->strategySum[a], 0.0);
                EXPECT_TRUE(node->regretSum[a] == 0.0 || !node->isActionValid(a));
            }
    }
}

TEST(Train, UtilitiesOfSuccessiveCallsAddUp) {
    const GamePtr game = kuhn3();
    Solver solver(game.get());
    const QuietOutput quiet;
    solver.train(1000);
    const double first = solver.utility()[0];
    solver.train(1000);
    EXPECT_NE(solver.utility()[0], first);
    // The values of the seats add up to nothing, call by call.
    EXPECT_NEAR(solver.utility()[0] + solver.utility()[1] + solver.utility()[2], 0.0, 1e-12);
}

TEST(Train, LogsEachHundredthWhenAsked) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    CFR::logProgress = true;
    const std::string text = trainingOutput(solver, 200);
    CFR::logProgress = false;
    std::istringstream lines(text.substr(text.find("CFR progress")));
    std::string line;
    int percent = 0;
    while (std::getline(lines, line)) {
        const std::string start =
            "CFR progress: " + std::to_string(percent++) + "% (elapsed time: ";
        ASSERT_EQ(line.substr(0, start.size()), start);
        ASSERT_EQ(line.substr(line.size() - 6), " mins)");
        ASSERT_NE(line.find(" mins, expected time left: "), std::string::npos);
    }
    EXPECT_EQ(percent, 100);
}

// Fewer iterations than percents: a line each.
TEST(Train, LogsEachOfAFewIterations) {
    const GamePtr game = kuhn3();
    for (const auto train : {&CFR::train, &CFR::trainPlain}) {
        CFR solver(game.get());
        {
            const QuietOutput quiet;
            solver.train(0);
        }
        CFR::logProgress = true;
        ::testing::internal::CaptureStdout();
        (solver.*train)(0);
        (solver.*train)(1);
        (solver.*train)(8);
        const std::string text = ::testing::internal::GetCapturedStdout();
        CFR::logProgress = false;
        const std::string count = "Number of information sets: 48\n";
        EXPECT_EQ(std::regex_replace(text, std::regex(" \\(.*\\)"), ""),
                  count + count + "CFR progress: 0%\n" + count +
                      "CFR progress: 0%\nCFR progress: 12%\nCFR progress: 25%\n"
                      "CFR progress: 37%\nCFR progress: 50%\nCFR progress: 62%\n"
                      "CFR progress: 75%\nCFR progress: 87%\n");
    }
}

// The cards that a training deals, as its keys are asked for.
class SeenDeals : public CFR {
public:
    using CFR::CFR;
    std::string abstraction(State* state) override {
        if (isTreeReady() && state->numActions[0] == 0)
            deals.push_back(
                {state->holeCards[0][0], state->holeCards[1][0], state->holeCards[2][0]});
        return CFR::abstraction(state);
    }
    std::vector<std::vector<uint8_t>> deals;
};

// Each deal swaps on from the deck as the last one left it, every card with one of the whole deck.
// (That the compiled form deals the same is compiled_training_test's to see.)
TEST(Train, NeverRestoresTheDeck) {
    const GamePtr game = kuhn3();
    std::vector<uint8_t> deck = {0, 4, 8, 12};
    std::vector<std::vector<uint8_t>> expected;
    global_urng().seed(11);
    for (int deal = 0; deal < 50; ++deal) {
        for (size_t i = 0; i < 3; ++i)
            std::swap(deck[i], deck[static_cast<size_t>(pick_a_number(0, 3))]);
        expected.push_back({deck[0], deck[1], deck[2]});
    }
    SeenDeals solver(game.get());
    const QuietOutput quiet;
    global_urng().seed(11);
    solver.train(50);
    EXPECT_EQ(solver.deals, expected);
}

// What a seed leads to, for good: a change of both forms at once is a change of the player.
TEST(Train, LeavesTheSumsItAlwaysLeft) {
    const GamePtr game = kuhn3();
    const test::TempDirectory directory;
    for (const auto train : {&CFR::train, &CFR::trainPlain}) {
        CFR solver(game.get());
        global_urng().seed(2024);
        {
            const QuietOutput quiet;
            (solver.*train)(3000);
        }
        ASSERT_TRUE(solver.save(directory.file("strategy")));
        EXPECT_EQ(fnv1a(test::contentsOf(directory.file("strategy"))), 2561289545701685381U);
        std::ostringstream dump;
        dump << solver;
        EXPECT_TRUE(dump.str().ends_with("Game utility: ( 0.0187183 0.0531409 -0.0718592  )\n"));
        EXPECT_EQ(solver.nodeMap(0, 0).at("0:0:1:")->strategySum[1], 756.19945840001492);
        EXPECT_EQ(solver.nodeMap(1, 0).at("1:0:2:r")->regretSum[0], 3.9140526506392521);
        EXPECT_EQ(solver.nodeMap(2, 0).at("2:0:3:cc")->regretSum[2], 0.25);
        double values[3];
        solver.calcUtility(values);
        EXPECT_EQ(values[0], 0.018757004473469563);
        EXPECT_EQ(values[1], 0.027127495971773191);
        EXPECT_EQ(values[2], -0.045884500445242705);
    }
}

// With tables, but no tree: its deals cannot be enumerated, and nobody may go on as if they were.
TEST(TrainDeathTest, AFullDeckWithoutATreeEndsTheProcess) {
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const test::TempDirectory directory;
    const auto trainIt = [&](auto train) {
        std::filesystem::current_path(directory.path());
        std::filesystem::create_directory("lookup");
        EquityTables tables;
        for (int players = 2; players <= 3; ++players)
            for (int round = 0; round < holdemRounds; ++round) {
                const std::string path = equityPath(players, round);
                std::ofstream(path).flush();
                std::filesystem::resize_file(path, tables.getRoundSize(round) * sizeof(double));
            }
        const GamePtr game = holdem2();
        CFR solver(game.get());
        solver.setEquityTables(&tables);
        try {
            (solver.*train)(1);
        } catch (...) {
            std::_Exit(3);
        }
    };
    EXPECT_EXIT(trainIt(&CFR::train), ::testing::KilledBySignal(SIGABRT), "terminate called");
    EXPECT_EXIT(trainIt(&CFR::trainPlain), ::testing::KilledBySignal(SIGABRT), "terminate called");
}

TEST(Train, LoggingDoesNotChangeTheSums) {
    const GamePtr game = kuhn3();
    CFR loud(game.get());
    CFR silent(game.get());
    const QuietOutput quiet;
    global_urng().seed(5);
    silent.train(777);
    global_urng().seed(5);
    CFR::logProgress = true;
    loud.train(777);
    CFR::logProgress = false;
    for (const auto& [key, node] : silent.nodeMap(1, 0))
        EXPECT_EQ(node->strategySum[1], loud.nodeMap(1, 0).at(key)->strategySum[1]) << key;
}

TEST(Train, AFullDeckNeedsEquityTables) {
    const GamePtr game = holdem2();
    CFR solver(game.get());
    try {
        solver.train(1);
        FAIL();
    } catch (const char* text) {
        EXPECT_STREQ(text, "Deve carregar equity tables para correr cfr no hold'em poker");
    }
}

TEST(Train, AGameWithABoardFailsAtElimination) {
    const GamePtr game = leduc2();
    CFR solver(game.get());
    const QuietOutput quiet;
    try {
        solver.train(1);
        FAIL();
    } catch (const char* text) {
        EXPECT_STREQ(text, "not implemented");
    }
    EXPECT_FALSE(solver.isTreeReady());
}

TEST(Train, BucketsOutsideTheirTrainerFailAtElimination) {
    const GamePtr game = kuhn2();
    Solver solver(game.get());
    solver.useCardAbstraction = true;
    solver.useHoldemTables = true;
    for (auto& round : solver.holdemBucket)
        for (auto& acting : round)
            for (auto& bucket : acting)
                bucket = 4;
    const QuietOutput quiet;
    try {
        solver.train(1);
        FAIL();
    } catch (const char* text) {
        EXPECT_STREQ(text, "Not working... only at 5am");
    }
    EXPECT_EQ(solver.nodeMap(0, 0).count("0:0:4:"), 1U);
}

// A class that keys its states by hand takes the plain road and is asked for its keys.
class OneCard : public CFR {
public:
    using CFR::CFR;
    std::string abstraction(State* state) override {
        const std::string key = CFR::abstraction(state);
        return key.substr(0, 4) + "1" + key.substr(5);
    }
};

TEST(Train, DerivedClassesKeepTheirOwnKeys) {
    const GamePtr game = kuhn3();
    OneCard solver(game.get());
    const QuietOutput quiet;
    solver.train(50);
    EXPECT_EQ(solver.numInformationSets(), 12U);
    EXPECT_NE(solver.nodeMap(0, 0).at("0:0:1:")->strategySum[1], 0.0);
}

TEST(Train, AStateWithoutANodeIsOutOfRange) {
    const GamePtr small = kuhn2();
    CFR other(small.get());
    {
        const QuietOutput quiet;
        other.train(10);
    }
    // Two seats of a four-rank game read the file, but not all their keys are there.
    const GamePtr game = gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 1\n"
                                  "raiseSize = 1\nfirstPlayer = 1\nmaxRaises = 2\nnumSuits = 1\n"
                                  "numRanks = 4\nnumHoleCards = 1\nnumBoardCards = 0\n"
                                  "END GAMEDEF\n");
    CFR solver(game.get());
    const test::TempDirectory directory;
    const std::string path = directory.file("foreign");
    ASSERT_TRUE(other.save(path));
    ASSERT_TRUE(solver.load(path));
    const QuietOutput quiet;
    EXPECT_THROW(solver.train(100), std::out_of_range);
    double values[2];
    EXPECT_THROW(solver.calcUtility(values), std::out_of_range);
}

// One visit by hand: two-player Kuhn, first player raises with probability 1/2 and so on.
TEST(Calc, WeighsRegretWithTheReachOfWhoActedLast) {
    const GamePtr game = kuhn2();
    CFR solver(game.get());
    solver.buildTree();
    State state{};
    initState(game.get(), 0, &state);
    state.holeCards[0][0] = 8;
    state.holeCards[1][0] = 0;
    double reach[2] = {0.25, 0.5};
    double util[2];
    solver.calc(&state, reach, 0, util);
    // All uniform, the first player holds the best card. cc: +1, crf: -1, crc: +2, rf: +1, rc: +2.
    // After a call: 1/2 (+1) + 1/2 (1/2 (-1) + 1/2 (+2)) = 3/4; after a raise: 3/2.
    EXPECT_EQ(util[0], 1.125);
    EXPECT_EQ(util[1], -1.125);
    const CFRNode& root = *solver.nodeMap(0, 0).at("0:0:2:");
    EXPECT_EQ(root.regretSum[1], 0.25 * (0.75 - 1.125)); // player 0's own reach at the root
    EXPECT_EQ(root.regretSum[2], 0.25 * (1.5 - 1.125));
    EXPECT_EQ(root.strategySum[1], 0.125);
    const CFRNode& raised = *solver.nodeMap(1, 0).at("1:0:0:r");
    EXPECT_EQ(raised.regretSum[0], 0.125 * (-1 + 1.5));
    EXPECT_EQ(raised.regretSum[1], 0.125 * (-2 + 1.5));
    EXPECT_EQ(raised.strategySum[0], 0.25);
    // Player 1 acted last before this one, with reach 1/2 x 1/2.
    const CFRNode& last = *solver.nodeMap(0, 0).at("0:0:2:cr");
    EXPECT_EQ(last.regretSum[0], 0.25 * (-1 - 0.5));
    EXPECT_EQ(last.regretSum[1], 0.25 * (2 - 0.5));
    EXPECT_EQ(last.strategySum[0], 0.0625);
}

} // namespace
} // namespace tamarin::test
