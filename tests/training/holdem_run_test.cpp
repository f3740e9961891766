// A hold'em trainer in a training run.
#include "game/games.h"
#include "solver/hashed_buckets.h"
#include "training/holdem_trainer.h"
#include "training/slow_clock.h"
#include "training/training_run.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

double averageRegret(const TrainingStep& step) {
    return std::get<AverageRegret>(step.measure).chips;
}

class HoldemRun : public testing::Test {
protected:
    HoldemRun() {
        std::string text = twoPlayerLimit;
        text.replace(text.find("3 4 4 4"), 7, "1 1 0 0");
        game = parseGame(text);
        trainer.emplace(*game, buckets, HoldemTrainerConfig{Algorithm::linear, 1, 1000, 10, 1});
        hooks.step = [this](const TrainingStep& step) { steps.push_back(step); };
        hooks.save = [this] { saves.push_back(trainer->iteration()); };
    }
    const HashedBuckets buckets;
    GamePtr game;
    std::optional<HoldemTrainer> trainer;
    TrainingHooks hooks;
    std::vector<TrainingStep> steps;
    std::vector<uint64_t> saves;
};

TEST_F(HoldemRun, EndsAfterItsDealsAndSavesOnTheWay) {
    TrainingGoal goal;
    goal.iterations = 100;
    hooks.saveEvery = 30;
    uint64_t shown = 0;
    hooks.progress = [&](uint64_t deals) { shown = deals; };
    EXPECT_EQ(runTraining(*trainer, goal, hooks), TrainingEnd::iterations);
    EXPECT_EQ(trainer->iteration(), 100U);
    EXPECT_EQ(shown, 100U);
    EXPECT_EQ(saves, (std::vector<uint64_t>{30, 60, 90}));
    EXPECT_EQ(steps.front().iteration, 10U);
    EXPECT_EQ(steps.back().iteration, 100U);
    EXPECT_GT(averageRegret(steps.back()), 0.0);
    EXPECT_LT(averageRegret(steps.back()), averageRegret(steps.front()));
}

TEST_F(HoldemRun, EndsInTimeOrWhenToldAndReportsThat) {
    const SlowClock clock;
    TrainingGoal goal;
    goal.seconds = 50.0;
    hooks.saveEverySeconds = 20.0;
    EXPECT_EQ(runTraining(*trainer, goal, hooks, clock), TrainingEnd::seconds);
    EXPECT_GT(trainer->iteration(), 0U);
    EXPECT_FALSE(saves.empty());
    const uint64_t done = trainer->iteration();
    hooks.stop = [&] { return trainer->iteration() > done; };
    EXPECT_EQ(runTraining(*trainer, {}, hooks), TrainingEnd::stopped);
    EXPECT_EQ(trainer->iteration(), done + 10);
    EXPECT_EQ(steps.back().iteration, done + 10);
    EXPECT_EQ(steps.back().rate, 10.0 / steps.back().seconds); // of this run alone
}

TEST(HoldemStepAsJson, IsOneObject) {
    EXPECT_EQ(stepAsJson(TrainingStep{8, 0.1, 80.0, AverageRegret{0.25}}),
              "{\"iteration\":8,\"seconds\":0.100,\"iterationsPerSecond\":80.0,"
              "\"averageRegret\":0.25}");
}

} // namespace
} // namespace tamarin::test
