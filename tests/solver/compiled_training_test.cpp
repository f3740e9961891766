#include "solver/compiled_training.h"

#include "solver/cfr.h"
#include "solver/games.h"
#include "support/file.h"
#include "support/temp_directory.h"

#include <bit>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

void expectSameBits(double a, double b, const std::string& where) {
    EXPECT_EQ(std::bit_cast<uint64_t>(a), std::bit_cast<uint64_t>(b))
        << where << ": " << a << " and " << b;
}

void expectSameNodes(const CFR& a, const CFR& b) {
    const Game& game = a.getGame();
    for (int p = 0; p < game.numPlayers; ++p)
        for (int r = 0; r < game.numRounds; ++r) {
            const NodeMap& left = a.nodeMap(p, r);
            const NodeMap& right = b.nodeMap(p, r);
            ASSERT_EQ(left.size(), right.size());
            for (auto i = left.begin(), j = right.begin(); i != left.end(); ++i, ++j) {
                ASSERT_EQ(i->first, j->first);
                for (int k = 0; k < numAbstractedActions; ++k) {
                    expectSameBits(i->second->regretSum[k], j->second->regretSum[k],
                                   i->first + " regret");
                    expectSameBits(i->second->strategySum[k], j->second->strategySum[k],
                                   i->first + " strategy");
                }
            }
        }
}

std::string fileOf(CFR& cfr) {
    const test::TempDirectory directory; // tests run beside one another
    const std::string path = directory.file("strategy");
    EXPECT_TRUE(cfr.save(path));
    return *readWholeFile(path);
}

// Trains one solver each way from the same seed, in several calls, and compares all they leave.
void expectSameTraining(Game* game, bool eliminate, std::vector<unsigned long long> calls) {
    const QuietOutput quiet;
    CFR fast(game);
    CFR slow(game);
    if (!eliminate) {
        fast.buildTree();
        slow.buildTree();
    }
    global_urng().seed(42);
    for (const auto iterations : calls)
        fast.train(iterations);
    const std::minstd_rand0 fastEngine = global_urng();
    global_urng().seed(42);
    for (const auto iterations : calls)
        slow.trainPlain(iterations);
    EXPECT_EQ(fastEngine, global_urng());
    expectSameNodes(fast, slow);
    EXPECT_EQ(fileOf(fast), fileOf(slow));

    std::ostringstream fastText;
    std::ostringstream slowText;
    fastText << std::hexfloat << fast;
    slowText << std::hexfloat << slow;
    EXPECT_EQ(fastText.str(), slowText.str());

    double fastUtility[MAX_PLAYERS];
    double slowUtility[MAX_PLAYERS];
    fast.calcUtility(fastUtility);
    slow.calcUtilityPlain(slowUtility);
    for (int p = 0; p < game->numPlayers; ++p)
        expectSameBits(fastUtility[p], slowUtility[p], "utility");
}

TEST(CompiledTraining, LeavesThePlainSumsOfThreePlayerKuhn) {
    expectSameTraining(kuhn3().get(), true, {1, 2, 3000, 1000});
}

TEST(CompiledTraining, LeavesThePlainSumsOfThreePlayerKuhnWithoutElimination) {
    expectSameTraining(kuhn3().get(), false, {1, 3000, 1000});
}

TEST(CompiledTraining, LeavesThePlainSumsOfTwoPlayerKuhn) {
    expectSameTraining(kuhn2().get(), true, {5000});
    expectSameTraining(kuhn2().get(), false, {5000});
}

TEST(CompiledTraining, LeavesThePlainSumsOfTwoRoundsWithABoardCard) {
    expectSameTraining(leduc2().get(), false, {1, 1500});
}

TEST(CompiledTraining, LeavesThePlainSumsOfFourPlayersWithAShortStack) {
    expectSameTraining(four().get(), true, {400});
    expectSameTraining(four().get(), false, {400});
}

TEST(CompiledTraining, LeavesThePlainSumsWhereSeveralHandsShareAKey) {
    expectSameTraining(twoCards().get(), false, {1500});
    expectSameTraining(longSuit().get(), true, {2000});
}

TEST(CompiledTraining, LeavesThePlainSumsOfThreePlayersOverTwoBoards) {
    expectSameTraining(boards3().get(), false, {300});
}

TEST(CompiledTraining, DrawsForALongTimeTheSame) {
    expectSameTraining(kuhn3().get(), true, {100000});
}

} // namespace
} // namespace tamarin::test
