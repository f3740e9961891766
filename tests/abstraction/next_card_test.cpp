#include "abstraction/next_card.h"

#include "abstraction/plain_equity.h"
#include "abstraction/random_cards.h"

#include <map>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Rows as they are asked for.
class Rows {
public:
    const RiverWins* river(size_t board) {
        std::vector<RiverWins>& row = river_[board];
        if (row.empty()) {
            row.resize(riverHoldings);
            sweepRiver(rivers.board(board), row.data());
        }
        return row.data();
    }
    const Wins* turn(size_t board) {
        std::vector<Wins>& row = turn_[board];
        if (row.empty())
            row = turnRow(turns.board(board));
        return row.data();
    }
    std::vector<Wins> turnRow(const uint8_t* board) {
        std::vector<Wins> row(turns.holdings());
        sumNextCards(
            rivers, board, [&](size_t next) { return river(next); }, row.data());
        return row;
    }
    std::vector<Wins> flopRow(const uint8_t* board) {
        std::vector<Wins> row(numHoldings(49));
        sumNextCards(
            turns, board, [&](size_t next) { return turn(next); }, row.data());
        return row;
    }

    BoardSet rivers{5};
    BoardSet turns{4};

private:
    std::map<size_t, std::vector<RiverWins>> river_;
    std::map<size_t, std::vector<Wins>> turn_;
};

Rows& rows() {
    static Rows made;
    return made;
}

TEST(NextCard, TurnCountsAreThePlainOnes) {
    std::mt19937 random(4);
    for (int i = 0; i < 3; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 6);
        const std::vector<uint8_t> board(cards.begin(), cards.begin() + 4);
        const std::vector<Wins> row = rows().turnRow(board.data());
        const Wins& wins = row[holdingOn(board.data(), 4, cards[4], cards[5])];
        EXPECT_EQ(wins, plainWins(board, cards[4], cards[5]));
    }
}

TEST(NextCard, FlopCountsAreSumsOverConcreteTurns) {
    // No renaming on this side: every turn card gets a row of its own board.
    const std::vector<uint8_t> board{4, 21, 38};
    const std::vector<Wins> row = rows().flopRow(board.data());
    const uint8_t a = 50;
    const uint8_t b = 13;
    Wins sum;
    for (uint8_t card = 0; card < deckCards; ++card) {
        if (card == a || card == b || std::find(board.begin(), board.end(), card) != board.end())
            continue;
        const uint8_t turn[] = {board[0], board[1], board[2], card};
        const Wins wins = rows().turnRow(turn)[holdingOn(turn, 4, a, b)];
        sum.overOne += wins.overOne;
        sum.overTwo += wins.overTwo;
    }
    EXPECT_EQ(row[holdingOn(board.data(), 3, a, b)], sum);
}

TEST(NextCard, CertainWinStaysCertain) {
    // A royal flush on the flop, two of its cards in the hand.
    const uint8_t board[] = {36, 40, 44};
    const Wins wins = rows().flopRow(board)[holdingOn(board, 3, 32, 48)];
    EXPECT_EQ(wins.overOne, flopRivers * riverDeals2);
    EXPECT_EQ(wins.overTwo, flopRivers * riverDeals3);
}

} // namespace
} // namespace tamarin::test
