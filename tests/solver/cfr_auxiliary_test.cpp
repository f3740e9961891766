#include "abstraction/boards.h"
#include "solver/auxiliary_fixture.h"
#include "solver/fnv1a.h"
#include "support/rng.h"

#include <algorithm>
#include <memory>
#include <regex>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using TrainIS = void (CFR::*)(unsigned long long, hand_indexer_t*, int, int);

std::unique_ptr<CFR> trained(Game* game, EquityTables& tables, int round, TrainIS train,
                             unsigned long long iterations) {
    auto solver = std::make_unique<CFR>(game);
    solver->setEquityTables(&tables);
    global_urng().seed(99);
    QuietOutput quiet;
    (solver.get()->*train)(iterations, tables.indexer(round), round == 0 ? 0 : 1, round);
    return solver;
}

struct Case {
    int players;
    int round;
    unsigned long long iterations;
};

class Auxiliary : public ::testing::TestWithParam<Case> {};

TEST_P(Auxiliary, CompiledAndPlainLeaveTheSameBits) {
    const auto [players, round, iterations] = GetParam();
    CFR::logProgress = false;
    const GamePtr game = auxiliaryGameOf(players, round);
    QuickTables quick(players, round);
    const auto compiled = trained(game.get(), quick.tables, round, &CFR::trainIS, iterations);
    const auto drawAfter = global_urng()();
    const auto plain = trained(game.get(), quick.tables, round, &CFR::trainISPlain, iterations);
    EXPECT_EQ(global_urng()(), drawAfter);
    expectSameNodes(*compiled, *plain);
    EXPECT_FALSE(compiled->useCardAbstraction);

    // Of the round's hands the first ones, beyond the 256th where there are more than 169.
    const size_t size = round == 0 ? 169 : 600;
    std::vector<std::vector<double>> left(static_cast<size_t>(players), std::vector<double>(size));
    auto right = left;
    double* a[3];
    double* b[3];
    for (size_t p = 0; p < left.size(); ++p) {
        a[p] = left[p].data();
        b[p] = right[p].data();
    }
    QuietOutput quiet;
    global_urng().seed(7);
    compiled->fillUtility(a, size, round);
    global_urng().seed(7);
    plain->fillUtilityPlain(b, size, round);
    double total = 0;
    for (size_t p = 0; p < left.size(); ++p)
        for (size_t i = 0; i < size; ++i) {
            expectSameBits(left[p][i], right[p][i], std::to_string(i));
            total += std::abs(left[p][i]);
        }
    EXPECT_GT(total, 0);
    EXPECT_FALSE(compiled->useCardAbstraction);
}

INSTANTIATE_TEST_SUITE_P(Games, Auxiliary,
                         ::testing::Values(Case{2, 0, 12}, Case{3, 0, 3}, Case{2, 1, 3},
                                           Case{3, 1, 1}, Case{2, 2, 2}),
                         [](const auto& given) {
                             return std::to_string(given.param.players) + "playersRound" +
                                    std::to_string(given.param.round);
                         });

// What a seed leads to, for good: a change of both forms at once is a change of the tables.
struct Pinned {
    int players;
    int round;
    uint64_t nodes;
    uint64_t utilities;
};

class AuxiliaryPins : public ::testing::TestWithParam<Pinned> {};

TEST_P(AuxiliaryPins, LeaveTheSumsAndUtilitiesTheyAlwaysLeft) {
    const auto [players, round, nodes, utilities] = GetParam();
    CFR::logProgress = false;
    const GamePtr game = auxiliaryGameOf(players, round);
    QuickTables quick(players, round);
    const auto solver = trained(game.get(), quick.tables, round, &CFR::trainIS, 3);
    std::string bytes;
    for (int m = 0; m < players; ++m)
        solver->nodes().forEach(m, [&](const std::string& key, const CFRNode& node) {
            bytes += key;
            bytes.append(reinterpret_cast<const char*>(node.regretSum), sizeof node.regretSum);
            bytes.append(reinterpret_cast<const char*>(node.strategySum), sizeof node.strategySum);
            return true;
        });
    EXPECT_EQ(fnv1a(bytes), nodes);

    const size_t size = round == 0 ? 169 : 600;
    std::vector<std::vector<double>> utility(static_cast<size_t>(players),
                                             std::vector<double>(size));
    double* tables[3] = {};
    for (size_t p = 0; p < utility.size(); ++p)
        tables[p] = utility[p].data();
    global_urng().seed(7);
    {
        const QuietOutput quiet;
        solver->fillUtility(tables, size, round);
    }
    bytes.clear();
    for (const auto& ofSeat : utility)
        bytes.append(reinterpret_cast<const char*>(ofSeat.data()), size * sizeof(double));
    EXPECT_EQ(fnv1a(bytes), utilities);
}

INSTANTIATE_TEST_SUITE_P(
    Games, AuxiliaryPins,
    ::testing::Values(Pinned{2, 0, 10206627835451133850U, 4258446301453993239U},
                      Pinned{3, 0, 6049232198748048899U, 16849701635575204160U},
                      Pinned{2, 1, 6538208417444778305U, 2499305662759756483U},
                      Pinned{3, 1, 5920936936587840637U, 14119285271941964753U},
                      Pinned{2, 2, 2119092941144062679U, 16809300524077789295U}),
    [](const auto& given) {
        return std::to_string(given.param.players) + "playersRound" +
               std::to_string(given.param.round);
    });

// The hero's bucket comes from a look-up by index that takes a byte: hand 256 + i has hand i's.
// Here the first 256 hands have a bucket that folds to a raise, all others one that raises or calls
// it.
TEST(FillUtility, LooksTheHerosBucketUpByTheIndexesLowByte) {
    CFR::logProgress = false;
    const GamePtr game = auxiliaryGameOf(2, 1);
    QuickTables quick(2, 1);
    uint8_t* const clusters = quick.tables.getClusterTable(2, 1);
    std::fill_n(clusters, quick.tables.getRoundSize(1), uint8_t{50});
    std::fill_n(clusters, 256, uint8_t{40});
    const auto solver = trained(game.get(), quick.tables, 1, &CFR::trainIS, 0);
    const auto play = [&](int seat, const std::string& key, int action) {
        CFRNode& node = *solver->nodeMap(seat, 0).at(key);
        ASSERT_TRUE(node.isActionValid(action)) << key;
        std::fill_n(node.strategySum, numAbstractedActions, 0.0);
        node.strategySum[action] = 1.0;
    };
    play(0, "0:0:40:", 1);
    play(0, "0:0:50:", 2);
    play(1, "1:0:40:c", 1);
    play(1, "1:0:50:c", 1);
    play(1, "1:0:40:r", 0);
    play(1, "1:0:50:r", 1);
    for (const auto fill : {&CFR::fillUtility, &CFR::fillUtilityPlain}) {
        std::vector<double> utility[2] = {std::vector<double>(600), std::vector<double>(600)};
        double* tables[] = {utility[0].data(), utility[1].data()};
        {
            const QuietOutput quiet;
            (solver.get()->*fill)(tables, 600, 1);
        }
        // Whoever holds the folding bucket risks and wins an ante and no more.
        for (const auto& ofSeat : utility)
            for (size_t i = 0; i < ofSeat.size(); ++i)
                EXPECT_LE(std::abs(ofSeat[i]), 1.0) << i;
        EXPECT_GT(std::count(utility[1].begin() + 256, utility[1].end(), -1.0), 100);
    }
}

TEST(TrainIS, LogsEachOfAFewIterations) {
    const GamePtr game = auxiliaryGameOf(2, 0);
    QuickTables quick(2, 0);
    CFR solver(game.get());
    solver.setEquityTables(&quick.tables);
    {
        const QuietOutput quiet;
        solver.trainIS(0, quick.tables.indexer(0), 0, 0);
    }
    CFR::logProgress = true;
    for (const auto train : {&CFR::trainIS, &CFR::trainISPlain}) {
        ::testing::internal::CaptureStdout();
        (solver.*train)(4, quick.tables.indexer(0), 0, 0);
        EXPECT_EQ(std::regex_replace(::testing::internal::GetCapturedStdout(),
                                     std::regex(" \\(.*\\)"), ""),
                  "Number of information sets: 404\nCFR progress: 0%\nCFR progress: 2%\n"
                  "CFR progress: 5%\nCFR progress: 7%\n");
    }
    CFR::logProgress = false;
}

// Cards whose chances nobody knows.
class NoChances : public CFR {
public:
    using CFR::CFR;
    double winProb(int) override { throw "no chances"; }
    bool asksClusters() const { return useClusterEquity; }
};

TEST(TrainIS, AnExceptionLeavesTheFlagsOff) {
    CFR::logProgress = false;
    const GamePtr game = auxiliaryGameOf(2, 0);
    QuickTables quick(2, 0);
    for (const auto train : {&CFR::trainIS, &CFR::trainISPlain}) {
        NoChances solver(game.get());
        solver.setEquityTables(&quick.tables);
        const QuietOutput quiet;
        EXPECT_THROW((solver.*train)(1, quick.tables.indexer(0), 0, 0), const char*);
        EXPECT_FALSE(solver.useCardAbstraction);
        EXPECT_FALSE(solver.asksClusters());
        EXPECT_FALSE(solver.isTreeReady());
    }
}

TEST(TrainIS, BuildsOnceAndThenOnlyAdds) {
    CFR::logProgress = false;
    const GamePtr game = auxiliaryGameOf(2, 0);
    QuickTables quick(2, 0);
    CFR solver(game.get());
    solver.setEquityTables(&quick.tables);
    ::testing::internal::CaptureStdout();
    solver.trainIS(1, quick.tables.indexer(0), 0, 0);
    const std::string first = ::testing::internal::GetCapturedStdout();
    // Two sets a bucket and seat. Fold goes from the 6 buckets from 95 up, call where there is no
    // raise from the 6 up to 5.
    EXPECT_EQ(first, "Estou aqui: 0.591716%\nEliminating useless actions...\n"
                     "36 actions were eliminated!\nNumber of information sets: 404\n");
    ::testing::internal::CaptureStdout();
    solver.trainIS(1, quick.tables.indexer(0), 0, 0);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Number of information sets: 404\n");
    EXPECT_FALSE(solver.nodeMap(0, 0).at("0:0:97:cr")->isActionValid(0));
    EXPECT_FALSE(solver.nodeMap(0, 0).at("0:0:3:cr")->isActionValid(1));
    EXPECT_TRUE(solver.nodeMap(0, 0).at("0:0:50:cr")->isActionValid(1));
}

TEST(TrainIS, PrintsTenths) {
    CFR::logProgress = true;
    const GamePtr game = auxiliaryGameOf(2, 0);
    QuickTables quick(2, 0);
    CFR solver(game.get());
    solver.setEquityTables(&quick.tables);
    ::testing::internal::CaptureStdout();
    solver.trainIS(20, quick.tables.indexer(0), 0, 0);
    const std::string output = ::testing::internal::GetCapturedStdout();
    CFR::logProgress = false;
    for (int tenth = 0; tenth < 10; ++tenth)
        EXPECT_NE(output.find("CFR progress: " + std::to_string(tenth) + "% (elapsed time: "),
                  std::string::npos);
    EXPECT_EQ(output.find("CFR progress: 10%"), std::string::npos);
}

TEST(FillUtility, PrintsALineEachThousandHands) {
    CFR::logProgress = false;
    const GamePtr game = auxiliaryGameOf(2, 1);
    QuickTables quick(2, 1);
    const auto solver = trained(game.get(), quick.tables, 1, &CFR::trainIS, 1);
    std::vector<double> utility[2] = {std::vector<double>(2500), std::vector<double>(2500)};
    double* tables[] = {utility[0].data(), utility[1].data()};
    ::testing::internal::CaptureStdout();
    solver->fillUtility(tables, 2500, 1);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "0% done\n40% done\n80% done\n");
}

TEST(WinProb, OfABucketNeedsClusterEquity) {
    const GamePtr game = auxiliaryGameOf(2, 0);
    CFR solver(game.get());
    solver.useCardAbstraction = true;
    try {
        solver.winProb(3);
        FAIL();
    } catch (const char* text) {
        EXPECT_STREQ(text, "Not working... only at 5am");
    }
}

} // namespace
} // namespace tamarin::test
