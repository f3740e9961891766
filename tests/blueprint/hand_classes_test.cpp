#include "blueprint/hand_classes.h"

#include "abstraction/sparse_tables.h"
#include "blueprint/sets_play.h"
#include "blueprint/short_game.h"
#include "clustering/sparse_abstraction.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class HandClassesTest : public PlayingDirectory {};

TEST_F(HandClassesTest, AreTheBucketsOfTheAbstraction) {
    writeSparseAbstraction("sparse");
    const auto abstraction = CardAbstraction::open(".", "sparse");
    ASSERT_TRUE(abstraction.ok());
    const HandClasses classes;
    const auto first = sparseFirstBuckets();
    for (int round = 0; round < holdemRounds; ++round) {
        const auto& buckets = first[static_cast<size_t>(round)];
        const RoundIndexer indexer(round);
        for (size_t hand = 0; hand < buckets.size(); ++hand) {
            std::array<uint8_t, 7> cards{};
            ASSERT_TRUE(hand_unindex(indexer.get(), lastIndexRound(round), hand, cards.data()));
            const auto count = 2 + static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]);
            EXPECT_EQ(classes.of(*abstraction, round, std::span(cards).first(count)),
                      buckets[hand]);
        }
    }
}

TEST_F(HandClassesTest, ATrainingIsAskedForItsAverages) {
    writeSparseAbstraction("sparse");
    const auto abstraction = CardAbstraction::open(".", "sparse");
    ASSERT_TRUE(abstraction.ok());
    ShortTraining small{shortGame(4, 13, "1 1 1 1", "10 10 20 20", "0 3 1 1"),
                        {sparseCounts.begin(), sparseCounts.end()}};
    SplitMix random(8);
    for (FloatRow& row : small.sets.allSums())
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            row.lanes[lane] = static_cast<float>(random.below(1000));
    const SetsPlay play(small.sets, *abstraction);
    const HandClasses classes;
    const std::array<uint8_t, 5> cards{3, 17, 44, 29, 8};
    EXPECT_EQ(play.classOf(1, 1, cards), classes.of(*abstraction, 1, cards));
    for (int round = 0; round < holdemRounds; ++round)
        EXPECT_EQ(play.numClasses(1, round), sparseCounts[static_cast<size_t>(round)]);
    for (size_t n = 0; n < small.tree.nodes().size(); ++n) {
        const auto node = static_cast<int32_t>(n);
        const size_t bucket = n % sparseCounts[small.tree.nodes()[n].round];
        EXPECT_EQ(play.shares(node, bucket), small.sets.average(node, bucket));
    }
}

} // namespace
} // namespace tamarin::test
