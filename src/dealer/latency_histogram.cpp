#include "dealer/latency_histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace tamarin {

// Values below 32 ns have a bin each; above, every doubling is cut into 32.
int LatencyHistogram::binOf(uint64_t nanoseconds) {
    if (nanoseconds < steps)
        return static_cast<int>(nanoseconds);
    const int shift = static_cast<int>(std::bit_width(nanoseconds)) - 1 - stepBits;
    return (shift + 1) * steps + static_cast<int>((nanoseconds >> shift) & (steps - 1));
}

uint64_t LatencyHistogram::middleOf(int bin) {
    if (bin < steps)
        return static_cast<uint64_t>(bin);
    const int shift = bin / steps - 1;
    const uint64_t low = (static_cast<uint64_t>(steps) + static_cast<uint64_t>(bin % steps))
                         << shift;
    return low + ((uint64_t{1} << shift) >> 1);
}

void LatencyHistogram::add(Duration duration) {
    const auto nanoseconds = static_cast<uint64_t>(std::max<int64_t>(duration.count(), 0));
    ++bins_[static_cast<size_t>(binOf(nanoseconds))];
    ++count_;
    longest_ = std::max(longest_, duration);
}

Duration LatencyHistogram::quantile(double share) const {
    const double wanted = std::ceil(share * static_cast<double>(count_));
    uint64_t seen = 0;
    for (size_t bin = 0; bin < bins_.size(); ++bin) {
        seen += bins_[bin];
        if (seen > 0 && static_cast<double>(seen) >= wanted)
            return std::min(Duration(static_cast<int64_t>(middleOf(static_cast<int>(bin)))),
                            longest_);
    }
    return Duration{0};
}

} // namespace tamarin
