#include "blueprint/blueprint_play.h"

#include "abstraction/sparse_tables.h"
#include "blueprint/short_game.h"
#include "clustering/sparse_abstraction.h"

#include <gtest/gtest.h>

namespace tamarin {
namespace {

class BlueprintPlayTest : public test::PlayingDirectory {
protected:
    // Over an abstraction whose first hands have buckets other than 0.
    void write() {
        test::writeSparseAbstraction("sparse");
        const auto description = readDescription("lookup/sparse/abstraction");
        ASSERT_TRUE(description.ok());
        SplitMix random(8);
        for (FloatRow& row : small.sets.allSums())
            for (size_t lane = 0; lane < lanesInBlock; ++lane)
                row.lanes[lane] = static_cast<float>(random.below(1000));
        const BlueprintOrigin origin{hashOfGame(*small.game),
                                     "sparse",
                                     hashOfBuckets(*description),
                                     {test::sparseCounts.begin(), test::sparseCounts.end()},
                                     3,
                                     9};
        ASSERT_TRUE(writeBlueprint("blueprint", small.sets, origin).ok());
    }
    std::string error() {
        const auto play = BlueprintPlay::open("blueprint", ".", *small.game, small.tree);
        return play ? "" : play.error();
    }

    test::ShortTraining small{test::shortGame(4, 13, "1 1 1 1", "10 10 20 20", "0 3 1 1"),
                              {test::sparseCounts.begin(), test::sparseCounts.end()}};
};

TEST_F(BlueprintPlayTest, HandsHaveTheBucketsOfTheAbstraction) {
    write();
    auto opened = BlueprintPlay::open("blueprint", ".", *small.game, small.tree);
    ASSERT_TRUE(opened.ok()) << opened.error();
    const BlueprintPlay play = std::move(*opened); // it may be moved
    EXPECT_EQ(play.origin().steps, 9U);
    const auto first = test::sparseFirstBuckets();
    for (int round = 0; round < holdemRounds; ++round) {
        const auto& buckets = first[static_cast<size_t>(round)];
        const RoundIndexer indexer(round);
        for (int seat = 0; seat < 2; ++seat)
            EXPECT_EQ(play.numClasses(seat, round), test::sparseCounts[static_cast<size_t>(round)]);
        for (size_t hand = 0; hand < buckets.size() + (round == 0 ? 0 : 3); ++hand) {
            std::array<uint8_t, 7> cards{};
            ASSERT_TRUE(hand_unindex(indexer.get(), lastIndexRound(round), hand, cards.data()));
            const auto count = 2 + static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]);
            EXPECT_EQ(play.classOf(1, round, std::span(cards).first(count)),
                      hand < buckets.size() ? buckets[hand] : 0);
        }
    }
    for (size_t n = 0; n < small.tree.nodes().size(); ++n) {
        const auto node = static_cast<int32_t>(n);
        const size_t bucket = n % test::sparseCounts[small.tree.nodes()[n].round];
        for (size_t a = 0; a < numAbstractedActions; ++a)
            EXPECT_NEAR(play.shares(node, bucket)[a], small.sets.average(node, bucket)[a],
                        1.0 / 255);
    }
}

TEST_F(BlueprintPlayTest, MissingAndOtherAbstractionsAreRefused) {
    write();
    EXPECT_EQ(error(), "");
    // Another bucket for the first hand of the flop, with the checksum that it needs.
    auto description = readDescription("lookup/sparse/abstraction");
    ASSERT_TRUE(description.ok());
    test::writeSparse("lookup/sparse/flop", roundSizes[1], std::vector<uint16_t>{5});
    EXPECT_NE(error().find("needs its card abstraction: lookup"), std::string::npos) << error();
    const auto file = MappedFile::open("lookup/sparse/flop");
    description->rounds[1].checksum = bucketChecksum(file->as<uint16_t>());
    ASSERT_TRUE(writeDescription("lookup/sparse/abstraction", *description).ok());
    EXPECT_EQ(error(), "blueprint: trained over other buckets than those that the card "
                       "abstraction sparse has now");
    std::filesystem::remove_all("lookup/sparse");
    EXPECT_NE(error().find("needs its card abstraction"), std::string::npos);
}

} // namespace
} // namespace tamarin
