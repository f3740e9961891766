#include "clustering/bucket_summary.h"

#include "abstraction/round_indexers.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

constexpr size_t flopHands = roundSizes[1];

Work threads(int count) {
    Work work;
    work.threads = count;
    return work;
}

uint64_t mixed(size_t hand) {
    uint64_t mix = (hand + 1) * 0x9e3779b97f4a7c15U;
    mix ^= mix >> 32U;
    return mix;
}

// Bucket 3 is empty.
std::vector<uint16_t> flopBuckets() {
    std::vector<uint16_t> table(flopHands);
    for (size_t hand = 0; hand < table.size(); ++hand) {
        const uint64_t bucket = mixed(hand) % 6;
        table[hand] = static_cast<uint16_t>(bucket == 3 ? 2 : bucket);
    }
    return table;
}

std::vector<double> flopEquities(const std::vector<uint16_t>& table) {
    std::vector<double> equities(table.size());
    for (size_t hand = 0; hand < table.size(); ++hand)
        equities[hand] = table[hand] / 6.0 + static_cast<double>(mixed(hand) >> 50U) / 131072.0;
    return equities;
}

bool same(const BucketSummary& a, const BucketSummary& b) {
    return a.hands == b.hands && a.deckHands == b.deckHands && a.equity == b.equity &&
           a.square == b.square;
}

// Of the whole deck: hole cards of 4, 6 and 12 pairs of cards.
TEST(BucketSummaries, WeighStartingHandsAsTheDeckHoldsThem) {
    const RoundIndexer indexer(0);
    std::vector<uint16_t> table(169);
    std::vector<double> equities(169);
    for (size_t hand = 0; hand < table.size(); ++hand) {
        uint8_t cards[2];
        ASSERT_TRUE(hand_unindex(indexer.get(), 0, hand, cards));
        const bool pair = cards[0] / 4 == cards[1] / 4;
        const bool suited = cards[0] % 4 == cards[1] % 4;
        table[hand] = pair ? 2 : suited ? 0 : 1;
        equities[hand] = pair ? 0.75 : suited ? 0.5 : cards[0] < 4 || cards[1] < 4 ? 0.25 : 0.5;
    }
    const auto buckets = summariseBuckets(0, table, 4, equities, threads(2));
    ASSERT_TRUE(buckets.ok()) << buckets.error();
    ASSERT_EQ(buckets->size(), 4U);
    EXPECT_EQ((*buckets)[0].hands, 78U);
    EXPECT_EQ((*buckets)[0].deckHands, 312U);
    EXPECT_EQ((*buckets)[1].hands, 78U);
    EXPECT_EQ((*buckets)[1].deckHands, 936U);
    EXPECT_EQ((*buckets)[2].hands, 13U);
    EXPECT_EQ((*buckets)[2].deckHands, 78U);
    EXPECT_EQ((*buckets)[2].equity, 78U * 49152U);
    EXPECT_EQ((*buckets)[2].square, 78 * uint64_t{49152} * 49152);
    EXPECT_TRUE(same((*buckets)[3], BucketSummary{}));
    EXPECT_EQ((*buckets)[3].meanEquity(), 0);
    EXPECT_EQ((*buckets)[3].spread(), 0);
    EXPECT_EQ((*buckets)[0].spread(), 0);
    EXPECT_NEAR((*buckets)[1].meanEquity(), 0.5 - 0.25 * 12 / 78, 1e-12); // a deuce: 12 of 78
    EXPECT_NEAR((*buckets)[1].spread(), 0.25 * std::sqrt(12 * 66.0) / 78, 1e-12);

    const RoundSpread spread = spreadOf(*buckets);
    EXPECT_NEAR(spread.mean, (312 * 0.5 + 792 * 0.5 + 144 * 0.25 + 78 * 0.75) / 1326, 1e-12);
    EXPECT_NEAR(spread.within, (*buckets)[1].spread() * 936 / 1326, 1e-12);
    // What lies within the buckets and what lies between them make up the whole.
    const double inside = (*buckets)[1].spread() * (*buckets)[1].spread() * 936 / 1326;
    EXPECT_NEAR(spread.all * spread.all, inside + spread.between * spread.between, 1e-12);
    EXPECT_GT(spread.between, 0.04);
}

// Every one of the deck's 25,989,600 hands on the flop, by itself.
TEST(BucketSummaries, WeighTheFlopAsTheDeckDealsIt) {
    const std::vector<uint16_t> table = flopBuckets();
    const std::vector<double> equities = flopEquities(table);
    std::vector<BucketSummary> plain(6);
    for (const uint16_t bucket : table)
        ++plain[bucket].hands;
    const RoundIndexer indexer(1);
    for (uint8_t a = 1; a < 52; ++a)
        for (uint8_t b = 0; b < a; ++b)
            for (uint8_t x = 2; x < 52; ++x)
                for (uint8_t y = 1; y < x; ++y)
                    for (uint8_t z = 0; z < y; ++z) {
                        if (a == x || a == y || a == z || b == x || b == y || b == z)
                            continue;
                        const uint8_t cards[] = {a, b, x, y, z};
                        const uint64_t hand = hand_index_last(indexer.get(), cards);
                        BucketSummary& bucket = plain[table[hand]];
                        const auto step = static_cast<uint64_t>(equities[hand] * 65536 + 0.5);
                        ++bucket.deckHands;
                        bucket.equity += step;
                        bucket.square += step * step;
                    }
    uint64_t all = 0;
    for (const int count : {1, 3}) {
        const auto buckets = summariseBuckets(1, table, 6, equities, threads(count));
        ASSERT_TRUE(buckets.ok()) << buckets.error();
        for (size_t bucket = 0; bucket < plain.size(); ++bucket) {
            EXPECT_TRUE(same((*buckets)[bucket], plain[bucket])) << bucket;
            all += (*buckets)[bucket].deckHands;
        }
    }
    EXPECT_EQ(all, 2 * 25989600U);
    EXPECT_EQ(plain[3].hands, 0U);
}

TEST(BucketSummaries, CountWithoutEquities) {
    const std::vector<uint16_t> table = flopBuckets();
    const auto with = summariseBuckets(1, table, 6, flopEquities(table), threads(2));
    const auto without = summariseBuckets(1, table, 6, {}, threads(2));
    ASSERT_TRUE(with.ok() && without.ok());
    for (size_t bucket = 0; bucket < 6; ++bucket) {
        EXPECT_EQ((*without)[bucket].deckHands, (*with)[bucket].deckHands);
        EXPECT_EQ((*without)[bucket].hands, (*with)[bucket].hands);
        EXPECT_EQ((*without)[bucket].equity, 0U);
    }
}

TEST(BucketSummaries, RefuseWhatIsNoEquity) {
    const std::vector<uint16_t> table(flopHands);
    for (const double wrong : {-0.001, 1.001, std::numeric_limits<double>::quiet_NaN()}) {
        std::vector<double> equities(flopHands, 0.5);
        equities[flopHands - 1] = wrong;
        equities[777777] = wrong;
        const auto refused = summariseBuckets(1, table, 1, equities, threads(2));
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error(), "hand 777777 has an equity that is not from 0 to 1");
    }
}

TEST(BucketSummaries, StopWhenAsked) {
    Work work = threads(2);
    work.stop = [] { return true; };
    const auto buckets = summariseBuckets(1, std::vector<uint16_t>(flopHands), 1, {}, work);
    ASSERT_FALSE(buckets.ok());
    EXPECT_EQ(buckets.error(), "stopped");
}

// A stop that is asked for once, in the first of the two passes, is not passed over.
TEST(BucketSummaries, StopWhileTheHandsAreCounted) {
    Work work = threads(1);
    int asked = 0;
    work.stop = [&] { return asked++ == 0; };
    const auto buckets = summariseBuckets(1, std::vector<uint16_t>(flopHands), 1, {}, work);
    ASSERT_FALSE(buckets.ok());
    EXPECT_EQ(buckets.error(), "stopped");
    EXPECT_EQ(asked, 1);
}

TEST(HandsSpreadOver, AreTheMiddlesOfEqualPartsByEquity) {
    std::vector<uint16_t> table(100);
    std::vector<double> equities(100);
    for (size_t hand = 0; hand < 100; ++hand) {
        table[hand] = hand % 2 == 0 ? 5 : 4;
        equities[hand] = static_cast<double>(99 - hand) / 128;
    }
    // Hands 98, 96, .. 0 in order: the 6th, 16th, .. 46th of fifty.
    EXPECT_EQ(handsSpreadOver(table, 5, equities, 5), (std::vector<uint64_t>{88, 68, 48, 28, 8}));
    EXPECT_EQ(handsSpreadOver(table, 5, {}, 5), (std::vector<uint64_t>{10, 30, 50, 70, 90}));
    EXPECT_TRUE(handsSpreadOver(table, 7, equities, 5).empty());
    table[31] = 7;
    table[77] = 7;
    EXPECT_EQ(handsSpreadOver(table, 7, equities, 10), (std::vector<uint64_t>{77, 31}));
}

} // namespace
} // namespace tamarin::test
