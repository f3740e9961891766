#include "training/small_game_trainer.h"

#include "solver/games.h"
#include "training/best_response.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(SmallGameTrainer, StoresItsAverageAsASolversStrategy) {
    for (const auto& make : {kuhn3, leduc2, boards3}) {
        const GamePtr rules = make();
        const auto game = SmallGame::make(*rules);
        ASSERT_TRUE(game.ok());
        for (const char* name : {"player", "cfr", "dcfr", "pcfr+"}) {
            TrainerConfig config;
            config.algorithm = *algorithmNamed(name);
            const auto trainer = makeTrainer(**game, config);
            trainer->run(20);
            CFR solver(rules.get());
            trainer->store(solver);
            EXPECT_TRUE(solver.isTreeReady());
            const auto stored = averageProfile(**game, solver.nodes());
            ASSERT_TRUE(stored.ok());
            const Profile average = trainer->average();
            for (size_t set = 0; set < average.size(); ++set)
                for (size_t a = 0; a < numAbstractedActions; ++a)
                    EXPECT_NEAR((*stored)[set][a], average[set][a], 1e-15) << name;
        }
    }
}

TEST(SmallGameTrainer, MarksWhatTheRulesForbidInTheFile) {
    const GamePtr rules = kuhn3();
    const auto game = SmallGame::make(*rules);
    const auto trainer = makeTrainer(**game, {});
    trainer->run(5);
    CFR solver(rules.get());
    trainer->store(solver);
    for (int p = 0; p < 3; ++p)
        for (const auto& [key, node] : solver.nodeMap(p, 0)) {
            const bool facingBet = key.find('r') != std::string::npos;
            EXPECT_EQ(node->isActionValid(actionFold), facingBet) << key;
            EXPECT_TRUE(node->isActionValid(actionCall)) << key;
            EXPECT_EQ(node->isActionValid(actionRaise), !facingBet) << key;
        }
}

} // namespace
} // namespace tamarin::test
