#include "training/training_run.h"

#include "solver/games.h"
#include "training/slow_clock.h"
#include "training/small_game_trainer.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using test::SlowClock;

std::unique_ptr<SmallGame> kuhn() {
    return std::move(*SmallGame::make(*kuhn3()));
}

TEST(TrainingRun, StepsAreAnEighthApart) {
    uint64_t at = 0;
    std::vector<uint64_t> steps;
    while (at < 30)
        steps.push_back(at = nextStep(at, 1));
    EXPECT_EQ(steps, (std::vector<uint64_t>{1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,
                                            12, 13, 14, 15, 16, 18, 20, 22, 24, 27, 30}));
    EXPECT_EQ(nextStep(28, 1), 30U); // wherever a run was cut
    EXPECT_EQ(nextStep(0, 100), 100U);
    EXPECT_EQ(nextStep(1600, 100), 1700U); // 1100, 1300, 1500, 1700
}

TEST(TrainingRun, EndsAfterItsIterations) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    TrainingGoal goal;
    goal.iterations = 100;
    std::vector<TrainingStep> steps;
    TrainingHooks hooks;
    hooks.step = [&](const TrainingStep& step) { steps.push_back(step); };
    EXPECT_EQ(runTraining(*trainer, goal, hooks), TrainingEnd::iterations);
    EXPECT_EQ(trainer->iteration(), 100U);
    EXPECT_EQ(steps.front().iteration, 1U);
    EXPECT_EQ(steps.back().iteration, 100U);
    const auto nashConv = [](const TrainingStep& step) {
        return std::get<ProfileValue>(step.measure).nashConv();
    };
    EXPECT_LT(nashConv(steps.back()), nashConv(steps.front()));
}

TEST(TrainingRun, ReportsTheEndEvenWithoutWork) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    trainer->run(7);
    TrainingGoal goal;
    goal.iterations = 5;
    int steps = 0;
    TrainingHooks hooks;
    hooks.step = [&](const TrainingStep& step) {
        ++steps;
        EXPECT_EQ(step.iteration, 7U);
    };
    EXPECT_EQ(runTraining(*trainer, goal, hooks), TrainingEnd::iterations);
    EXPECT_EQ(steps, 1);
}

TEST(TrainingRun, EndsAtANashConvOnTheSameIterationHoweverFast) {
    const auto game = kuhn();
    TrainingGoal goal;
    goal.nashConv = 1e-3;
    const auto fast = makeTrainer(*game, {});
    EXPECT_EQ(runTraining(*fast, goal, {}), TrainingEnd::nashConv);
    const auto slow = makeTrainer(*game, {});
    EXPECT_EQ(runTraining(*slow, goal, {}, SlowClock()), TrainingEnd::nashConv);
    EXPECT_EQ(fast->iteration(), slow->iteration());
    EXPECT_LE(evaluateProfile(*game, fast->average()).nashConv(), 1e-3);
    // Also when it was cut in between.
    const auto first = makeTrainer(*game, {});
    first->run(fast->iteration() / 2);
    const auto second = makeTrainer(*game, {});
    second->restore(first->state());
    runTraining(*second, goal, {});
    EXPECT_EQ(second->iteration(), fast->iteration());
}

TEST(TrainingRun, EndsWhenTimeIsUp) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    TrainingGoal goal;
    goal.seconds = 50;
    EXPECT_EQ(runTraining(*trainer, goal, {}, SlowClock()), TrainingEnd::seconds);
    EXPECT_GT(trainer->iteration(), 0U);
    EXPECT_LT(trainer->iteration(), 50U);
}

TEST(TrainingRun, StopsWhenTold) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    int asked = 0;
    TrainingHooks hooks;
    hooks.stop = [&] { return ++asked == 5; };
    EXPECT_EQ(runTraining(*trainer, {}, hooks), TrainingEnd::stopped);
    EXPECT_GT(trainer->iteration(), 0U);
}

TEST(TrainingRun, SavesEverySoManyIterations) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    TrainingGoal goal;
    goal.iterations = 100;
    std::vector<uint64_t> saved;
    TrainingHooks hooks;
    hooks.saveEvery = 30;
    hooks.save = [&] { saved.push_back(trainer->iteration()); };
    runTraining(*trainer, goal, hooks);
    EXPECT_EQ(saved, (std::vector<uint64_t>{30, 60, 90}));
}

// Without a number of iterations between checkpoints, time alone asks for them.
TEST(TrainingRun, SavesEverySoManySeconds) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    TrainingGoal goal;
    goal.seconds = 1000;
    int saved = 0;
    TrainingHooks hooks;
    hooks.save = [&] { ++saved; };
    runTraining(*trainer, goal, hooks, SlowClock());
    EXPECT_EQ(saved, 0) << "nobody asked for any";
    hooks.saveEverySeconds = 100;
    runTraining(*trainer, goal, hooks, SlowClock());
    EXPECT_GT(saved, 2);
    EXPECT_LT(saved, 10);
}

TEST(TrainingRun, ShowsHowFarItIs) {
    const auto game = kuhn();
    const auto trainer = makeTrainer(*game, {});
    TrainingGoal goal;
    goal.iterations = 40;
    std::vector<uint64_t> told;
    TrainingHooks hooks;
    hooks.progress = [&](uint64_t iteration) { told.push_back(iteration); };
    runTraining(*trainer, goal, hooks);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.front(), 1U);
    EXPECT_EQ(told.back(), 40U);
}

TEST(TrainingRun, SaysWhyItEnded) {
    EXPECT_STREQ(describe(TrainingEnd::iterations), "all iterations done");
    EXPECT_STREQ(describe(TrainingEnd::seconds), "time is up");
    EXPECT_STREQ(describe(TrainingEnd::nashConv), "NashConv reached");
    EXPECT_STREQ(describe(TrainingEnd::stopped), "stopped by a signal");
}

TEST(TrainingRun, WritesStepsAsJson) {
    const TrainingStep step{9, 0.25, 36.0, ProfileValue{{0.5, -0.5}, {1.0, -0.25}}};
    EXPECT_EQ(stepAsJson(step), "{\"iteration\":9,\"seconds\":0.250,\"nashConv\":0.75,"
                                "\"gain\":[0.5,0.25],\"value\":[0.5,-0.5]}");
}

} // namespace
} // namespace tamarin::test
