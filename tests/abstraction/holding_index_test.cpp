#include "abstraction/holding_index.h"

#include "abstraction/random_cards.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Against the indexer, holding by holding.
void expectIndices(const HoldingIndexer& holdings, const hand_indexer_t& indexer,
                   std::vector<uint8_t> board) {
    std::sort(board.begin(), board.end());
    std::array<uint32_t, numHoldings(deckCards)> indices;
    indices.fill(UINT32_MAX);
    holdings.indices(board.data(), indices.data());
    uint8_t left[deckCards];
    const size_t count = cardsWithout(board.data(), static_cast<int>(board.size()), left);
    uint8_t cards[7];
    std::copy(board.begin(), board.end(), cards + 2);
    for (size_t high = 1; high < count; ++high)
        for (size_t low = 0; low < high; ++low) {
            cards[0] = left[high];
            cards[1] = left[low];
            ASSERT_EQ(indices[holdingNumber(low, high)], hand_index_last(&indexer, cards));
        }
}

TEST(HoldingIndex, IsTheIndexersOnRandomBoards) {
    std::mt19937 random(2);
    for (int round = 1; round < holdemRounds; ++round) {
        const RoundIndexer indexer(round);
        const HoldingIndexer holdings(round, *indexer.get());
        const auto cards = static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]);
        for (int i = 0; i < 150; ++i)
            expectIndices(holdings, *indexer.get(), randomCards(random, cards));
    }
}

// Equal suits are multisets; every pattern of them occurs on these boards.
TEST(HoldingIndex, IsTheIndexersWhereSuitsAreAlike) {
    const RoundIndexer indexer(3);
    const HoldingIndexer holdings(3, *indexer.get());
    for (const std::vector<uint8_t>& board : {std::vector<uint8_t>{0, 4, 8, 12, 16},
                                              {0, 1, 2, 3, 4},
                                              {0, 4, 1, 5, 2},
                                              {0, 4, 1, 9, 50},
                                              {48, 49, 50, 44, 45},
                                              {0, 4, 8, 12, 51},
                                              {0, 4, 8, 1, 2},
                                              {0, 5, 10, 15, 20}})
        expectIndices(holdings, *indexer.get(), board);
    const RoundIndexer turn(2);
    const HoldingIndexer onTurn(2, *turn.get());
    for (const std::vector<uint8_t>& board :
         {std::vector<uint8_t>{0, 1, 2, 3}, {0, 5, 10, 15}, {0, 4, 1, 5}, {0, 4, 1, 9}})
        expectIndices(onTurn, *turn.get(), board);
    const RoundIndexer flop(1);
    const HoldingIndexer onFlop(1, *flop.get());
    for (const std::vector<uint8_t>& board :
         {std::vector<uint8_t>{0, 1, 2}, {0, 5, 10}, {0, 4, 1}, {0, 4, 8}})
        expectIndices(onFlop, *flop.get(), board);
}

TEST(HoldingIndex, EveryFlopHandIsReached) {
    const RoundIndexer indexer(1);
    const HoldingIndexer holdings(1, *indexer.get());
    const BoardSet boards(3);
    std::vector<bool> reached(roundSizes[1]);
    std::array<uint32_t, numHoldings(49)> indices;
    for (size_t b = 0; b < boards.size(); ++b) {
        holdings.indices(boards.board(b), indices.data());
        for (const uint32_t index : indices)
            reached.at(index) = true;
    }
    EXPECT_EQ(static_cast<size_t>(std::count(reached.begin(), reached.end(), true)), roundSizes[1]);
}

} // namespace
} // namespace tamarin::test
