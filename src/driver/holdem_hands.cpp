#include "driver/holdem_hands.h"

#include "index/hand_index.h"

#include <utility>

namespace tamarin {

TableHands::TableHands(std::unique_ptr<EquityTables> tables) : tables_(std::move(tables)) {}

uint8_t TableHands::bucket(int players, int round, int seat, const uint8_t* cards) const {
    // The tables only read the cards, but have always asked for them like this.
    return static_cast<uint8_t>(
        tables_->holdemTableIndex(players, round, seat, const_cast<uint8_t*>(cards)));
}

double TableHands::equity(int players, int round, const uint8_t* cards) const {
    const double* const table = tables_->getEquityTable(players, round);
    return table[hand_index_last(tables_->indexer(round), cards)];
}

} // namespace tamarin
