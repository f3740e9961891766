#include "response/bucket_play.h"

#include "game/games.h"
#include "solver/hashed_buckets.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(BucketPlay, IsTheAverageStrategyOfTheSets) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    HoldemSets sets(*game);
    const HashedBuckets buckets;
    const BucketPlay play(sets, buckets);
    // Fold, call and raise may all be done at the first node; nothing is owed at the second.
    const auto& nodes = sets.tree().nodes();
    ASSERT_EQ(nodes[1].child[actionFold], CompiledTree::noChild);
    const auto numbers = [&](size_t node, uint64_t bucket) -> SetNumbers& {
        return sets.numbers()[sets.layout().index(nodes[node], bucket)];
    };
    numbers(0, 4) = {{}, {1, 2, 5}};
    numbers(1, 4) = {{}, {0, 3, 1}};
    EXPECT_EQ(play.shares(0, 4), (ActionShares{0.125, 0.25, 0.625}));
    EXPECT_EQ(play.shares(1, 4), (ActionShares{0, 0.75, 0.25}));
    EXPECT_EQ(play.shares(0, 5), (ActionShares{1.0 / 3, 1.0 / 3, 1.0 / 3})); // nothing gathered
    EXPECT_EQ(play.shares(1, 5), (ActionShares{0, 0.5, 0.5}));
}

TEST(BucketPlay, KnowsHandsByTheBucketsOfTwo) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    HoldemSets sets(*game);
    const HashedBuckets buckets;
    const BucketPlay play(sets, buckets);
    const std::array<uint8_t, 5> cards{3, 18, 22, 40, 51};
    for (int seat = 0; seat < 2; ++seat) {
        EXPECT_EQ(play.numClasses(seat, 1), 10U);
        EXPECT_EQ(play.classOf(seat, 1, cards), buckets.bucket(2, 1, seat, cards.data()));
    }
}

} // namespace
} // namespace tamarin::test
