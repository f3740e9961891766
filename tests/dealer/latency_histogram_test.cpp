#include "dealer/latency_histogram.h"

#include <cmath>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

using namespace std::chrono_literals;

TEST(LatencyHistogram, IsEmptyAtFirst) {
    const LatencyHistogram histogram;
    EXPECT_EQ(histogram.count(), 0U);
    EXPECT_EQ(histogram.quantile(0.5), 0ns);
    EXPECT_EQ(histogram.longest(), 0ns);
}

TEST(LatencyHistogram, QuantilesOfAThousand) {
    LatencyHistogram histogram;
    for (int i = 1; i <= 1000; ++i)
        histogram.add(std::chrono::microseconds(i));
    EXPECT_EQ(histogram.count(), 1000U);
    EXPECT_EQ(histogram.longest(), 1ms);
    EXPECT_NEAR(seconds(histogram.quantile(0.5)), 500e-6, 500e-6 * 0.032);
    EXPECT_NEAR(seconds(histogram.quantile(0.99)), 990e-6, 990e-6 * 0.032);
    EXPECT_EQ(histogram.quantile(1), 1ms);
    EXPECT_NEAR(seconds(histogram.quantile(0)), 1e-6, 1e-6 * 0.032);
}

TEST(LatencyHistogram, TakesTheShortestAndTheLongest) {
    LatencyHistogram histogram;
    histogram.add(Duration(-5)); // a clock that never goes back will not give it, but who knows
    histogram.add(Duration(0));
    histogram.add(Duration(31));
    histogram.add(Duration(32));
    histogram.add(Duration::max());
    EXPECT_EQ(histogram.count(), 5U);
    EXPECT_EQ(histogram.quantile(0.6), Duration(31));
    EXPECT_EQ(histogram.quantile(0.8), Duration(32));
    EXPECT_EQ(histogram.longest(), Duration::max());
}

RC_GTEST_PROP(LatencyHistogram, EveryValueIsFoundAgain, (uint32_t high, uint32_t low)) {
    const uint64_t value = (uint64_t{high} << 32 | low) >> 2;
    LatencyHistogram histogram;
    histogram.add(Duration(static_cast<int64_t>(value)));
    histogram.add(Duration::max());
    const double found = static_cast<double>(histogram.quantile(0.5).count());
    const double wanted = static_cast<double>(value);
    RC_ASSERT(std::abs(found - wanted) <= wanted / 32);
}

} // namespace tamarin::test
