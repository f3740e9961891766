// Hand values: category << 12 | rank within the category, counted from 1. Larger is better and
// equal values are equal hands. Categories run from 1 (high card) to 9 (straight flush).
//
//   bits 12..15  category 1..9
//   bits  0..11  rank within it: 1..1277, 2860, 858, 858, 10, 1277, 156, 156, 10
//
// The rules engine ranks hands of any size on a scale with gaps; hands of five to seven cards take
// only 7,462 of those ranks. The two scales correspond one to one in the same order, and so do the
// dense ranks 1..7462.
#pragma once

#include "game/showdown.h"

#include <array>
#include <cstdint>
#include <string>

namespace tamarin {

inline constexpr uint32_t handCategories = 9;
inline constexpr uint32_t handClasses = 7462;               // distinct hands of five or more cards
inline constexpr uint32_t largestHandValue = 9U << 12 | 10; // a royal flush
inline constexpr uint32_t handValueCount = largestHandValue + 1;
static_assert(handValueCount == 36875);

// Hands within each category, weakest category first.
inline constexpr std::array<uint32_t, handCategories> categorySizes{1277, 2860, 858, 858, 10,
                                                                    1277, 156,  156, 10};

// Index 0 is a high card: "High card", "One pair", ... "Straight flush".
extern const std::array<const char*, handCategories> categoryNames;

// The value of a hand of five to seven cards from its showdown rank (0..12115); 0 when no such hand
// has this rank.
uint32_t handValueOfRank(int showdownRank);

// 1..7462 in the order of the values; 0 when no hand has this value.
uint32_t denseRankOfValue(uint32_t value);

// Ranks a hand of five to seven cards by the rules engine, on this scale.
inline uint32_t handValueOf(CardSet cards) {
    return handValueOfRank(rankCardSet(cards));
}

// What a person calls the hand of five to seven cards: "Full house, kings over threes",
// "Straight flush, ace high (royal flush)".
std::string describeHand(CardSet cards);

} // namespace tamarin
