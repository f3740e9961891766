// Counting what one or two random opponents hold without enumerating them.
//
// On a full board every two-card hand of the unknown cards is beaten by ours, tied with it or
// better. For one opponent the numbers of beaten and tied hands say everything. Two opponents hold
// an ordered pair of hands without a common card; with w beaten hands of which w[c] contain card c,
// there are
//
//   w * w - sum over c of w[c]^2 + w        pairs of beaten hands
//   w * t - sum over c of w[c] * t[c]       pairs of a beaten and a tied hand
//   t * t - sum over c of t[c]^2 + t        pairs of tied hands
//
// since the sum counts a pair once for each card in common, and a hand has two cards in common with
// itself. Cards that are interchangeable (the same rank, where the suit does not matter) are
// counted once, with a multiplicity.
#pragma once

#include "eval/equity.h"

#include <cstdint>

namespace tamarin {

struct OpponentTally {
    uint64_t beaten = 0;
    uint64_t tied = 0;
    // Sums over the cards; needed for two opponents alone.
    uint64_t beatenSquares = 0;
    uint64_t tiedSquares = 0;
    uint64_t beatenTied = 0;

    // Adds a card, or times cards alike, that w beaten hands and t tied hands contain.
    void addCard(uint64_t w, uint64_t t, uint64_t times = 1) {
        beatenSquares += times * w * w;
        tiedSquares += times * t * t;
        beatenTied += times * w * t;
    }
};

inline constexpr uint64_t choose2(uint64_t n) {
    return n * (n - 1) / 2;
}

// Ways to deal `opponents` (0, 1, 2) random hands from the given number of unknown cards, in order.
inline uint64_t opponentDeals(uint64_t unknownCards, int opponents) {
    uint64_t deals = 1;
    for (int i = 0; i < opponents; ++i, unknownCards -= 2)
        deals *= choose2(unknownCards);
    return deals;
}

// Counts a board, or `times` boards alike, on which our hand is best among the known hands and tied
// with alreadyTied of them. The caller counts the deals, since those on boards that are lost to a
// known hand count as well.
inline void countBoard(DealCounts& counts, const OpponentTally& tally, int opponents,
                       size_t alreadyTied, uint64_t times) {
    uint64_t* best = &counts.best[alreadyTied];
    const uint64_t w = tally.beaten;
    const uint64_t t = tally.tied;
    switch (opponents) {
    case 0:
        best[0] += times;
        break;
    case 1:
        best[0] += times * w;
        best[1] += times * t;
        break;
    default:
        best[0] += times * (w * w + w - tally.beatenSquares);
        best[1] += times * 2 * (w * t - tally.beatenTied);
        best[2] += times * (t * t + t - tally.tiedSquares);
    }
}

} // namespace tamarin
