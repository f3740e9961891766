// The direct evaluator: a hand's showdown rank from four rank masks, without a look-up table on
// disk.
//
// It follows the same rules as rankCardSet, but takes the masks apart from the cards, so that work
// on whole classes of boards (ranks first, suits only where a flush is possible) can build the
// masks one rank at a time and evaluate each class once.
#pragma once

#include "game/showdown.h"

#include <cstdint>

namespace tamarin {

// Bit r of each 13-bit mask: rank r is held at least once, twice, three times, four times.
struct RankMasks {
    uint32_t any = 0;
    uint32_t pairs = 0;
    uint32_t trips = 0;
    uint32_t quads = 0;
};

// The masks with one more card of the rank. A fifth card of a rank is not noticed.
inline RankMasks withRank(RankMasks masks, uint32_t rank) {
    const uint32_t bit = 1U << rank;
    masks.quads |= masks.trips & bit;
    masks.trips |= masks.pairs & bit;
    masks.pairs |= masks.any & bit;
    masks.any |= bit;
    return masks;
}

// All cards of the deck.
inline constexpr CardSet allCards = 0x1fff1fff1fff1fff;

// The ranks of a suit's cards.
inline uint32_t suitMask(CardSet cards, uint32_t suit) {
    return static_cast<uint32_t>(cards >> (16 * suit)) & 0x1fff;
}

// The masks of concrete cards.
inline RankMasks rankMasksOf(CardSet cards) {
    const auto c = static_cast<uint32_t>(cards & 0x1fff);
    const auto d = static_cast<uint32_t>(cards >> 16 & 0x1fff);
    const auto h = static_cast<uint32_t>(cards >> 32 & 0x1fff);
    const auto s = static_cast<uint32_t>(cards >> 48 & 0x1fff);
    RankMasks masks;
    masks.any = c | d | h | s;
    masks.pairs = (c & d) | (h & s) | ((c | d) & (h | s));
    masks.trips = ((c & d) & (h | s)) | ((h & s) & (c | d));
    masks.quads = c & d & h & s;
    return masks;
}

// The rank of the hand as if no flush were possible; comparable with oneSuitVal, and the hand's
// true rank is the larger of the two: what beats a flush here (a full house, four of a kind) is
// larger than any flush that is not straight, and everything else is smaller.
inline int rankWithoutFlush(const ShowdownTables& tables, RankMasks masks) {
    if (masks.pairs == 0)
        return tables.anySuitVal[masks.any];
    if (masks.quads != 0) {
        const uint32_t four = tables.topBit[masks.quads];
        return tables.quadsVal[four] + tables.topBit[masks.any & ~(1U << four)];
    }
    if (masks.trips != 0) {
        const uint32_t three = tables.topBit[masks.trips];
        const uint32_t rest = masks.pairs & ~(1U << three);
        if (rest != 0)
            return tables.tripsVal[three] + tables.topBit[rest] +
                   (fullHouseRank - threeOfAKindRank);
        const int straight = tables.anySuitVal[masks.any];
        if (straight >= straightRank)
            return straight;
        return tables.tripsVal[three] + tables.tripsOtherVal[masks.any & ~(1U << three)];
    }
    const int straight = tables.anySuitVal[masks.any];
    if (straight >= straightRank)
        return straight;
    const uint32_t pair = tables.topBit[masks.pairs];
    const uint32_t others = masks.any & ~(1U << pair);
    const uint32_t rest = masks.pairs & ~(1U << pair);
    if (rest == 0)
        return tables.pairsVal[pair] + tables.pairOtherVal[others];
    const uint32_t second = tables.topBit[rest];
    return tables.pairsVal[pair] + tables.twoPairOtherVal[second] +
           tables.topBit[others & ~(1U << second)];
}

} // namespace tamarin
