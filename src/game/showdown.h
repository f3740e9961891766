// Showdown ranking: one integer a hand, the larger the better, for any number of cards.
//
// The cards become four rank masks, one a suit, and a handful of small tables do the rest, so short
// decks and hands of fewer than five cards rank by the same rules. Within a category, hands are
// ordered by the colexicographic index of the ranks that decide them.
#pragma once

#include <array>
#include <cstdint>

// Bit suit * 16 + rank for each card held.
using CardSet = uint64_t;

inline CardSet cardBit(uint8_t card) {
    return CardSet{1} << ((card & 3U) << 4U | card >> 2U);
}

// The hand's rank, 0..12115; larger is better, equal is a tie.
int rankCardSet(CardSet cards);

// The first rank of each category. Not every value is that of a hand: a category is numbered as if
// its deciding ranks could be any, which keeps the arithmetic to one sum.
inline constexpr int onePairRank = 1287;                   // 13 choose 5 high cards lie below
inline constexpr int twoPairRank = onePairRank + 13 * 286; // 13 choose 3 kickers a pair
inline constexpr int threeOfAKindRank = 8606;
inline constexpr int straightRank = threeOfAKindRank + 13 * 78; // 13 choose 2 kickers
inline constexpr int flushRank = straightRank + 13;
inline constexpr int fullHouseRank = flushRank + 1287;
inline constexpr int fourOfAKindRank = fullHouseRank + 13 * 78;
inline constexpr int straightFlushRank = fourOfAKindRank + 13 * 13;

namespace tamarin {

// The tables behind rankCardSet, indexed by 13-bit rank masks or by rank; read-only after start-up.
struct ShowdownTables {
    static constexpr int masks = 1 << 13;
    std::array<uint8_t, masks> topBit;        // highest set bit; 0 for the empty mask
    std::array<uint16_t, masks> anySuitVal;   // straight, or high-card index of the best five
    std::array<uint16_t, masks> oneSuitVal;   // the same within a suit; 0 below five ranks
    std::array<uint16_t, masks> pairOtherVal; // kickers of a pair: best three
    std::array<uint8_t, masks> tripsOtherVal; // kickers of three of a kind: best two
    std::array<uint16_t, 13> pairsVal;
    std::array<uint16_t, 13> twoPairOtherVal;
    std::array<uint16_t, 13> tripsVal;
    std::array<uint16_t, 13> quadsVal;
};
const ShowdownTables& showdownTables();

} // namespace tamarin
