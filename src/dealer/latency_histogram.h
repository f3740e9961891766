// How long answers took.
#pragma once

#include "support/clock.h"

#include <array>
#include <cstdint>

namespace tamarin {

// Durations in bounded memory: counts in bins whose width is at most 1/32 of their value, so a
// quantile is right to about 3 %. From a nanosecond to centuries.
class LatencyHistogram {
public:
    void add(Duration duration);
    uint64_t count() const { return count_; }
    Duration longest() const { return longest_; }
    // The time within which that share (0..1) of the answers came; 0 when there were none.
    Duration quantile(double share) const;

private:
    static constexpr int stepBits = 5;
    static constexpr int steps = 1 << stepBits;
    static int binOf(uint64_t nanoseconds);
    static uint64_t middleOf(int bin);

    std::array<uint64_t, steps*(64 - stepBits + 1)> bins_{};
    uint64_t count_ = 0;
    Duration longest_{0};
};

} // namespace tamarin
