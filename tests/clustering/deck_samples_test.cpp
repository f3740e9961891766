#include "clustering/deck_samples.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(DeckSamples, CardsAreDifferentAndAllAreDrawn) {
    std::array<int, deckCards> drawn{};
    std::set<std::vector<uint8_t>> hands;
    for (uint64_t number = 0; number < 5200; ++number) {
        uint8_t cards[7];
        drawCards(1, number, 7, cards);
        EXPECT_EQ(std::set<uint8_t>(cards, cards + 7).size(), 7U);
        ++drawn[cards[number % 7]];
        hands.insert(std::vector<uint8_t>(cards, cards + 7));
    }
    EXPECT_EQ(hands.size(), 5200U);
    for (const int count : drawn)
        EXPECT_NEAR(count, 100, 50); // five standard deviations
}

TEST(DeckSamples, SeedAndNumberAreTheHand) {
    const auto hand = [](uint64_t seed, uint64_t number) {
        std::vector<uint8_t> cards(7);
        drawCards(seed, number, 7, cards.data());
        return cards;
    };
    EXPECT_EQ(hand(3, 4), hand(3, 4));
    EXPECT_NE(hand(3, 4), hand(4, 3));
    EXPECT_NE(hand(3, 4), hand(3, 5));
    const std::vector<uint8_t> pinned = hand(1, 0);
    EXPECT_EQ(pinned, (std::vector<uint8_t>{36, 50, 22, 41, 18, 43, 14}));
}

TEST(DeckSamples, AreTheSameWithAnyNumberOfThreads) {
    std::vector<uint8_t> clusters(169);
    for (size_t hand = 0; hand < clusters.size(); ++hand)
        clusters[hand] = hand % 8;
    const RiverStrength strength(clusters, 8);
    Work work;
    work.threads = 1;
    const auto one = sampleRiver(strength, 1000, 9, work);
    work.threads = 3;
    const auto three = sampleRiver(strength, 1000, 9, work);
    ASSERT_TRUE(one.has_value());
    EXPECT_EQ(*one, *three);
    uint8_t cards[7];
    drawCards(9, 700, 7, cards);
    EXPECT_EQ((*one)[700], strength.row(cards));
    work.stop = [] { return true; };
    EXPECT_FALSE(sampleRiver(strength, 1000, 9, work).has_value());
}

TEST(DeckSamples, GrowWithTheCentres) {
    EXPECT_EQ(defaultSample(1), 500'000U);
    EXPECT_EQ(defaultSample(5000), 1'000'000U);
    EXPECT_EQ(defaultSample(65535), 2'000'000U);
}

} // namespace
} // namespace tamarin::test
