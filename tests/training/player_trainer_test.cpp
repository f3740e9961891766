#include "training/player_trainer.h"

#include "solver/games.h"
#include "training/best_response.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// The same blocks as CFR::train, node by node.
TEST(PlayerTrainer, IsThePlayersOwnTraining) {
    const GamePtr rules = kuhn3();
    const auto game = SmallGame::make(*rules);
    ASSERT_TRUE(game.ok());
    PlayerTrainer trainer(**game, 9);
    EXPECT_EQ(trainer.block(), 100000U);
    trainer.run(150000); // rounded up to two blocks
    EXPECT_EQ(trainer.iteration(), 200000U);
    CFR stored(rules.get());
    trainer.store(stored);

    CFR plain(rules.get());
    const QuietOutput quiet;
    global_urng().seed(9);
    plain.train(100000);
    plain.train(100000);
    for (int p = 0; p < 3; ++p)
        for (const auto& [key, node] : plain.nodeMap(p, 0)) {
            const CFRNode& other = *stored.nodeMap(p, 0).at(key);
            for (int a = 0; a < 3; ++a) {
                EXPECT_EQ(node->isActionValid(a), other.isActionValid(a)) << key;
                EXPECT_EQ(node->strategySum[a], other.strategySum[a]) << key;
                if (node->isActionValid(a)) {
                    EXPECT_EQ(node->regretSum[a], other.regretSum[a]) << key;
                }
            }
        }
}

TEST(PlayerTrainer, ResumesToTheSameSums) {
    const GamePtr rules = kuhn3();
    const auto game = SmallGame::make(*rules);
    PlayerTrainer whole(**game, 4);
    whole.run(300000);
    const TrainerState expected = whole.state();
    PlayerTrainer first(**game, 4);
    first.run(100000);
    const TrainerState saved = first.state();
    PlayerTrainer second(**game, 4);
    second.restore(saved);
    second.run(200000);
    const TrainerState found = second.state();
    EXPECT_EQ(found.iteration, expected.iteration);
    EXPECT_EQ(found.random, expected.random);
    for (size_t set = 0; set < expected.sets.size(); ++set)
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            EXPECT_EQ(found.sets[set].strategy[a], expected.sets[set].strategy[a]);
            EXPECT_TRUE(found.sets[set].regret[a] == expected.sets[set].regret[a] ||
                        expected.sets[set].regret[a] != expected.sets[set].regret[a]);
        }
}

TEST(PlayerTrainer, StaysAwayFromAnEquilibrium) {
    const auto game = SmallGame::make(*kuhn3());
    PlayerTrainer trainer(**game, 1);
    trainer.run(1000000);
    EXPECT_GT(evaluateProfile(**game, trainer.average()).nashConv(), 0.1);
}

TEST(PlayerTrainer, KeepsQuiet) {
    const auto game = SmallGame::make(*kuhn2());
    ::testing::internal::CaptureStdout();
    PlayerTrainer(**game, 1).run(1);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

} // namespace
} // namespace tamarin::test
