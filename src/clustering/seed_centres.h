// The centres that a clustering begins with: k-means++ (Arthur and Vassilvitskii 2007).
//
// Each next centre is a point drawn in proportion to its weight times its distance from the nearest
// centre so far; the first one in proportion to its weight alone. The distance of StrengthMetric is
// a square already, as the method wants it where means are sought; for HistogramMetric, where
// medians are, it is the distance itself.
#pragma once

#include "abstraction/work.h"
#include "clustering/point_set.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tamarin {

// Uniform below n, from 64 random bits; n at least 1.
inline uint64_t scaledBelow(uint64_t bits, uint64_t n) {
    __extension__ using Wide = unsigned __int128;
    return static_cast<uint64_t>(Wide{bits} * n >> 64U);
}

// count rows, one after the other. Where there are fewer different points, the rest are copies of
// the first point. Nothing when the work was stopped. One thread's work, reported in centres.
template <class Metric>
std::optional<std::vector<uint8_t>> seedCentres(const PointSet<Metric>& points, uint32_t count,
                                                uint64_t seed, const Work& work);

} // namespace tamarin
