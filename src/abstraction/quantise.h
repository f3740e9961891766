// Equities and utilities cut into levels by where they lie in their table's range.
//
// All of it runs over whole tables on all cores, and gives the same with any number of them.
// An entry gets the nearest level, halves upwards; 0 where the range is empty (all entries are
// equal, or there are none) and for an entry that is NaN.
#pragma once

#include <cfloat>
#include <cstdint>
#include <span>

namespace tamarin {

// A table's least and greatest entry. The greatest starts from the smallest positive normal number,
// not from the least number, so the range of a table with only negative entries ends just above 0.
struct TableRange {
    double min = DBL_MAX;
    double max = DBL_MIN;
};
TableRange rangeOf(std::span<const double> table, int threads = 0);

// The highest level of each: a cluster is 0..100.
inline constexpr int clusterLevels = 100;
inline constexpr int holdemEquityLevels = 4;  // 0..4
inline constexpr int holdemUtilityLevels = 1; // 0..1
inline constexpr int holdemBuckets = (holdemEquityLevels + 1) * (holdemUtilityLevels + 1);

inline uint8_t levelOf(double entry, TableRange range, int highest) {
    const double place = (entry - range.min) / (range.max - range.min) * highest;
    if (!(place > 0 && place < 255))
        return 0;
    // std::round's result, without its call: halves go up.
    const auto whole = static_cast<int>(place);
    return static_cast<uint8_t>(whole + (place - whole >= 0.5));
}

// clusters receives levelOf(..., clusterLevels) of every equity.
void clustersOf(std::span<const double> equities, TableRange range, uint8_t* clusters,
                int threads = 0);

// buckets receives 5 x the utility's level + the equity's, for every hand.
void holdemBucketsOf(std::span<const double> utilities, TableRange utilityRange,
                     std::span<const double> equities, TableRange equityRange, uint8_t* buckets,
                     int threads = 0);

} // namespace tamarin
