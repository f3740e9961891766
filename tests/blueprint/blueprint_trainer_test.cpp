#include "blueprint/blueprint_trainer.h"

#include "blueprint/plain_step.h"
#include "support/temp_directory.h"

#include <fstream>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

const std::string trainedRules = test::shortGame(4, 5, "2 1", "10 20", "0 3");

struct Trained {
    explicit Trained(uint64_t seed, int threads = 1)
        : small(trainedRules, {8, 12}),
          trainer(*small.game, small.tree, small.buckets, seed, threads) {}
    std::vector<float> numbers() const {
        std::vector<float> all;
        for (const auto rows : {trainer.sets().allRegrets(), trainer.sets().allSums()})
            for (const FloatRow& row : rows)
                for (size_t lane = 0; lane < lanesInBlock; ++lane)
                    all.push_back(row.lanes[lane]);
        return all;
    }

    test::ShortTraining small;
    BlueprintTrainer trainer;
};

TEST(BlueprintTrainer, StepsAreWeighedByTheirNumber) {
    Trained trained(6);
    trained.trainer.run(3);
    EXPECT_EQ(trained.trainer.iteration(), 3U);
    test::PlainTraining plain(trained.small);
    for (uint64_t t = 0; t < 3; ++t) {
        const auto board = trained.small.dealer.draw(6, t);
        plain.step(board, static_cast<double>(t + 1));
    }
    double largest = 0;
    for (size_t bucket = 0; bucket < 8; ++bucket)
        for (size_t a = 0; a < 3; ++a) {
            EXPECT_NEAR(trained.trainer.sets().regret(0, bucket, a), plain.at(0, bucket).regret[a],
                        1e-2);
            EXPECT_NEAR(trained.trainer.sets().sum(0, bucket, a), plain.at(0, bucket).sum[a], 1e-2);
            largest = std::max(largest, plain.at(0, bucket).regret[a]);
        }
    EXPECT_GT(largest, 100.0);
}

TEST(BlueprintTrainer, CallsAndThreadsMakeNoDifference) {
    Trained once(6);
    once.trainer.run(9);
    Trained divided(6, 2);
    divided.trainer.run(4);
    divided.trainer.run(5);
    EXPECT_EQ(once.numbers(), divided.numbers());
    Trained other(7);
    other.trainer.run(9);
    EXPECT_NE(once.numbers(), other.numbers());
}

TEST(BlueprintTrainer, StopsBetweenStepsAndGoesOn) {
    Trained whole(6);
    whole.trainer.run(5);
    Trained cut(6);
    uint64_t last = 0;
    Work work;
    work.progress = [&](uint64_t done, uint64_t total) {
        EXPECT_EQ(done, last + 1);
        EXPECT_EQ(total, 5U);
        last = done;
    };
    work.stop = [&] { return last == 2; };
    EXPECT_FALSE(cut.trainer.run(5, work).ok());
    EXPECT_EQ(cut.trainer.iteration(), 2U);
    cut.trainer.run(3);
    EXPECT_EQ(whole.numbers(), cut.numbers());
}

TEST(BlueprintTrainer, GoesOnFromACheckpoint) {
    const test::TempDirectory directory;
    const std::string path = directory.file("checkpoint");
    Trained whole(6);
    whole.trainer.run(9);
    Trained first(6);
    first.trainer.run(4);
    ASSERT_TRUE(first.trainer.writeCheckpoint(path, 33).ok());
    Trained then(6, 2);
    ASSERT_TRUE(then.trainer.readCheckpoint(path, 33).ok());
    EXPECT_EQ(then.trainer.iteration(), 4U);
    then.trainer.run(5);
    EXPECT_EQ(whole.numbers(), then.numbers());

    Trained other(7);
    const auto before = other.numbers();
    EXPECT_EQ(other.trainer.readCheckpoint(path, 33).error(),
              path + ": made with another configuration: seed is 6 there and 7 here");
    EXPECT_EQ(then.trainer.readCheckpoint(path, 34).error(),
              path + ": made with another configuration: card abstraction is 0000000000000021 "
                     "there and 0000000000000022 here");
    std::string bytes = test::contentsOf(path);
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
    std::ofstream(path, std::ios::binary) << bytes;
    Trained damaged(6);
    EXPECT_EQ(damaged.trainer.readCheckpoint(path, 33).error(),
              path + ": damaged, its checksum does not fit");
    EXPECT_EQ(damaged.numbers(), before);
    EXPECT_EQ(damaged.trainer.iteration(), 0U);
}

TEST(BlueprintTrainer, AverageRegretFalls) {
    Trained trained(6);
    const auto regret = [&] { return std::get<AverageRegret>(trained.trainer.measure()).chips; };
    EXPECT_EQ(regret(), 0);
    trained.trainer.run(10);
    const double early = regret();
    trained.trainer.run(190);
    EXPECT_LT(regret(), early / 2);
    EXPECT_GT(regret(), 0);
}

TEST(BlueprintTrainer, RefusesGamesThatDoNotFit) {
    const auto refused = [](const std::string& from, const std::string& to) {
        std::string text = trainedRules;
        text.replace(text.find(from), from.size(), to);
        const Status fits = BlueprintTrainer::fits(*test::parseGame(text));
        return fits ? std::string() : fits.error();
    };
    EXPECT_EQ(refused("limit", "limit"), "");
    EXPECT_EQ(refused("limit", "nolimit\nstack = 500 500"),
              "a blueprint is for limit games so far");
    EXPECT_EQ(refused("numHoleCards = 2", "numHoleCards = 1"),
              "a blueprint is for games with two hole cards");
    EXPECT_EQ(refused("limit", "limit\nstack = 500 400"), "a blueprint is for stacks of one size");
    std::string three = trainedRules;
    three.replace(three.find("numPlayers = 2"), 14, "numPlayers = 3");
    three.replace(three.find("blind = 10 5"), 12, "blind = 10 5 0");
    EXPECT_EQ(BlueprintTrainer::fits(*test::parseGame(three)).error(),
              "a blueprint is for two players, and the game has 3");
}

} // namespace
} // namespace tamarin
