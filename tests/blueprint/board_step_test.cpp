#include "blueprint/board_step.h"

#include "blueprint/plain_step.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

// The largest number of either kind, and by how much numbers differ at most.
struct Differences {
    double regret = 0;
    double sum = 0;
    double largestRegret = 0;
    double largestSum = 0;
};

Differences compare(const test::ShortTraining& training, const test::PlainTraining& plain) {
    Differences found;
    for (size_t n = 0; n < training.tree.nodes().size(); ++n) {
        const auto& node = training.tree.nodes()[n];
        const auto number = static_cast<int32_t>(n);
        for (size_t bucket = 0; bucket < training.buckets.numBuckets(node.round); ++bucket)
            for (size_t a = 0; a < numAbstractedActions; ++a) {
                if (node.child[a] == CompiledTree::noChild)
                    continue;
                const auto& wanted = plain.at(number, bucket);
                const double regret = training.sets.regret(number, bucket, a);
                const double sum = training.sets.sum(number, bucket, a);
                found.regret = std::max(found.regret, std::abs(regret - wanted.regret[a]));
                found.sum = std::max(found.sum, std::abs(sum - wanted.sum[a]));
                found.largestRegret = std::max(found.largestRegret, std::abs(wanted.regret[a]));
                found.largestSum = std::max(found.largestSum, std::abs(wanted.sum[a]));
            }
    }
    return found;
}

Differences trainBoth(const std::string& game, const std::vector<uint32_t>& buckets, int steps,
                      int threads) {
    test::ShortTraining training(game, buckets);
    test::PlainTraining plain(training);
    BoardStep step(training.sets, training.dealer.numHands(), threads);
    for (int t = 1; t <= steps; ++t) {
        const auto board = training.dealer.draw(5, static_cast<uint64_t>(t));
        step.run(training.dealer.prepare(board), static_cast<float>(t));
        plain.step(board, t);
    }
    return compare(training, plain);
}

// Floats have seven digits. From the second step on, rounding grows where the positive regrets of a
// set are nearly 0, since their shares are then taken of numbers that are mostly rounding.
void expectAlike(const Differences& found, double regrets, double sums) {
    EXPECT_GT(found.largestRegret, 1.0);
    EXPECT_GT(found.largestSum, 5.0);
    EXPECT_LT(found.regret, regrets * found.largestRegret);
    EXPECT_LT(found.sum, sums * found.largestSum);
}

void expectAlike(const std::string& game, const std::vector<uint32_t>& buckets, int threads) {
    expectAlike(trainBoth(game, buckets, 1, threads), 5e-6, 1e-6);
    expectAlike(trainBoth(game, buckets, 2, threads), 1e-5, 1e-5);
    expectAlike(trainBoth(game, buckets, 5, threads), 3e-5, 1e-4);
}

TEST(BoardStep, FourRoundsAsPairByPair) {
    // Other raises, sizes and buckets in every round.
    expectAlike(test::shortGame(3, 4, "2 1 2 1", "10 10 20 30", "0 2 1 1"), {5, 7, 6, 9}, 2);
}

TEST(BoardStep, TwoRoundsWithMoreLinesThanLanes) {
    // Six raises make thirteen lines of the first round: two blocks behind it.
    expectAlike(test::shortGame(4, 4, "6 2", "10 20", "0 3"), {4, 11}, 3);
}

TEST(BoardStep, OneRoundAlone) {
    expectAlike(test::shortGame(4, 6, "4", "10", "0"), {8}, 1);
}

TEST(BoardStep, OneLineKeepsToLanesOfItsOwn) {
    // No raise, so the first round ends in one way and the next in two.
    expectAlike(test::shortGame(4, 4, "0 1 1", "10 20 20", "0 2 1"), {6, 5, 7}, 2);
}

TEST(BoardStep, FirstNodeAsWorkedOutByHand) {
    test::ShortTraining training(test::shortGame(2, 3, "0 0", "10 10", "0 1"), {1, 1});
    BoardStep step(training.sets, training.dealer.numHands(), 1);
    // Five cards are left of six: ten hands, each meets three. Seat 1 has paid 5 of 10 and may fold
    // or call; both then check. Its single bucket holds all hands, so showdowns cancel out: a call
    // wins nothing, a fold loses 5 to every pair of hands, and half of the time it folded.
    for (const uint8_t card : training.deck.cards()) {
        for (FloatRow& row : training.sets.allRegrets())
            row = {};
        step.run(training.dealer.prepare(std::span(&card, 1)), 2.0F);
        EXPECT_FLOAT_EQ(training.sets.regret(0, 0, 0), 2 * -5.0F * 3 / 2);
        EXPECT_FLOAT_EQ(training.sets.regret(0, 0, 1), 2 * 5.0F * 3 / 2);
    }
}

TEST(BoardStep, SameBytesWithAnyNumberOfThreads) {
    const std::string game = test::shortGame(4, 5, "3 2 2", "10 10 20", "0 3 1");
    std::vector<std::vector<float>> numbers;
    for (const int threads : {1, 2, 5}) {
        test::ShortTraining training(game, {9, 14, 8});
        BoardStep step(training.sets, training.dealer.numHands(), threads);
        for (uint64_t t = 1; t <= 6; ++t)
            step.run(training.dealer.prepare(training.dealer.draw(8, t)), static_cast<float>(t));
        auto& all = numbers.emplace_back();
        for (const auto rows : {training.sets.allRegrets(), training.sets.allSums()})
            for (const FloatRow& row : rows)
                for (size_t lane = 0; lane < lanesInBlock; ++lane)
                    all.push_back(row.lanes[lane]);
    }
    EXPECT_EQ(numbers[0], numbers[1]);
    EXPECT_EQ(numbers[0], numbers[2]);
}

// Ten hands. In the first round the opener folds or calls and the other checks, over two buckets;
// in the second both check, over three.
TEST(BoardStep, SaysWhatItTakes) {
    const test::ShortTraining training(test::shortGame(2, 3, "0 0", "10 10", "0 1"), {2, 3});
    const size_t hands = training.dealer.numHands();
    ASSERT_EQ(hands, 10U);
    constexpr uint64_t starts = 2 * 4 * 10;         // of two blocks
    constexpr uint64_t first = 4 * 3 * 2;           // three actions
    constexpr uint64_t thread = 4 * 2 * 3 + 4 * 10; // two actions, and what a sweep needs
    constexpr uint64_t row = lanesInBlock * sizeof(float);
    EXPECT_EQ(BoardStep::memory(training.sets, hands, 1), (starts + first + thread) * row);
    EXPECT_EQ(BoardStep::memory(training.sets, hands, 3), (starts + first + 3 * thread) * row);
}

} // namespace
} // namespace tamarin
