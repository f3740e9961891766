#include "clustering/river_equities.h"

#include "clustering/plain_features.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(RiverEquities, AreThePlainOnes) {
    std::mt19937 random(2);
    for (int i = 0; i < 20; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 7);
        std::array<uint16_t, riverHoldings> pots;
        riverPots(&cards[2], pots.data());
        EXPECT_EQ(pots[holdingOn(&cards[2], 5, cards[0], cards[1])], plainPot(cards));
    }
}

TEST(RiverEquities, EveryHandTiesOnARoyalBoard) {
    const uint8_t board[] = {32, 36, 40, 44, 48}; // ten to ace of one suit
    std::array<uint16_t, riverHoldings> pots;
    riverPots(board, pots.data());
    for (const uint16_t pot : pots)
        EXPECT_EQ(pot, 990);
}

TEST(RiverEquities, AGrownBoardKnowsItsHoldings) {
    const BoardSet rivers(5);
    std::mt19937 random(3);
    for (int i = 0; i < 200; ++i) {
        const int cards = 3 + i % 2;
        const std::vector<uint8_t> board = randomCards(random, static_cast<size_t>(cards));
        uint8_t left[deckCards];
        const size_t cardsLeft = cardsWithout(board.data(), cards, left);
        size_t dealt[] = {5, 17};
        const GrownBoard grown = growToRiver(rivers, board.data(), cards, left, cardsLeft, dealt);
        ASSERT_EQ(grown.count, 47U);
        std::vector<uint8_t> river = board;
        river.push_back(left[5]);
        if (cards == 3)
            river.push_back(left[17]);
        const BoardSet::Place place = rivers.find(river.data());
        EXPECT_EQ(grown.number, place.number);
        uint8_t leftThere[deckCards];
        cardsWithout(rivers.board(place.number), 5, leftThere);
        for (size_t k = 0; k < grown.count; ++k) {
            const uint8_t card = left[grown.position[k]];
            EXPECT_EQ(leftThere[grown.place[k]], (card & ~3U) | place.suit[card & 3U]);
            EXPECT_EQ(std::find(river.begin(), river.end(), card), river.end());
        }
    }
}

} // namespace
} // namespace tamarin::test
