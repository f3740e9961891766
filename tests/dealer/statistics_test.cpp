#include "dealer/statistics.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using namespace tamarin;
using namespace std::chrono_literals;

namespace {

RunningMoments momentsOf(const std::vector<double>& values) {
    RunningMoments moments;
    for (const double value : values)
        moments.add(value);
    return moments;
}

} // namespace

TEST(RunningMoments, OfFiveNumbers) {
    const RunningMoments moments = momentsOf({2, 4, 4, 4, 6});
    EXPECT_EQ(moments.count(), 5U);
    EXPECT_DOUBLE_EQ(moments.mean(), 4);
    EXPECT_DOUBLE_EQ(moments.variance(), 2); // (4 + 0 + 0 + 0 + 4) / 4
}

TEST(RunningMoments, OneNumberHasNoVariance) {
    EXPECT_DOUBLE_EQ(momentsOf({7}).mean(), 7);
    EXPECT_DOUBLE_EQ(momentsOf({7}).variance(), 0);
    EXPECT_DOUBLE_EQ(momentsOf({}).mean(), 0);
}

RC_GTEST_PROP(RunningMoments, EqualTheTwoPassFormulas, (std::vector<int16_t> numbers)) {
    RC_PRE(numbers.size() >= 2);
    const std::vector<double> values(numbers.begin(), numbers.end());
    double sum = 0;
    for (const double value : values)
        sum += value;
    const double count = static_cast<double>(values.size());
    const double mean = sum / count;
    double squares = 0;
    for (const double value : values)
        squares += (value - mean) * (value - mean);
    const RunningMoments moments = momentsOf(values);
    RC_ASSERT(std::abs(moments.mean() - mean) < 1e-6);
    RC_ASSERT(std::abs(moments.variance() - squares / (count - 1)) <= 1e-6 * (1 + squares));
}

TEST(Interval, OfFiveNumbers) {
    // Four degrees of freedom: 2.776445; standard error sqrt(2 / 5).
    const Interval interval = interval95(momentsOf({2, 4, 4, 4, 6}));
    EXPECT_DOUBLE_EQ(interval.mean, 4);
    EXPECT_NEAR(interval.halfWidth, 2.776445 * std::sqrt(0.4), 0.004);
}

TEST(Interval, OfLessThanTwoNumbersIsInfinite) {
    EXPECT_TRUE(std::isinf(interval95(momentsOf({})).halfWidth));
    EXPECT_TRUE(std::isinf(interval95(momentsOf({1})).halfWidth));
}

// Values of the usual tables.
TEST(StudentQuantile, AgreesWithTheTables) {
    const std::vector<std::pair<uint64_t, double>> table = {
        {1, 12.706}, {2, 4.303},  {3, 3.182},   {4, 2.776},     {5, 2.571},
        {9, 2.262},  {29, 2.045}, {100, 1.984}, {10000, 1.960}, {30000000, 1.960}};
    for (const auto& [degrees, value] : table)
        EXPECT_NEAR(studentQuantile975(degrees), value, 0.005) << degrees;
    EXPECT_NEAR(studentQuantile975(9), 2.262157, 1e-4);
}

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
