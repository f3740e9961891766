#include "analysis/board_edges.h"

#include "analysis/all_deals.h"

namespace tamarin::test {
namespace {

HoleCards holeOf(const char* text) {
    HoleCards cards{};
    int consumed = 0;
    EXPECT_EQ(readCards(text, 2, cards.data(), &consumed), 2);
    return cards;
}

// Over all boards, one by one.
double plainEdge(const Table& table, const HoleCards& own, const HoleCards& other,
                 const std::vector<uint8_t>& board) {
    double sum = 0;
    double boards = 0;
    CompiledTree::Settlement showdown{};
    showdown.spent = {1, 1};
    const std::array dead{own[0], own[1], other[0], other[1]};
    const auto rounds = static_cast<int>(table.game->numRounds);
    table.extend(board, table.boardCards(rounds - 1), dead, [&](const std::vector<uint8_t>& all) {
        sum += payoffAt(showdown, 0, own, other, all);
        ++boards;
    });
    return sum / boards;
}

TEST(BoardEdges, OfShortDecksAreThoseOfAllBoards) {
    const Table table(shortGame(3, 4, "1 1 1", "10 20 20", "0 2 1"));
    const BoardEdges edges(*table.game, table.deck);
    const HoleCards other{table.deck.cards()[7], table.deck.cards()[2]};
    const std::vector<uint8_t> flop{table.deck.cards()[1], table.deck.cards()[9]};
    std::vector<uint8_t> whole = flop;
    whole.push_back(table.deck.cards()[4]);
    for (const auto& board : {std::vector<uint8_t>{}, flop, whole}) {
        const auto row = edges.of(other, board);
        int different = 0;
        for (size_t h = 0; h < row.size(); ++h) {
            const HoleCards own = table.deck.cardsOf(h);
            std::vector<uint8_t> known(board);
            known.insert(known.end(), other.begin(), other.end());
            if (std::ranges::any_of(own, [&](uint8_t card) {
                    return std::ranges::find(known, card) != known.end();
                })) {
                EXPECT_EQ(row[h], 0);
                continue;
            }
            EXPECT_NEAR(row[h], plainEdge(table, own, other, board), 1e-12);
            different += row[h] != 0 ? 1 : 0;
        }
        EXPECT_GT(different, 5);
    }
}

class HoldemEdges : public testing::Test {
protected:
    GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    PublicDeck deck{*game};
    BoardEdges edges{*game, deck};
};

TEST_F(HoldemEdges, StayOnAverageWhenCardsCome) {
    const HoleCards other = holeOf("9c8c");
    const HoleCards own = holeOf("AhTd");
    const size_t number = deck.numberOf(own[0], own[1]);
    std::vector<uint8_t> board{4, 22, 35};
    const double before = edges.of(other, board)[number];
    double sum = 0;
    double turns = 0;
    board.push_back(0);
    for (uint8_t card = 0; card < 52; ++card) {
        const std::array dead{own[0], own[1], other[0], other[1], board[0], board[1], board[2]};
        if (std::ranges::find(dead, card) != dead.end())
            continue;
        board[3] = card;
        sum += edges.of(other, board)[number];
        ++turns;
    }
    EXPECT_EQ(turns, 45);
    EXPECT_NEAR(sum / turns, before, 1e-12);
    EXPECT_NE(before, 0);
}

TEST_F(HoldemEdges, StopWhenAsked) {
    Work work;
    work.stop = [] { return true; };
    const Status status = edges.prepare(work);
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), stopped().message);
}

} // namespace
} // namespace tamarin::test
