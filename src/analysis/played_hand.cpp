#include "analysis/played_hand.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

int rankWith(const HoleCards& hole, std::span<const uint8_t> board) {
    CardSet cards = cardBit(hole[0]) | cardBit(hole[1]);
    for (const uint8_t card : board)
        cards |= cardBit(card);
    return rankCardSet(cards);
}

} // namespace

PlayedHand playedHand(const Game& game, const State& finished) {
    assert(game.numPlayers == 2 && game.numHoleCards == 2 && finished.finished);
    PlayedHand hand;
    for (size_t seat = 0; seat < 2; ++seat)
        std::copy_n(finished.holeCards[seat], 2, hand.hole[seat].begin());
    hand.board.assign(finished.boardCards,
                      finished.boardCards + sumBoardCards(&game, finished.round));
    for (int round = 0; round <= finished.round; ++round)
        for (int i = 0; i < finished.numActions[round]; ++i)
            hand.actions.push_back(static_cast<uint8_t>(finished.action[round][i].type));
    return hand;
}

double payoffAt(const CompiledTree::Settlement& settlement, int seat, const HoleCards& own,
                const HoleCards& other, std::span<const uint8_t> board) {
    const auto me = static_cast<size_t>(seat);
    const size_t they = 1 - me;
    if (settlement.folded[me] != 0)
        return -settlement.spent[me];
    if (settlement.folded[they] != 0)
        return settlement.spent[they];
    const int difference = rankWith(own, board) - rankWith(other, board);
    const int stake = std::min(settlement.spent[0], settlement.spent[1]);
    return difference > 0 ? stake : difference < 0 ? -stake : 0;
}

} // namespace tamarin
