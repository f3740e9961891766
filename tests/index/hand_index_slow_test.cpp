// The hand index over everything: every flop, turn and river index, and a million hands of five
// structures against the slow form.
#include "index/hand_index.h"
#include "index/random_hand.h"
#include "index/slow_index.h"

#include <algorithm>
#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

using Structure = std::vector<uint8_t>;

// How many hands the renamings of the suits make of this one: 24, divided by the number of ways to
// order the suits that hold the same.
uint64_t classSize(const OwnedIndexer& owned, const uint8_t cards[]) {
    std::array<uint64_t, 4> suits{}; // two rounds, 16 bits each
    for (size_t r = 0, at = 0; r < owned.cardsPerRound.size(); ++r)
        for (unsigned i = 0; i < owned.cardsPerRound[r]; ++i, ++at)
            suits[cards[at] % 4U] |= uint64_t{1} << (r * 16 + cards[at] / 4U);
    std::sort(suits.begin(), suits.end());
    uint64_t renamings = 24;
    for (unsigned s = 1, alike = 1; s < 4; ++s) {
        alike = suits[s] == suits[s - 1] ? alike + 1 : 1;
        renamings /= alike;
    }
    return renamings;
}

// Unindexing is inverse to indexing everywhere, so distinct indices are distinct classes of hands;
// and the classes together hold every hand there is, so that none is missing.
void checkEveryIndex(const Structure& structure) {
    const OwnedIndexer owned(structure);
    std::array<uint8_t, 7> cards{};
    uint64_t wrong = 0;
    uint64_t hands = 0;
    for (hand_index_t index = 0; index < owned.size(); ++index) {
        wrong += !hand_unindex(&owned.indexer, 1, index, cards.data()) ||
                 hand_index_last(&owned.indexer, cards.data()) != index;
        hands += classSize(owned, cards.data());
    }
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(hands, countHands(structure));
}

void checkMillion(const Structure& structure) {
    const OwnedIndexer owned(structure);
    const SlowIndexer slow(structure);
    RandomHands random(owned.cards(), 20);
    uint64_t wrong = 0;
    for (int i = 0; i < 1000000; ++i) {
        const uint8_t* cards = random.next();
        wrong += hand_index_last(&owned.indexer, cards) != slow.index(cards);
    }
    EXPECT_EQ(wrong, 0U);
}

} // namespace

TEST(HandIndexSlow, EveryFlopIndex) {
    checkEveryIndex({2, 3});
}
TEST(HandIndexSlow, EveryTurnIndex) {
    checkEveryIndex({2, 4});
}
TEST(HandIndexSlow, EveryRiverIndex) {
    checkEveryIndex({2, 5});
}

TEST(HandIndexSlow, AMillionFlopsAgainstTheSlowForm) {
    checkMillion({2, 3});
}
TEST(HandIndexSlow, AMillionTurnsAgainstTheSlowForm) {
    checkMillion({2, 4});
}
TEST(HandIndexSlow, AMillionRiversAgainstTheSlowForm) {
    checkMillion({2, 5});
}
TEST(HandIndexSlow, AMillionHandsOfFourRoundsAgainstTheSlowForm) {
    checkMillion({2, 3, 1, 1});
}
TEST(HandIndexSlow, AMillionHandsOfTwoFoursAgainstTheSlowForm) {
    checkMillion({4, 4});
}

} // namespace tamarin::test
