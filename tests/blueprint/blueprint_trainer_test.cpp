#include "blueprint/blueprint_trainer.h"

#include "blueprint/plain_step.h"
#include "response/plain_response.h"
#include "support/temp_directory.h"
#include "support/word_checksum.h"

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

// With any compiler on any processor: strategies and checkpoints hang on these bits.
TEST(BlueprintTrainer, NumbersAreTheSameEverywhere) {
    Trained trained(6);
    trained.trainer.run(20);
    const auto numbers = trained.numbers();
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(numbers)));
    EXPECT_EQ(checksum.value(), 17972171107419260944U);
}

// A bucket for every hand up to a renaming of the suits, but for the few that share one by chance.
class OwnBuckets : public HandBuckets {
public:
    static constexpr uint32_t count = 5000;

    uint32_t numBuckets(int) const override { return count; }
    void fill(int, std::span<const uint8_t> board, std::span<const HoleCards> holdings,
              uint16_t* out) const override {
        for (size_t h = 0; h < holdings.size(); ++h)
            out[h] = bucket(board, holdings[h]);
    }
    static uint16_t bucket(std::span<const uint8_t> board, HoleCards hole) {
        uint64_t least = UINT64_MAX;
        SuitRenaming suits{0, 1, 2, 3};
        do {
            const uint64_t one = renamed(hole[0], suits);
            const uint64_t other = renamed(hole[1], suits);
            uint64_t number = std::min(one, other) * 64 + std::max(one, other);
            for (const uint8_t card : board)
                number = number * 64 + renamed(card, suits) + 1;
            least = std::min(least, number);
        } while (std::ranges::next_permutation(suits).found);
        return static_cast<uint16_t>(mixBits(least + 1) % count);
    }
};

// The average strategy of the sets, in the terms of a measure.
class TrainedPlay : public HandStrategy {
public:
    explicit TrainedPlay(const BlueprintSets& sets) : sets_(sets) {}
    size_t numClasses(int, int round) const override { return sets_.numBuckets(round); }
    uint16_t classOf(int, int, std::span<const uint8_t> cards) const override {
        return OwnBuckets::bucket(cards.subspan(2), {cards[0], cards[1]});
    }
    ActionShares shares(int32_t node, size_t handClass) const override {
        return sets_.average(node, handClass);
    }

private:
    const BlueprintSets& sets_;
};

// Where every hand has a bucket of its own, what best responses win together falls towards nothing,
// by a measure that knows nothing of how training goes.
TEST(BlueprintTrainer, BestResponsesWinLessAndLess) {
    test::Measured measured(test::shortGame(3, 3, "2 2", "10 20", "0 1"));
    const OwnBuckets buckets;
    BlueprintTrainer trainer(*measured.game, measured.tree, buckets, 3, 1);
    measured.strategy = std::make_unique<TrainedPlay>(trainer.sets());
    const auto gains = [&] {
        return test::PlainResponse(measured, 0, true).mean() +
               test::PlainResponse(measured, 1, true).mean();
    };
    const double uniform = gains();
    trainer.run(300);
    const double early = gains();
    trainer.run(9700);
    const double late = gains();
    EXPECT_GT(uniform, 10.0); // chips
    EXPECT_LT(early, uniform / 10);
    EXPECT_LT(late, early / 4);
    EXPECT_LT(late, 0.2);
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
    EXPECT_EQ(refused("limit", "limit\nstack = 500 500"),
              "a blueprint is for stacks that never run out");
    std::string three = trainedRules;
    three.replace(three.find("numPlayers = 2"), 14, "numPlayers = 3");
    three.replace(three.find("blind = 10 5"), 12, "blind = 10 5 0");
    EXPECT_EQ(BlueprintTrainer::fits(*test::parseGame(three)).error(),
              "a blueprint is for two players, and the game has 3");
}

} // namespace
} // namespace tamarin
