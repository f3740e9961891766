// One indexer, many threads: all read, none writes.
#include "index/hand_index.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(HandIndexThreads, ShareAnIndexer) {
    const uint8_t structure[] = {2, 5};
    hand_indexer_t indexer;
    ASSERT_TRUE(hand_indexer_init(2, structure, &indexer));
    constexpr unsigned threads = 4;
    std::vector<uint64_t> wrong(threads);
    std::vector<std::thread> team;
    for (unsigned t = 0; t < threads; ++t)
        team.emplace_back([&, t] {
            uint64_t mine = 0;
            uint8_t cards[7];
            for (hand_index_t index = t; index < 123156254; index += 1009)
                mine += !hand_unindex(&indexer, 1, index, cards) ||
                        hand_index_last(&indexer, cards) != index;
            wrong[t] = mine;
        });
    for (std::thread& thread : team)
        thread.join();
    EXPECT_EQ(wrong, std::vector<uint64_t>(threads));
    hand_indexer_free(&indexer);
}

} // namespace tamarin::test
