// The histograms of river equity (hand_features.h) of every hand before the river.
//
// Whole rows of holdings at a time: a board's histograms are sums over the river boards that it
// grows into, whose bins are computed once.
#pragma once

#include "abstraction/boards.h"
#include "clustering/river_equities.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tamarin {

using HistogramRow = std::array<uint8_t, histogramWidth>;
inline constexpr uint32_t turnRiverCount = 46;          // rivers that a turn hand can meet
inline constexpr uint32_t flopRiverCount = 47 * 46 / 2; // pairs of turn and river cards

class EquityHistograms {
public:
    EquityHistograms(const BoardSet& rivers, const RiverTable<uint8_t>& bins)
        : rivers_(rivers), bins_(bins) {}

    // One row for each of the board's holdings, numbered as in boards.h. Four cards.
    void turnRows(const uint8_t* board, HistogramRow* rows) const;
    // The same for three cards, as counts of turn and river pairs.
    using Counts = std::array<uint16_t, histogramWidth>;
    void flopCounts(const uint8_t* board, Counts* counts) const;

    // Of one turn hand: two hole cards, then four board cards, any cards in any order.
    HistogramRow turnRow(const uint8_t* cards) const;

private:
    const BoardSet& rivers_;
    const RiverTable<uint8_t>& bins_;
};

// Counts of a flop hand as its row.
HistogramRow scaledRow(const EquityHistograms::Counts& counts);

// Every flop hand's row by hand index, and every starting hand's.
struct EarlyHistograms {
    std::vector<HistogramRow> flop;
    std::vector<uint8_t> flopHands; // of the deck that each hand index stands for
    std::array<HistogramRow, roundSizes[0]> preflop{};
    // The sum of a starting hand's bins over everything that can come, which is its rank in
    // strength; and over how much.
    std::array<uint64_t, roundSizes[0]> preflopStrength{};
    std::array<uint64_t, roundSizes[0]> preflopDeals{};
};
// Some seconds of work, reported in flop boards.
Result<EarlyHistograms> earlyHistograms(const EquityHistograms& histograms, const Work& work);

// Hole card pairs of the deck that each starting hand stands for: 6, 4 or 12.
std::array<uint8_t, roundSizes[0]> startingHandCounts();

// Where each starting hand comes when they are sorted by strength, weakest first; of equals the one
// with the lower number.
std::array<uint16_t, roundSizes[0]> ranksOfStartingHands(const EarlyHistograms& early);

} // namespace tamarin
