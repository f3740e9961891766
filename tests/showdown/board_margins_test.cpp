#include "showdown/board_margins.h"

#include "eval/exact_equity.h"
#include "response/measured.h"
#include "showdown/plain_showdown.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::array<uint8_t, 2> holeOf(const char* text) {
    std::array<uint8_t, 2> cards{};
    int consumed = 0;
    EXPECT_EQ(readCards(text, 2, cards.data(), &consumed), 2);
    return cards;
}

// Over all boards that begin so, one by one.
double plainMargin(const Game& game, const PublicDeck& deck, const Cards& own, const Cards& other,
                   const Cards& board) {
    double sum = 0;
    double boards = 0;
    eachBoard(game, deck, {own[0], own[1], other[0], other[1]}, [&](const Cards& whole) {
        if (!std::equal(board.begin(), board.end(), whole.begin()))
            return;
        sum += showdown(own, other, whole);
        ++boards;
    });
    return sum / boards;
}

TEST(BoardMargins, OfShortDecksAreThoseOfAllBoards) {
    const GamePtr game = parseGame(shortGame(3, 4, "1 1 1", "10 20 20", "0 2 1"));
    const PublicDeck deck(*game);
    const BoardMargins margins(*game, deck);
    const Cards other{deck.cards()[7], deck.cards()[2]};
    const Cards flop{deck.cards()[1], deck.cards()[9]};
    const Cards whole{flop[0], flop[1], deck.cards()[4]};
    for (const Cards& board : {Cards{}, flop, whole}) {
        EXPECT_TRUE(margins.can(board.size()));
        const auto row = margins.of(other, board);
        int different = 0;
        for (size_t h = 0; h < row.size(); ++h) {
            const auto cards = deck.cardsOf(h);
            const Cards own(cards.begin(), cards.end());
            if (has(other, own[0]) || has(other, own[1]) || has(board, own[0]) ||
                has(board, own[1])) {
                EXPECT_EQ(row[h], 0);
                continue;
            }
            EXPECT_NEAR(row[h], plainMargin(*game, deck, own, other, board), 1e-12);
            different += row[h] != 0 ? 1 : 0;
        }
        EXPECT_GT(different, 5);
    }
}

TEST(BoardMargins, AreFoundWhereBoardsAreNotTooMany) {
    const GamePtr holdem = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const PublicDeck fullDeck(*holdem);
    const BoardMargins ofPairs(*holdem, fullDeck);
    EXPECT_TRUE(ofPairs.countsPairs());
    for (const size_t out : {0U, 3U, 4U, 5U})
        EXPECT_TRUE(ofPairs.can(out)) << out;
    for (const int suits : {2, 3}) {
        const GamePtr game =
            parseGame(shortGame(suits, suits == 2 ? 13 : 11, "1 1 1 1", "10 10 20 20", "0 3 1 1"));
        const PublicDeck deck(*game);
        const BoardMargins margins(*game, deck);
        EXPECT_FALSE(margins.countsPairs());
        EXPECT_EQ(margins.can(0), suits == 2); // 26,334 of 26 cards, 118,755 of 33
        EXPECT_TRUE(margins.can(3));
    }
}

class HoldemMargins : public testing::Test {
protected:
    GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    PublicDeck deck{*game};
    BoardMargins margins{*game, deck};
};

TEST_F(HoldemMargins, StayOnAverageWhenCardsCome) {
    const std::array<uint8_t, 2> other = holeOf("9c8c");
    const std::array<uint8_t, 2> own = holeOf("AhTd");
    const size_t number = deck.numberOf(own[0], own[1]);
    std::vector<uint8_t> board{4, 22, 35};
    const double before = margins.of(other, board)[number];
    double sum = 0;
    double turns = 0;
    board.push_back(0);
    for (uint8_t card = 0; card < 52; ++card) {
        const std::array dead{own[0], own[1], other[0], other[1], board[0], board[1], board[2]};
        if (std::ranges::find(dead, card) != dead.end())
            continue;
        board[3] = card;
        sum += margins.of(other, board)[number];
        ++turns;
    }
    EXPECT_EQ(turns, 45);
    EXPECT_NEAR(sum / turns, before, 1e-12);
    EXPECT_NE(before, 0);
}

// What is won of the pot is half of the margin and a half; `equity` counts that by itself.
TEST_F(HoldemMargins, AreThoseOfTheExactEquity) {
    const Cards other{12, 17};
    const Cards board{13, 22, 30, 45, 50};
    for (const size_t out : {3U, 4U, 5U}) {
        ASSERT_TRUE(margins.can(out));
        CardSet cards = 0;
        for (size_t i = 0; i < out; ++i)
            cards |= cardBit(board[i]);
        const CardSet theirs = cardBit(other[0]) | cardBit(other[1]);
        const auto row = margins.of(other, {board.data(), out});
        for (size_t h = 0; h < row.size(); h += out == 3 ? 97 : 13) {
            const auto hand = deck.cardsOf(h);
            const CardSet own = cardBit(hand[0]) | cardBit(hand[1]);
            if ((own & (cards | theirs)) != 0) {
                EXPECT_EQ(row[h], 0);
                continue;
            }
            const std::array<CardSet, 2> hands{own, theirs};
            EXPECT_NEAR(row[h], 2 * equityOf(exactEquity(hands, cards, 0)).pot - 1, 1e-12);
        }
    }
}

TEST_F(HoldemMargins, StopWhenAsked) {
    Work work;
    work.stop = [] { return true; };
    const Status status = margins.prepare(work);
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), stopped().message);
}

} // namespace
} // namespace tamarin::test
