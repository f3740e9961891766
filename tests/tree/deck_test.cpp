#include "tree/deck.h"

#include "solver/combinator.h"
#include "solver/games.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Deck, GoesSuitBySuitFromTheLowestRank) {
    EXPECT_EQ(solverDeck(*leduc2()), (std::vector<uint8_t>{0, 4, 8, 1, 5, 9}));
    EXPECT_EQ(solverDeck(*kuhn3()), (std::vector<uint8_t>{0, 4, 8, 12}));
    EXPECT_EQ(solverDeck(*holdem2()).size(), 52U);
}

TEST(Deck, CountsCardsAndDeals) {
    EXPECT_EQ(cardsNeeded(*kuhn3()), 3);
    EXPECT_EQ(countDeals(*kuhn3()), 24U);
    EXPECT_EQ(cardsNeeded(*leduc2()), 3);
    EXPECT_EQ(countDeals(*leduc2()), 120U);
    EXPECT_EQ(cardsNeeded(*holdem2()), 9);
    EXPECT_EQ(countDeals(*holdem2()), 1335062881152000U);
    EXPECT_EQ(boardCardsOf(*holdem2()), 5);
    const GamePtr full = gameFrom("GAMEDEF\nlimit\nnumPlayers = 4\nnumRounds = 4\n"
                                  "blind = 1 1 1 1\nraiseSize = 1 1 1 1\nnumSuits = 4\n"
                                  "numRanks = 13\nnumHoleCards = 3\nnumBoardCards = 0 3 1 1\n"
                                  "END GAMEDEF\n");
    EXPECT_EQ(countDeals(*full), UINT64_MAX);
}

TEST(Deck, FieldsAreRanksWithTheFourHighestFirst) {
    const int expected[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 0, 1, 2, 3};
    for (int rank = 0; rank < MAX_RANKS; ++rank)
        for (int suit = 0; suit < MAX_SUITS; ++suit)
            EXPECT_EQ(cardField(static_cast<uint8_t>(rank * MAX_SUITS + suit)), expected[rank]);
    EXPECT_EQ(numCardFields(*kuhn3()), 4);
    EXPECT_EQ(numCardFields(*longSuit()), 9);
}

TEST(Deck, PlacesHoleCardsSeatBySeatThenTheBoard) {
    const GamePtr game = boards3();
    const uint8_t cards[] = {1, 2, 3, 4, 5};
    State state{};
    placeCards(*game, cards, &state);
    EXPECT_EQ(state.holeCards[0][0], 1);
    EXPECT_EQ(state.holeCards[2][0], 3);
    EXPECT_EQ(state.boardCards[0], 4);
    EXPECT_EQ(state.boardCards[1], 5);
    const GamePtr two = twoCards();
    placeCards(*two, cards, &state);
    EXPECT_EQ(state.holeCards[0][1], 2);
    EXPECT_EQ(state.holeCards[1][0], 3);
}

// The order in which combinator and the standard permutations walk.
TEST(Deck, WalksEveryDealOnceInTheOrderOfSummation) {
    for (const auto& make : {kuhn3, leduc2, twoCards}) {
        const GamePtr game = make();
        std::vector<uint8_t> deck = solverDeck(*game);
        const int count = cardsNeeded(*game);
        combinator combinations(deck.data(), static_cast<int>(deck.size()), count);
        DealWalk walk(*game);
        std::set<std::string> seen;
        while (combinations.next()) {
            unsigned char* const cards = combinations.getCurrent();
            std::sort(cards, cards + count);
            do {
                ASSERT_TRUE(walk.next());
                ASSERT_TRUE(std::equal(cards, cards + count, walk.cards()));
                seen.emplace(cards, cards + count);
            } while (std::next_permutation(cards, cards + count));
        }
        EXPECT_FALSE(walk.next());
        EXPECT_EQ(seen.size(), countDeals(*game));
    }
}

} // namespace
} // namespace tamarin::test
