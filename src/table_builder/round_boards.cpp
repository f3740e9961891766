#include "table_builder/round_boards.h"

#include "eval/hand_evaluator.h"
#include "game/showdown.h"

#include <algorithm>
#include <vector>

namespace tamarin {

namespace {

// Two cards alone, which the evaluator does not rank: the places of the rules' ranks among them
// all.
void rankHoleCards(uint16_t* values) {
    std::vector<int> ranks;
    for (uint8_t high = 1; high < deckCards; ++high)
        for (uint8_t low = 0; low < high; ++low)
            ranks.push_back(rankCardSet(cardBit(low) | cardBit(high)));
    std::vector<int> different = ranks;
    std::sort(different.begin(), different.end());
    different.erase(std::unique(different.begin(), different.end()), different.end());
    for (const int rank : ranks)
        *values++ = static_cast<uint16_t>(
            std::lower_bound(different.begin(), different.end(), rank) - different.begin());
}

uint8_t weightOf(uint8_t low, uint8_t high) {
    return low / 4 == high / 4 ? 2 : low % 4 == high % 4 ? 3 : 1;
}

} // namespace

RoundBoards::RoundBoards(int round) : indexer_(round) {
    if (round == 0)
        return;
    boards_.emplace(roundBoardCards[static_cast<size_t>(round)]);
    holdings_.emplace(round, *indexer_.get());
}

void RoundBoards::rank(size_t board, RankedBoard& ranked) const {
    uint8_t left[deckCards];
    ranked.multiplicity = 1;
    if (boards_) {
        const uint8_t* const cards = boards_->board(board);
        const auto count = static_cast<size_t>(boards_->cards());
        ranked.multiplicity = boards_->multiplicity(board);
        ranked.cardsLeft = cardsWithout(cards, boards_->cards(), left);
        HandEvaluator::shared().rankHoldings({cards, count}, ranked.values.data());
        holdings_->indices(cards, ranked.indices.data());
    } else {
        ranked.cardsLeft = cardsWithout(nullptr, 0, left);
        rankHoleCards(ranked.values.data());
    }
    size_t number = 0;
    for (size_t high = 1; high < ranked.cardsLeft; ++high)
        for (size_t low = 0; low < high; ++low, ++number) {
            ranked.weights[number] = weightOf(left[low], left[high]);
            if (!boards_) {
                const uint8_t cards[] = {left[low], left[high]};
                ranked.indices[number] =
                    static_cast<uint32_t>(hand_index_last(indexer_.get(), cards));
            }
        }
}

} // namespace tamarin
