// Where hold'em training takes the buckets of a deal from.
#pragma once

#include "game/game.h"

#include <cstdint>

class EquityTables;

namespace tamarin {

// Two or three players, a full deck, two hole cards, a board of 0, 3, 1 and 1 cards: what the
// tables know hands of.
bool isHoldem(const Game& game);

class HoldemBuckets {
public:
    virtual ~HoldemBuckets() = default;
    // The bucket, 0..9, of seat's hand in a round with players (2 or 3) still acting. cards: two
    // hole cards, then the board up to that round. Asked by many threads at once.
    virtual uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const = 0;
};

// The hold'em tables' buckets, every one of them 0..9: training and evaluation take a bucket for a
// place in their arrays.
class TableBuckets : public HoldemBuckets {
public:
    // For games of 2 to so many players. Reads their tables through, and throws std::runtime_error
    // with one line where one is damaged or could not be read; see
    // EquityTables::requireHoldemTables.
    explicit TableBuckets(EquityTables& tables, int players = 3);
    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override;

private:
    EquityTables& tables_;
};

// Every bucket of one deal, [round][acting players][seat]; acting players 2, and 3 in a
// three-player game. One player left to act (somebody is all-in) counts as two. The two-player
// tables have two seats; a third one takes the second's, as the three-player tables do with their
// utilities.
struct DealBuckets {
    uint8_t of[MAX_ROUNDS][4][3];
};
void fillDealBuckets(const Game& game, const State& deal, const HoldemBuckets& source,
                     DealBuckets& buckets);

} // namespace tamarin
