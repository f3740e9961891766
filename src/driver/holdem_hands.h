// What the hold'em agent asks of a hand: the bucket that its strategy knows the hand by, and, where
// the strategy has no answer, how strong it is.
#pragma once

#include "abstraction/EquityTables.h"
#include "holdem/buckets.h"

#include <cstdint>
#include <memory>

namespace tamarin {

class HoldemHands : public HoldemBuckets {
public:
    // The probability that the hand beats those of players - 1 opponents (players 2 or 3) with
    // random cards; a tie counts as lost. cards: two hole cards, then the board up to the round.
    virtual double equity(int players, int round, const uint8_t* cards) const = 0;
};

// The tables below lookup/; ask only for buckets and equities that are loaded. Unlike TableBuckets
// this does not read them through first, which would keep the dealer waiting. A damaged table may
// give an impossible bucket; no strategy holds such a one.
class TableHands : public HoldemHands {
public:
    explicit TableHands(std::unique_ptr<EquityTables> tables);
    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override;
    double equity(int players, int round, const uint8_t* cards) const override;
    EquityTables& tables() { return *tables_; }

private:
    std::unique_ptr<EquityTables> tables_;
};

} // namespace tamarin
