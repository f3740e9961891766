#include "sampling/menu_sets.h"

#include "game/games.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

const std::vector<uint32_t> counts{3, 5};

TEST(MenuSets, EveryNumberHasOnePlace) {
    for (const char* text : {test::leduc, test::threePlayerKuhn}) {
        const GamePtr game = test::parseGame(text);
        const MenuTree tree(*game);
        const std::span<const uint32_t> buckets(counts.data(), game->numRounds);
        const MenuSets sets(tree, game->numPlayers, buckets);
        std::set<size_t> places;
        uint64_t pairs = 0;
        for (const MenuTree::Node& node : tree.nodes())
            for (size_t bucket = 0; bucket < buckets[node.round]; ++bucket) {
                ++pairs;
                for (size_t e = 0; e < node.numEdges; ++e)
                    EXPECT_TRUE(places.insert(sets.placeOf(node, bucket) + e).second);
            }
        EXPECT_EQ(places.size(), sets.numNumbers());
        EXPECT_EQ(*places.rbegin(), sets.numNumbers() - 1);
        EXPECT_EQ(sets.numSets(), pairs);
        EXPECT_EQ(sets.allRegrets().size() % 2, 0U);
        EXPECT_EQ(sets.memory(), 8 * sets.allSums().size());
        EXPECT_EQ(MenuSets::memoryFor(tree, buckets), sets.memory());
    }
}

TEST(MenuSets, AverageIsOfSumsThenRegretsThenUniform) {
    const GamePtr game = test::parseGame(test::leduc);
    const MenuTree tree(*game);
    MenuSets sets(tree, 2, counts);
    const auto average = [&] {
        std::vector<double> shares(3);
        sets.average(7, 3, shares.data());
        return shares;
    };
    EXPECT_EQ(average(), (std::vector<double>{1 / 3.0, 1 / 3.0, 1 / 3.0}));
    sets.regrets()[8] = 30;
    sets.regrets()[9] = 10;
    sets.regrets()[7] = -90;
    EXPECT_EQ(average(), (std::vector<double>{0, 0.75, 0.25}));
    sets.sums()[7] = 2;
    sets.sums()[9] = 8;
    EXPECT_EQ(average(), (std::vector<double>{0.2, 0, 0.8}));
}

} // namespace
} // namespace tamarin
