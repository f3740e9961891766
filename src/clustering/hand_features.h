// What a hand is clustered by: a row of bytes, and how far two such rows are apart.
//
// Before the river it is a histogram, over all rivers to come, of the hand's pot equity against one
// random opponent in 49 bins. Row entry j (0..47) counts the rivers on which the equity lies in bin
// j + 1 or above, so that the sum of absolute differences of two rows is the earth mover's distance
// of the histograms, in bins. On the turn an entry is the count, 0 to 46; on the flop and before it
// is scaled to 0..255 (scaledCount).
//
// On the river it is OCHS (opponent cluster hand strength; Johanson, Burch, Valenzano and Bowling
// 2013): the pot equity against each of up to eight clusters of starting hands, 0..255, and the
// distance is Euclid's; its square is what is compared and added up.
//
// Entries grow with the strength of the hand in both.
#pragma once

#include "abstraction/river_sweep.h"

#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

namespace tamarin {

// Pot equity on the river against one opponent, in halves: a win is two, a tie one.
inline constexpr uint32_t riverPotMost = 2 * riverDeals2;

inline constexpr uint32_t equityBins = 49;
inline constexpr size_t histogramWidth = equityBins - 1;
constexpr uint32_t equityBin(uint32_t pot) {
    return pot == riverPotMost ? equityBins - 1 : pot * equityBins / riverPotMost;
}

// count of total as 0..255, rounded to the nearest, a half up.
constexpr uint8_t scaledCount(uint64_t count, uint64_t total) {
    return static_cast<uint8_t>((2 * 255 * count + total) / (2 * total));
}

inline constexpr size_t strengthWidth = 8; // clusters of starting hands at most

struct HistogramMetric {
    static constexpr size_t width = histogramWidth;
    static uint32_t distance(const uint8_t* a, const uint8_t* b) {
        // The processor's sum of absolute differences, by name: g++ and clang each see it in a loop
        // that the other one unrolls.
        static_assert(width % 16 == 0);
        __m128i sums = _mm_setzero_si128();
        for (size_t i = 0; i < width; i += 16)
            sums = _mm_add_epi64(sums, _mm_sad_epu8(load(a + i), load(b + i)));
        const __m128i upper = _mm_unpackhi_epi64(sums, sums);
        return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_add_epi64(sums, upper)));
    }
    // Whether rows whose entries add up to sums that far apart can be at most so distant.
    static bool canBeWithin(uint32_t sumDifference, uint32_t distance) {
        return sumDifference <= distance;
    }

private:
    static __m128i load(const uint8_t* bytes) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    }
};

struct StrengthMetric {
    static constexpr size_t width = strengthWidth;
    static uint32_t distance(const uint8_t* a, const uint8_t* b) {
        int32_t sum = 0;
        for (size_t i = 0; i < width; ++i) {
            const int32_t difference = a[i] - b[i];
            sum += difference * difference;
        }
        return static_cast<uint32_t>(sum);
    }
    // By Cauchy and Schwarz: the square of a sum of n numbers is at most n times their squares.
    static bool canBeWithin(uint32_t sumDifference, uint32_t distance) {
        return sumDifference * sumDifference <= width * distance;
    }
};

template <class Metric>
uint32_t sumOfRow(const uint8_t* row) {
    uint32_t sum = 0;
    for (size_t i = 0; i < Metric::width; ++i)
        sum += row[i];
    return sum;
}

} // namespace tamarin
