#include "blueprint/hand_buckets.h"

#include "abstraction/sparse_tables.h"
#include "support/split_mix.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

constexpr BucketCounts bucketCounts{20, 7, 8, 9};
constexpr size_t firstHands = 300'000; // of each round, that have buckets other than 0

// Different from hand to hand and from round to round, and 0 behind the first ones.
std::array<std::vector<uint16_t>, holdemRounds> firstBuckets() {
    std::array<std::vector<uint16_t>, holdemRounds> first;
    for (size_t round = 0; round < first.size(); ++round)
        for (size_t hand = 0; hand < std::min(firstHands, roundSizes[round]); ++hand)
            first[round].push_back(
                static_cast<uint16_t>(mixBits(hand + 1000 * round + 1) % bucketCounts[round]));
    return first;
}

CardAbstraction writeAndOpen(const std::string& directory) {
    const std::string folder = abstractionFolder(directory, "wide");
    std::filesystem::create_directories(folder);
    AbstractionDescription description;
    const auto first = firstBuckets();
    for (size_t round = 0; round < first.size(); ++round) {
        test::writeSparse(folder + "/" + bucketFileNames[round], roundSizes[round], first[round]);
        description.rounds[round].buckets = bucketCounts[round];
        description.rounds[round].hands = roundSizes[round];
    }
    EXPECT_TRUE(writeDescription(folder + "/" + descriptionFileName, description).ok());
    auto opened = CardAbstraction::open(directory, "wide", CardAbstraction::Check::sizes);
    EXPECT_TRUE(opened.ok());
    return std::move(*opened);
}

TEST(HandBuckets, AreThoseOfEachHandByItself) {
    const test::TempDirectory directory;
    const CardAbstraction abstraction = writeAndOpen(directory.path());
    const AbstractionBuckets buckets(abstraction);
    SplitMix random(5);
    for (int round = 0; round < holdemRounds; ++round) {
        EXPECT_EQ(buckets.numBuckets(round), bucketCounts[static_cast<size_t>(round)]);
        const auto boardCards = static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]);
        const RoundIndexer indexer(round);
        size_t others = 0; // hands with other buckets than 0
        for (int trial = 0; trial < 300; ++trial) {
            std::array<uint8_t, 7> hand{};
            const size_t index =
                random.below(static_cast<uint32_t>(std::min(firstHands, abstraction.hands(round))));
            ASSERT_TRUE(hand_unindex(indexer.get(), lastIndexRound(round), index, hand.data()));
            const auto board = std::span<const uint8_t>(hand).subspan(2, boardCards);
            // All holdings that the board leaves to a deck without its lowest ranks, and this one.
            std::vector<HoleCards> holdings{
                {std::min(hand[0], hand[1]), std::max(hand[0], hand[1])}};
            for (uint8_t high = 30; high < deckCards; ++high)
                for (uint8_t low = 29; low < high; ++low)
                    if (std::ranges::find(board, high) == board.end() &&
                        std::ranges::find(board, low) == board.end())
                        holdings.push_back({low, high});
            std::vector<uint16_t> filled(holdings.size());
            buckets.fill(round, board, holdings, filled.data());
            for (size_t h = 0; h < holdings.size(); ++h) {
                std::array<uint8_t, 7> cards = hand;
                std::ranges::copy(holdings[h], cards.begin());
                const auto wanted = abstraction.bucket(
                    round, static_cast<size_t>(hand_index_last(indexer.get(), cards.data())));
                ASSERT_EQ(filled[h], wanted) << round << ' ' << trial << ' ' << h;
            }
            others += filled[0] != 0 ? 1U : 0U;
        }
        EXPECT_GT(others, 200U);
    }
}

} // namespace
} // namespace tamarin
