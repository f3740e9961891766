#include "holdem/buckets.h"

#include "abstraction/EquityTables.h"

#include <algorithm>

namespace tamarin {

bool isHoldem(const Game& game) {
    static constexpr uint8_t board[MAX_ROUNDS] = {0, 3, 1, 1};
    return (game.numPlayers == 2 || game.numPlayers == 3) && game.numRounds == MAX_ROUNDS &&
           game.numHoleCards == 2 && game.numSuits == MAX_SUITS && game.numRanks == MAX_RANKS &&
           std::equal(board, board + MAX_ROUNDS, game.numBoardCards);
}

TableBuckets::TableBuckets(EquityTables& tables, int players) : tables_(tables) {
    tables_.requireHoldemTables(players);
}

uint8_t TableBuckets::bucket(int players, int round, int seat, const uint8_t* cards) const {
    // The tables only read the cards, but have always asked for them like this.
    return static_cast<uint8_t>(
        tables_.holdemTableIndex(players, round, seat, const_cast<uint8_t*>(cards)));
}

void fillDealBuckets(const Game& game, const State& deal, const HoldemBuckets& source,
                     DealBuckets& buckets) {
    uint8_t hand[MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    const int hole = game.numHoleCards;
    std::copy_n(deal.boardCards, MAX_BOARD_CARDS, hand + hole);
    for (int p = 0; p < game.numPlayers; ++p) {
        std::copy_n(deal.holeCards[p], hole, hand);
        for (int r = 0; r < game.numRounds; ++r) {
            const uint8_t two = source.bucket(2, r, std::min(p, 1), hand);
            buckets.of[r][1][p] = two;
            buckets.of[r][2][p] = two;
            if (game.numPlayers == 3)
                buckets.of[r][3][p] = source.bucket(3, r, p, hand);
        }
    }
}

} // namespace tamarin
