// Equities and utilities cut into classes by where they lie in their table's range.
//
// All of it runs over whole tables on all cores, and gives the same with any number of them.
// Classes are rounded to the nearest, halves upwards. The class is 0 where the range is empty (all
// entries are equal, or there are none) and for an entry that is NaN.
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

// Classes 0..classes of an entry within its range; clusters have 100, so 0..100.
inline constexpr int clusterClasses = 100;
inline constexpr int holdemEquityClasses = 4;  // 0..4
inline constexpr int holdemUtilityClasses = 1; // 0..1
inline constexpr int holdemBuckets = (holdemEquityClasses + 1) * (holdemUtilityClasses + 1);

inline uint8_t classOf(double entry, TableRange range, int classes) {
    const double place = (entry - range.min) / (range.max - range.min) * classes;
    if (!(place > 0 && place < 255))
        return 0;
    // std::round's result, without its call: halves go up.
    const auto whole = static_cast<int>(place);
    return static_cast<uint8_t>(whole + (place - whole >= 0.5));
}

// clusters receives classOf(..., clusterClasses) of every equity.
void clustersOf(std::span<const double> equities, TableRange range, uint8_t* clusters,
                int threads = 0);

// buckets receives 5 x the utility's class + the equity's, for every hand.
void holdemBucketsOf(std::span<const double> utilities, TableRange utilityRange,
                     std::span<const double> equities, TableRange equityRange, uint8_t* buckets,
                     int threads = 0);

} // namespace tamarin
