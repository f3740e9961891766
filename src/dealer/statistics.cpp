#include "dealer/statistics.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <iterator>
#include <limits>

namespace tamarin {

void RunningMoments::add(double value) {
    ++count_;
    const double distance = value - mean_;
    mean_ += distance / static_cast<double>(count_);
    squares_ += distance * (value - mean_);
}

double RunningMoments::variance() const {
    return count_ < 2 ? 0 : squares_ / static_cast<double>(count_ - 1);
}

Interval interval95(const RunningMoments& moments) {
    if (moments.count() < 2)
        return {moments.mean(), std::numeric_limits<double>::infinity()};
    const double error = std::sqrt(moments.variance() / static_cast<double>(moments.count()));
    return {moments.mean(), studentQuantile975(moments.count() - 1) * error};
}

double studentQuantile975(uint64_t degrees) {
    assert(degrees > 0);
    constexpr double exact[] = {12.706205, 4.302653, 3.182446};
    if (degrees <= std::size(exact))
        return exact[degrees - 1];
    constexpr double x = 1.959963984540054;
    constexpr double x2 = x * x;
    constexpr double g1 = x * (x2 + 1) / 4;
    constexpr double g2 = x * ((5 * x2 + 16) * x2 + 3) / 96;
    constexpr double g3 = x * (((3 * x2 + 19) * x2 + 17) * x2 - 15) / 384;
    constexpr double g4 = x * ((((79 * x2 + 776) * x2 + 1482) * x2 - 1920) * x2 - 945) / 92160;
    const double n = static_cast<double>(degrees);
    return x + (g1 + (g2 + (g3 + g4 / n) / n) / n) / n;
}

// Values below 32 ns have a bucket each; above, every doubling is cut into 32.
int LatencyHistogram::bucketOf(uint64_t nanoseconds) {
    if (nanoseconds < steps)
        return static_cast<int>(nanoseconds);
    const int shift = static_cast<int>(std::bit_width(nanoseconds)) - 1 - stepBits;
    return (shift + 1) * steps + static_cast<int>((nanoseconds >> shift) & (steps - 1));
}

uint64_t LatencyHistogram::middleOf(int bucket) {
    if (bucket < steps)
        return static_cast<uint64_t>(bucket);
    const int shift = bucket / steps - 1;
    const uint64_t low = (static_cast<uint64_t>(steps) + static_cast<uint64_t>(bucket % steps))
                         << shift;
    return low + ((uint64_t{1} << shift) >> 1);
}

void LatencyHistogram::add(Duration duration) {
    const auto nanoseconds = static_cast<uint64_t>(std::max<int64_t>(duration.count(), 0));
    ++buckets_[static_cast<size_t>(bucketOf(nanoseconds))];
    ++count_;
    longest_ = std::max(longest_, duration);
}

Duration LatencyHistogram::quantile(double share) const {
    const double wanted = std::ceil(share * static_cast<double>(count_));
    uint64_t seen = 0;
    for (size_t bucket = 0; bucket < buckets_.size(); ++bucket) {
        seen += buckets_[bucket];
        if (seen > 0 && static_cast<double>(seen) >= wanted)
            return std::min(Duration(static_cast<int64_t>(middleOf(static_cast<int>(bucket)))),
                            longest_);
    }
    return Duration{0};
}

} // namespace tamarin
