// Exact equity of a range against one or two others, board by board.
//
// On a full board every hand of every range is ranked once, and the hands are gone through from the
// weakest to the strongest. What they beat so far is kept as a number of hands and, for each card,
// the number of those that contain it; from these follows how many hands, or pairs of hands of two
// opponents, a hand beats that share no card with it or each other (opponent_tally.h has the
// formulas, here for two different ranges). So a range costs what its hands cost and not what the
// combinations of all hands do. Boards that come to the same by exchanging suits, in a way that
// leaves every range as it is, are counted once.
#pragma once

#include "eval/equity.h"
#include "eval/hand_evaluator.h"
#include "eval/hand_range.h"
#include "eval/suit_order.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class RangeSweep {
public:
    // ranges: of the player asked for and of one or two opponents, the range of all hands for a
    // random one. Some choice of a hand of each must share no card with another or the board.
    RangeSweep(std::span<const HandRange> ranges, CardSet board);

    // What count() takes for all boards, in seconds of one core, before they are listed.
    double seconds() const;

    // Finds the boards to be counted, and says how many: 2,598,960 at most, of 16 bytes each. Comes
    // before count().
    size_t listBoards();

    // DealCounts::best of the listed boards from first to last, the latter excluded; those of all
    // boards together belong to deals(). Any thread.
    using Best = decltype(DealCounts::best);
    Best count(size_t first, size_t last) const;

    // Of all boards together.
    uint64_t deals() const { return deals_; }

private:
    // Full boards that come to the same, and how many they are.
    struct SweptBoard {
        CardSet cards;
        uint32_t times;
    };
    // A hand of any of the ranges; members has a bit for each range that it belongs to.
    struct Holding {
        HandKey key;
        uint8_t low;
        uint8_t high;
        uint8_t members;
    };
    class OneOpponent;
    class TwoOpponents;

    template <class Opponents>
    Best countWith(size_t first, size_t last) const;
    template <class Opponents>
    uint64_t combinations() const;

    CardSet board_;
    CardSet free_; // cards that a board may be completed with
    int missing_;
    bool twoOpponents_;
    bool alike_; // the two opponents' ranges are the same
    size_t own_; // hands of the range asked for
    std::vector<Holding> holdings_;
    std::vector<SuitOrder> renamings_; // which change neither the board nor a range
    std::vector<SweptBoard> boards_;
    uint64_t deals_ = 0;
};

} // namespace tamarin
