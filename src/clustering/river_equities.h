// The pot equity of every holding on every river board that is distinct up to suits, against one
// random opponent; and the way from them to shorter boards.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/equity_counts.h"
#include "abstraction/large_buffer.h"
#include "abstraction/work.h"
#include "clustering/hand_features.h"
#include "support/result.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace tamarin {

// Wins in halves, 0..riverPotMost, of the holdings of a river board, numbered as in boards.h.
void riverPots(const uint8_t* board, uint16_t* pots);

// By river board (rivers' numbers) and holding.
template <class Entry>
class RiverTable {
public:
    static size_t memoryBytes() { return boardClasses[2] * riverHoldings * sizeof(Entry); }

    // make(pot): the entry of a holding. Some seconds of work, reported in boards.
    template <class Make>
    static Result<RiverTable> compute(const BoardSet& rivers, const Work& work, const Make& make) {
        auto taken =
            LargeBuffer<Entry>::take(rivers.size() * riverHoldings, "the equities of river hands");
        if (!taken)
            return Error{taken.error()};
        RiverTable table;
        table.entries_ = std::move(*taken);
        const bool done = forEach(work, rivers.size(), [&](size_t board) {
            std::array<uint16_t, riverHoldings> pots;
            riverPots(rivers.board(board), pots.data());
            std::transform(pots.begin(), pots.end(), &table.entries_[board * riverHoldings], make);
        });
        if (!done)
            return stopped();
        return table;
    }

    const Entry* row(size_t board) const { return &entries_[board * riverHoldings]; }

private:
    LargeBuffer<Entry> entries_;
};

// The bin of each holding's equity, and the equity itself.
Result<RiverTable<uint8_t>> riverBins(const BoardSet& rivers, const Work& work);
Result<RiverTable<uint16_t>> riverPotTable(const BoardSet& rivers, const Work& work);

// Where the cards that a board leaves lie on the river board that it grows into by some cards.
struct GrownBoard {
    size_t number; // of the river board
    size_t count = 0;
    std::array<uint8_t, deckCards> position{}; // among the board's cards left, ascending
    std::array<uint8_t, deckCards> place{};    // among those that the river's representative leaves
};
// board: cards of it, to which the cards left at the positions dealt are added, five in all.
GrownBoard growToRiver(const BoardSet& rivers, const uint8_t* board, int cards, const uint8_t* left,
                       size_t cardsLeft, const size_t* dealt);

// Calls visit(holding, entry) for every holding of the grown board: its number on the shorter one,
// and the river's entry.
template <class Entry, class Visit>
void visitHoldings(const GrownBoard& grown, const Entry* row, const Visit& visit) {
    for (size_t high = 1; high < grown.count; ++high) {
        const size_t first = holdingNumber(0, grown.position[high]);
        const uint32_t placeOfHigh = grown.place[high];
        for (size_t low = 0; low < high; ++low) {
            const uint32_t placeOfLow = grown.place[low];
            const uint32_t a = std::min(placeOfLow, placeOfHigh);
            const uint32_t b = std::max(placeOfLow, placeOfHigh);
            visit(first + grown.position[low], row[b * (b - 1) / 2 + a]);
        }
    }
}

// Calls visit(holding, entry) for every river that a board of three or four cards can grow into (in
// no order of dealing: a flop has 1,176 of them, a holding meets 1,081) and every holding.
template <class Entry, class Visit>
void visitRivers(const BoardSet& rivers, const RiverTable<Entry>& table, const uint8_t* board,
                 int cards, const Visit& visit) {
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(board, cards, left);
    const auto visitGrown = [&](const size_t* dealt) {
        const GrownBoard grown = growToRiver(rivers, board, cards, left, cardsLeft, dealt);
        visitHoldings(grown, table.row(grown.number), visit);
    };
    for (size_t first = 0; first < cardsLeft; ++first) {
        if (cards == 4) {
            visitGrown(&first);
            continue;
        }
        for (size_t second = 0; second < first; ++second) {
            const size_t dealt[] = {first, second};
            visitGrown(dealt);
        }
    }
}

} // namespace tamarin
