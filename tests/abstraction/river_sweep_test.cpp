#include "abstraction/river_sweep.h"

#include "abstraction/plain_equity.h"
#include "abstraction/random_cards.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::vector<RiverWins> sweep(const std::vector<uint8_t>& board) {
    std::vector<RiverWins> wins(riverHoldings);
    sweepRiver(board.data(), wins.data());
    return wins;
}

void expectPlain(const std::vector<uint8_t>& board, uint8_t a, uint8_t b) {
    const RiverWins wins = sweep(board)[holdingOn(board.data(), 5, a, b)];
    const Wins plain = plainRiver(board.data(), a, b);
    EXPECT_EQ(winsOverOne(wins), plain.overOne);
    EXPECT_EQ(winsOverTwo(wins), plain.overTwo);
}

TEST(RiverSweep, CountsAsThePlainWayOnRandomHands) {
    std::mt19937 random(3);
    for (int i = 0; i < 60; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 7);
        expectPlain({cards.begin(), cards.begin() + 5}, cards[5], cards[6]);
    }
}

TEST(RiverSweep, CountsAsThePlainWayForEveryHoldingOfAPairedBoard) {
    const std::vector<uint8_t> board{0, 1, 20, 21, 47};
    for (uint8_t a = 2; a < 52; a = static_cast<uint8_t>(a + 7))
        for (uint8_t b = 3; b < 52; b = static_cast<uint8_t>(b + 5))
            if (a != b && std::find(board.begin(), board.end(), a) == board.end() &&
                std::find(board.begin(), board.end(), b) == board.end())
                expectPlain(board, a, b);
}

TEST(RiverSweep, NobodyBeatsARoyalFlushOnTheBoard) {
    for (const RiverWins wins : sweep({32, 36, 40, 44, 48}))
        EXPECT_EQ(wins, 0U);
}

TEST(RiverSweep, TheNutsBeatEverybody) {
    // A royal flush of which one card is in the hand: nobody ties.
    const std::vector<uint8_t> board{36, 40, 44, 48, 1};
    const RiverWins wins = sweep(board)[holdingOn(board.data(), 5, 32, 9)];
    EXPECT_EQ(winsOverOne(wins), riverDeals2);
    EXPECT_EQ(winsOverTwo(wins), riverDeals3);
}

TEST(RiverSweep, BoardMayComeInAnyOrder) {
    EXPECT_EQ(sweep({3, 17, 22, 40, 51}), sweep({51, 3, 40, 22, 17}));
}

} // namespace
} // namespace tamarin::test
