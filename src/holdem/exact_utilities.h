// Utilities of the two-player auxiliary games, counted over every opponent: what
// UtilityFiller::fill would come to with ever more deals, all opponents being equally likely.
//
// An end of the betting is reached with a probability that is a product of one factor for each
// seat, which depends on the seat's bucket alone. So a hand's utility is a sum over the ends of
//
//   own factor x (payoffs x sums of the opponents' factors over those worse, tied and better)
//
// and the sums come from one sweep over the board's sorted holdings, for all factors at once
// (abstraction/showdown_sweep.h). Ends that the opponent reaches alike share a factor. The factors
// are rounded to multiples of 2^-40: the sums are then exact, and a hand has the same utility to
// the bit on every board and in every place where the sweep meets it.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/showdown_sweep.h"
#include "holdem/auxiliary_deals.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

class ExactUtilities {
public:
    // auxiliary: a game of two players on boards of the round, which may change afterwards.
    // clusters: of the round, as for UtilityFiller, the hero's own oddity included; kept.
    ExactUtilities(const AuxiliaryGame& auxiliary, const uint8_t* clusters);

    // utilities receives what the seat wins on average with each holding of a board. indices: the
    // holdings' hand indices, numbered as in boards.h. Any number of threads may call it.
    void ofBoard(const HoldingOrder& order, const uint32_t* indices, size_t seat,
                 double* utilities) const;

private:
    static constexpr size_t lanes = 4; // factors that a sweep takes at a time
    using Row = WeightRow<double, lanes>;
    // By the own bucket: what an opponent's factor adds where the opponent is worse, at most as
    // good, and in any case.
    struct Terms {
        Row beaten;
        Row notBetter;
        Row any;
    };
    struct Part {
        std::array<Row, AuxiliaryGame::numBuckets> opponent; // factors by bucket
        std::array<Terms, AuxiliaryGame::numBuckets> own;
    };

    const uint8_t* clusters_;
    std::array<std::vector<Part>, 2> parts_; // by seat
};

} // namespace tamarin
