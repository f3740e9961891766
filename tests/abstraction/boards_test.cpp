#include "abstraction/boards.h"

#include "abstraction/random_cards.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

void expectWholeDeck(int cards, size_t classes, unsigned boardsOfTheDeck) {
    const BoardSet boards(cards);
    ASSERT_EQ(boards.size(), classes);
    unsigned total = 0;
    for (size_t b = 0; b < boards.size(); ++b)
        total += boards.multiplicity(b);
    EXPECT_EQ(total, boardsOfTheDeck);
}

TEST(Boards, ClassesAndTheirMultiplicitiesCoverTheDeck) {
    expectWholeDeck(3, 1755, 52 * 51 * 50 / 6);
    expectWholeDeck(4, 16432, 270725);
    expectWholeDeck(5, 134459, 2598960);
}

TEST(Boards, RepresentativeIsFoundUnderItsOwnNumberUnrenamed) {
    const BoardSet boards(4);
    for (size_t b = 0; b < boards.size(); ++b) {
        const BoardSet::Place place = boards.find(boards.board(b));
        ASSERT_EQ(place.number, b);
        for (uint8_t suit = 0; suit < 4; ++suit)
            ASSERT_EQ(place.suit[suit], suit);
        ASSERT_TRUE(std::is_sorted(boards.board(b), boards.board(b) + 4));
    }
}

TEST(Boards, RenamingMakesTheRepresentative) {
    std::mt19937 random(1);
    for (int cards = 3; cards <= 5; ++cards) {
        const BoardSet boards(cards);
        for (int i = 0; i < 2000; ++i) {
            const std::vector<uint8_t> board = randomCards(random, static_cast<size_t>(cards));
            const BoardSet::Place place = boards.find(board.data());
            std::vector<uint8_t> renamed;
            for (const uint8_t card : board)
                renamed.push_back(static_cast<uint8_t>((card & ~3U) | place.suit[card & 3U]));
            std::sort(renamed.begin(), renamed.end());
            EXPECT_TRUE(std::equal(renamed.begin(), renamed.end(), boards.board(place.number)));
            EXPECT_EQ(std::set(place.suit.begin(), place.suit.end()).size(), 4U);
        }
    }
}

TEST(Boards, CardsWithoutAreAscendingAndComplete) {
    const uint8_t board[] = {51, 0, 7};
    uint8_t left[deckCards];
    ASSERT_EQ(cardsWithout(board, 3, left), 49U);
    EXPECT_EQ(left[0], 1);
    EXPECT_EQ(left[48], 50);
    EXPECT_TRUE(std::is_sorted(left, left + 49));
    EXPECT_EQ(std::find(left, left + 49, 7), left + 49);
}

TEST(Boards, HoldingNumbersAreDense) {
    size_t next = 0;
    for (size_t high = 1; high < 47; ++high)
        for (size_t low = 0; low < high; ++low)
            EXPECT_EQ(holdingNumber(low, high), next++);
    EXPECT_EQ(next, numHoldings(47));
}

} // namespace
} // namespace tamarin::test
