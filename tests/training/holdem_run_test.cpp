#include "training/holdem_run.h"

#include "game/games.h"
#include "solver/hashed_buckets.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Each look at it takes a second.
class SlowClock : public Clock {
public:
    TimePoint now() const override {
        time_ += std::chrono::seconds(1);
        return time_;
    }

private:
    mutable TimePoint time_{};
};

class HoldemRun : public testing::Test {
protected:
    HoldemRun() {
        std::string text = twoPlayerLimit;
        text.replace(text.find("3 4 4 4"), 7, "1 1 0 0");
        game = parseGame(text);
        trainer.emplace(*game, buckets, HoldemTrainerConfig{Algorithm::linear, 1, 1000, 10, 1});
        hooks.step = [this](const HoldemStep& step) { steps.push_back(step); };
        hooks.save = [this] { saves.push_back(trainer->deals()); };
    }
    const HashedBuckets buckets;
    GamePtr game;
    std::optional<HoldemTrainer> trainer;
    HoldemHooks hooks;
    std::vector<HoldemStep> steps;
    std::vector<uint64_t> saves;
};

TEST_F(HoldemRun, EndsAfterItsDealsAndSavesOnTheWay) {
    HoldemGoal goal;
    goal.deals = 100;
    hooks.saveEveryDeals = 30;
    uint64_t shown = 0;
    hooks.progress = [&](uint64_t deals) { shown = deals; };
    EXPECT_EQ(runHoldemTraining(*trainer, goal, hooks), HoldemEnd::deals);
    EXPECT_EQ(trainer->deals(), 100U);
    EXPECT_EQ(shown, 100U);
    EXPECT_EQ(saves, (std::vector<uint64_t>{30, 60, 90}));
    EXPECT_EQ(steps.front().deals, 10U);
    EXPECT_EQ(steps.back().deals, 100U);
    EXPECT_GT(steps.back().averageRegret, 0.0);
    EXPECT_LT(steps.back().averageRegret, steps.front().averageRegret);
}

TEST_F(HoldemRun, EndsInTimeOrWhenToldAndReportsThat) {
    const SlowClock clock;
    HoldemGoal goal;
    goal.seconds = 50.0;
    hooks.saveEverySeconds = 20.0;
    EXPECT_EQ(runHoldemTraining(*trainer, goal, hooks, clock), HoldemEnd::seconds);
    EXPECT_GT(trainer->deals(), 0U);
    EXPECT_FALSE(saves.empty());
    const uint64_t done = trainer->deals();
    hooks.stop = [&] { return trainer->deals() > done; };
    EXPECT_EQ(runHoldemTraining(*trainer, {}, hooks), HoldemEnd::stopped);
    EXPECT_EQ(trainer->deals(), done + 10);
    EXPECT_EQ(steps.back().deals, done + 10);
}

TEST(HoldemStepAsJson, IsOneObject) {
    EXPECT_EQ(stepAsJson(HoldemStep{8, 0.1, 80.0, 0.25}),
              "{\"iteration\":8,\"seconds\":0.100,\"iterationsPerSecond\":80.0,"
              "\"averageRegret\":0.25}");
}

} // namespace
} // namespace tamarin::test
