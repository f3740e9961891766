#include "driver/holdem_hands.h"

#include "index/hand_index.h"

#include <utility>

namespace tamarin {

TableHands::TableHands(std::unique_ptr<EquityTables> tables)
    : tables_(std::move(tables)), buckets_(*tables_) {}

uint8_t TableHands::bucket(int players, int round, int seat, const uint8_t* cards) const {
    return buckets_.bucket(players, round, seat, cards);
}

double TableHands::equity(int players, int round, const uint8_t* cards) const {
    const double* const table = tables_->getEquityTable(players, round);
    return table[hand_index_last(tables_->indexer(round), cards)];
}

} // namespace tamarin
