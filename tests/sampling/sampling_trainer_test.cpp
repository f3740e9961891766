#include "sampling/sampling_trainer.h"

#include "sampling/small_training.h"
#include "support/temp_directory.h"
#include "support/word_checksum.h"

#include <fstream>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

// Full deck, four rounds: enough nodes for two threads.
const char* const deepNoLimit = R"(GAMEDEF
nolimit
numPlayers = 2
numRounds = 4
stack = 400 400
blind = 2 1
firstPlayer = 2 1 1 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

class FewBuckets : public SeatBuckets {
public:
    uint32_t numBuckets(int round) const override { return static_cast<uint32_t>(7 + round); }
    uint16_t bucket(int round, std::span<const uint8_t> hole,
                    std::span<const uint8_t> board) const override {
        uint64_t sum = mixBits(hole[0] + 1U) + mixBits(hole[1] + 1U);
        for (const uint8_t card : board)
            sum += mixBits(card + 100U);
        return static_cast<uint16_t>(mixBits(sum) % numBuckets(round));
    }
};

struct Deep {
    explicit Deep(SamplingOptions options)
        : game(test::parseGame(deepNoLimit)),
          tree(*game, *BettingMenu::parse("bets = 1 A", "menu")),
          trainer(*game, tree, buckets, options) {}
    std::vector<int32_t> numbers() const {
        const auto regrets = trainer.sets().allRegrets();
        const auto sums = trainer.sets().allSums();
        std::vector<int32_t> all(regrets.begin(), regrets.end());
        all.insert(all.end(), sums.begin(), sums.end());
        return all;
    }

    GamePtr game;
    FewBuckets buckets;
    MenuTree tree;
    SamplingTrainer trainer;
};

// By a measure that knows nothing of how training goes.
void expectsToFall(const std::string& game, const std::string& menu, double uniform, double late,
                   bool prune = false) {
    test::SmallTraining small(game, menu, {3, 1, 16, prune});
    EXPECT_GT(small.nashConv(), uniform);
    small.trainer.run(4000);
    const double early = small.nashConv();
    EXPECT_LT(early, uniform / 3);
    small.trainer.run(300'000);
    EXPECT_LT(small.nashConv(), late);
    EXPECT_LT(small.nashConv(), early / 2);
}

TEST(SamplingTrainer, BestResponsesWinLessAndLess) {
    expectsToFall(test::twoPlayerKuhn, "", 0.9, 0.01);
    expectsToFall(test::threePlayerKuhn, "", 2.0, 0.02);
    expectsToFall(test::leduc, "", 4.7, 0.08);
    expectsToFall(test::smallNoLimit, "bets = 1 A", 3.9, 0.06);
    expectsToFall(test::smallNoLimit, "bets = 1 A", 3.9, 0.06, true);
}

TEST(SamplingTrainer, CallsAndThreadsMakeNoDifference) {
    Deep once({6, 1, 8, false});
    once.trainer.run(400);
    EXPECT_EQ(once.trainer.iteration(), 400U);
    Deep divided({6, 3, 8, false});
    divided.trainer.run(81); // whole batches
    EXPECT_EQ(divided.trainer.iteration(), 88U);
    divided.trainer.run(312);
    EXPECT_TRUE(once.numbers() == divided.numbers());
    Deep other({7, 1, 8, false});
    other.trainer.run(400);
    EXPECT_FALSE(once.numbers() == other.numbers());
}

// With any compiler on any processor: strategies and checkpoints hang on these bits.
TEST(SamplingTrainer, NumbersAreTheSameEverywhere) {
    Deep deep({6, 2, 8, true});
    deep.trainer.run(8000);
    const auto numbers = deep.numbers();
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(numbers)));
    EXPECT_EQ(checksum.value(), 10291351740761071723U);
}

TEST(SamplingTrainer, LongBadActionsArePruned) {
    test::SmallTraining all(test::smallNoLimit, "bets = 1 A", {3, 1, 16, false});
    test::SmallTraining pruned(test::smallNoLimit, "bets = 1 A", {3, 1, 16, true});
    const auto same = [&] {
        return std::ranges::equal(all.trainer.sets().allRegrets(),
                                  pruned.trainer.sets().allRegrets());
    };
    all.trainer.run(160);
    pruned.trainer.run(160);
    EXPECT_TRUE(same()); // nothing is that bad yet
    all.trainer.run(20'000);
    pruned.trainer.run(20'000);
    EXPECT_FALSE(same());
}

TEST(SamplingTrainer, LaterIterationsWeighMore) {
    EXPECT_EQ(SamplingTrainer::weightOf(0), 0);
    EXPECT_EQ(SamplingTrainer::weightOf(7), 7);
    EXPECT_DOUBLE_EQ(SamplingTrainer::weightOf(8), 8.0 * 8 / 24); // middles at 4 and 12
    EXPECT_DOUBLE_EQ(SamplingTrainer::weightOf(16), (8.0 * 8 / 24 + 8) * 24 / 40);
    // Linear weights, whose sum is half as large as the last one times the number.
    for (const uint64_t batches : {1000U, 20'000U, 3'000'000U})
        EXPECT_NEAR(SamplingTrainer::weightOf(batches) / static_cast<double>(batches), 0.5, 0.05);
}

// What training leaves is what its weights say: sums of a seat that always has the choice.
TEST(SamplingTrainer, SumsHaveTheWeights) {
    test::SmallTraining small(test::twoPlayerKuhn, "", {5, 1, 4, false});
    small.trainer.run(4000);
    const MenuTree::Node& root = small.tree.node(0);
    const MenuSets& sets = small.trainer.sets();
    double sum = 0;
    for (size_t bucket = 0; bucket < 4; ++bucket)
        for (size_t e = 0; e < root.numEdges; ++e)
            sum += sets.sums()[sets.placeOf(root, bucket) + e];
    // One walk of each deal sees the root as another's.
    const double wanted = SamplingTrainer::weightOf(1000) * 4 * ExternalWalk::wholeStrategy;
    EXPECT_NEAR(sum / wanted, 1, 0.01);
}

TEST(SamplingTrainer, GoesOnFromACheckpoint) {
    const test::TempDirectory directory;
    const std::string path = directory.file("checkpoint");
    Deep whole({6, 1, 8, false});
    whole.trainer.run(200);
    Deep first({6, 1, 8, false});
    first.trainer.run(96);
    ASSERT_TRUE(first.trainer.writeCheckpoint(path, 33, 44).ok());
    Deep then({6, 2, 8, false});
    ASSERT_TRUE(then.trainer.readCheckpoint(path, 33, 44).ok());
    EXPECT_EQ(then.trainer.iteration(), 96U);
    then.trainer.run(104);
    EXPECT_TRUE(whole.numbers() == then.numbers());

    Deep other({7, 1, 8, false});
    EXPECT_EQ(other.trainer.readCheckpoint(path, 33, 44).error(),
              path + ": made with another configuration: seed is 6 there and 7 here");
    EXPECT_EQ(then.trainer.readCheckpoint(path, 34, 44).error(),
              path + ": made with another configuration: card abstraction is 0000000000000021 "
                     "there and 0000000000000022 here");
    EXPECT_EQ(then.trainer.readCheckpoint(path, 33, 45).error(),
              path + ": made with another configuration: menu is 000000000000002c there and "
                     "000000000000002d here");
    Deep longer({6, 1, 9, false});
    EXPECT_EQ(longer.trainer.readCheckpoint(path, 33, 44).error(),
              path + ": made with another configuration: batch is 8 there and 9 here");
    std::string bytes = test::contentsOf(path);
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
    std::ofstream(path, std::ios::binary) << bytes;
    Deep damaged({6, 1, 8, false});
    const auto before = damaged.numbers();
    EXPECT_EQ(damaged.trainer.readCheckpoint(path, 33, 44).error(),
              path + ": damaged, its checksum does not fit");
    EXPECT_TRUE(damaged.numbers() == before);
    EXPECT_EQ(damaged.trainer.iteration(), 0U);
}

TEST(SamplingTrainer, AverageRegretFalls) {
    Deep deep({6, 1, 8, false});
    const auto regret = [&] { return std::get<AverageRegret>(deep.trainer.measure()).chips; };
    EXPECT_EQ(regret(), 0);
    deep.trainer.run(160);
    const double early = regret();
    deep.trainer.run(8000);
    EXPECT_LT(regret(), early / 2);
    EXPECT_GT(regret(), 0);
}

TEST(SamplingTrainer, RefusesManySeats) {
    const std::string text = "GAMEDEF\nlimit\nnumPlayers = 5\nnumRounds = 1\n"
                             "stack = 9 9 9 9 9\nblind = 1 1 1 1 1\n"
                             "raiseSize = 1\nnumSuits = 4\nnumRanks = 13\nnumHoleCards = 1\n"
                             "numBoardCards = 0\nEND GAMEDEF\n";
    EXPECT_EQ(SamplingTrainer::fits(*test::parseGame(text)).error(),
              "sampled training is for up to 4 players, and the game has 5");
    EXPECT_TRUE(SamplingTrainer::fits(*test::parseGame(test::threePlayerKuhn)).ok());
}

} // namespace
} // namespace tamarin
