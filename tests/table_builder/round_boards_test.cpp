#include "table_builder/round_boards.h"

#include "game/showdown.h"

#include <map>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// With its weights every starting hand counts alike, and with them all hands of the deck are there.
TEST(RoundBoards, CountEveryStartingHandAlike) {
    for (int round = 0; round <= 1; ++round) {
        const RoundBoards boards(round);
        ASSERT_EQ(boards.size(), round == 0 ? 1U : 1755U);
        const RoundIndexer preflop(0);
        const BoardSet flops(3);
        std::map<uint64_t, uint64_t> weights;
        RankedBoard board;
        for (size_t b = 0; b < boards.size(); ++b) {
            boards.rank(b, board);
            uint8_t left[deckCards];
            const size_t count =
                cardsWithout(round == 0 ? nullptr : flops.board(b), 3 * round, left);
            ASSERT_EQ(board.cardsLeft, count);
            for (size_t high = 1; high < count; ++high)
                for (size_t low = 0; low < high; ++low) {
                    const uint8_t hand[] = {left[low], left[high]};
                    weights[hand_index_last(preflop.get(), hand)] +=
                        board.weights[holdingNumber(low, high)] * board.multiplicity;
                }
        }
        ASSERT_EQ(weights.size(), 169U);
        // Twelve for each flop of the other fifty cards.
        for (const auto& [index, weight] : weights)
            EXPECT_EQ(weight, round == 0 ? 12U : 12U * 50 * 49 * 48 / 6) << index;
    }
}

TEST(RoundBoards, RankAndIndexAsTheRulesDo) {
    for (int round = 0; round < holdemRounds; ++round) {
        const RoundBoards boards(round);
        const RoundIndexer indexer(round);
        const auto cards = static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]);
        const size_t number = boards.size() / 3;
        RankedBoard board;
        boards.rank(number, board);
        uint8_t hand[7];
        CardSet onBoard = 0;
        if (round > 0) {
            const BoardSet set(static_cast<int>(cards));
            std::copy_n(set.board(number), cards, hand + 2);
            for (size_t i = 0; i < cards; ++i)
                onBoard |= cardBit(hand[2 + i]);
        }
        uint8_t left[deckCards];
        const size_t count = cardsWithout(hand + 2, static_cast<int>(cards), left);
        std::vector<int> ranks;
        for (size_t high = 1; high < count; ++high)
            for (size_t low = 0; low < high; ++low) {
                hand[0] = left[low];
                hand[1] = left[high];
                ASSERT_EQ(board.indices[ranks.size()], hand_index_last(indexer.get(), hand));
                ranks.push_back(rankCardSet(onBoard | cardBit(hand[0]) | cardBit(hand[1])));
            }
        ASSERT_EQ(board.holdings(), ranks.size());
        for (size_t a = 0; a < ranks.size(); a += 5)
            for (size_t b = 0; b < ranks.size(); b += 3) {
                ASSERT_EQ(ranks[a] < ranks[b], board.values[a] < board.values[b]);
                ASSERT_EQ(ranks[a] == ranks[b], board.values[a] == board.values[b]);
            }
    }
}

} // namespace
} // namespace tamarin::test
