#include "blueprint/blueprint_sets.h"

#include "blueprint/short_game.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

TEST(BlueprintSets, EveryNumberHasAPlaceOfItsOwn) {
    test::ShortTraining training(test::shortGame(4, 5, "5 2 1", "10 20 20", "0 3 1"), {3, 5, 4});
    float next = 1;
    for (FloatRow& row : training.sets.allRegrets())
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            row.lanes[lane] = next++;
    for (FloatRow& row : training.sets.allSums())
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            row.lanes[lane] = -next++;
    std::set<float> seen;
    size_t asked = 0;
    size_t sets = 0;
    for (size_t n = 0; n < training.tree.nodes().size(); ++n) {
        const auto& node = training.tree.nodes()[n];
        for (size_t bucket = 0; bucket < training.sets.numBuckets(node.round); ++bucket) {
            ++sets;
            for (size_t a = 0; a < numAbstractedActions; ++a)
                if (node.child[a] != CompiledTree::noChild) {
                    seen.insert(training.sets.regret(static_cast<int32_t>(n), bucket, a));
                    seen.insert(training.sets.sum(static_cast<int32_t>(n), bucket, a));
                    asked += 2;
                }
        }
    }
    EXPECT_EQ(seen.size(), asked);
    EXPECT_EQ(training.sets.numSets(), sets);
    EXPECT_EQ(training.sets.memory(), training.sets.allSums().size_bytes() * 2);
}

TEST(BlueprintSets, RowsAreThoseOfTheNode) {
    test::ShortTraining training(test::shortGame(4, 5, "2 2", "10 20", "0 3"), {3, 5});
    const int32_t node = training.tree.nodes()[0].child[actionRaise];
    const auto& place = training.sets.lines().placeOf(node);
    FloatRow* const rows = training.sets.regrets(place.block, place.node);
    rows[2 * 3 + 1].lanes[place.lane] = 7; // bucket 2, call
    rows[1 * 3 + 2].lanes[place.lane] = 8; // bucket 1, raise
    EXPECT_EQ(training.sets.regret(node, 2, actionCall), 7);
    EXPECT_EQ(training.sets.regret(node, 1, actionRaise), 8);
    EXPECT_EQ(training.sets.regret(node, 2, actionRaise), 0);
}

TEST(BlueprintSets, AveragesAreSharesOfTheSums) {
    test::ShortTraining training(test::shortGame(4, 5, "1 1", "10 20", "0 3"), {3, 5});
    const auto& nodes = training.tree.nodes();
    const int32_t check = nodes[0].child[actionCall]; // nothing is owed: no fold
    ASSERT_EQ(nodes[static_cast<size_t>(check)].child[actionFold], CompiledTree::noChild);
    const auto& place = training.sets.lines().placeOf(check);
    FloatRow* const rows = training.sets.sums(place.block, place.node);
    rows[2 * 1].lanes[place.lane] = 3;
    rows[2 * 1 + 1].lanes[place.lane] = 1;
    EXPECT_EQ(training.sets.average(check, 1), (ActionShares{0, 0.75, 0.25}));
    EXPECT_EQ(training.sets.average(check, 2), (ActionShares{0, 0.5, 0.5}));
}

} // namespace
} // namespace tamarin
