#include "index/hand_indexer.h"

#include <array>
#include <utility>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

using Structure = std::vector<uint8_t>;

} // namespace

TEST(HandIndexer, IndexesEveryRoundOfAHandAndBack) {
    const auto indexer = HandIndexer::make(Structure{2, 3, 1, 1});
    ASSERT_TRUE(indexer);
    EXPECT_EQ(indexer->rounds(), 4U);
    EXPECT_EQ(indexer->size(2), 55190538U);
    const std::array<uint8_t, 7> cards = {51, 3, 17, 40, 22, 9, 30};
    hand_index_t all[4];
    hand_index_all(indexer->get(), cards.data(), all);
    const unsigned through[] = {2, 5, 6, 7};
    for (unsigned round = 0; round < 4; ++round) {
        EXPECT_EQ(indexer->cardsThrough(round), through[round]);
        EXPECT_EQ(indexer->index(round, cards.data()), all[round]);
        const auto back = indexer->unindex(round, all[round]);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->size(), through[round]);
        EXPECT_EQ(indexer->index(round, back->data()), all[round]);
        EXPECT_FALSE(indexer->unindex(round, indexer->size(round)));
    }
    EXPECT_FALSE(indexer->unindex(4, 0));
}

TEST(HandIndexer, MovesWithItsTables) {
    auto first = HandIndexer::make(Structure{2});
    ASSERT_TRUE(first);
    const HandIndexer second = std::move(*first);
    EXPECT_EQ(second.size(0), 169U);
    EXPECT_EQ(first->rounds(), 0U);
}

TEST(HandIndexer, RefusesByValue) {
    EXPECT_FALSE(HandIndexer::make(Structure{}));
    EXPECT_FALSE(HandIndexer::make(Structure{1, 1, 1, 1, 1}));
    EXPECT_FALSE(HandIndexer::make(Structure{50, 3}));
    EXPECT_FALSE(HandIndexer::make(Structure{17, 17}));         // more than 64 bits
    EXPECT_FALSE(HandIndexer::make(Structure{3, 3, 3, 3}));     // ends hand_indexer_init
    EXPECT_FALSE(HandIndexer::make(Structure{13, 13, 13, 13})); // likewise
    EXPECT_TRUE(HandIndexer::make(Structure{52}));
}

// The question is answered as hand_indexer_init answers it by ending or not.
TEST(HandIndexerDeathTest, OutgrowsSuitsForetellsTheAssertion) {
    for (const Structure& structure : {Structure{2, 3, 1, 1},
                                       {1, 1, 2, 2},
                                       {10, 10},
                                       {4, 4, 1},
                                       {1, 2, 2, 2},
                                       {3, 3, 3},
                                       {2, 2, 2, 3},
                                       {5, 5, 5}}) {
        const auto build = [&] {
            hand_indexer_t indexer;
            const bool built = hand_indexer_init(static_cast<unsigned>(structure.size()),
                                                 structure.data(), &indexer);
            hand_indexer_free(&indexer);
            return built;
        };
        if (outgrowsSuits(structure))
            EXPECT_DEATH(build(), "size");
        else
            EXPECT_TRUE(build());
    }
}

} // namespace tamarin::test
