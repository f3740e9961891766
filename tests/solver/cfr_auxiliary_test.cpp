#include "abstraction/boards.h"
#include "solver/auxiliary_fixture.h"
#include "support/rng.h"

#include <memory>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::testing {
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

    constexpr size_t size = 169; // of the round's hands, the first ones
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
} // namespace tamarin::testing
