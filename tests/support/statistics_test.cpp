#include "support/statistics.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

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

// The series (Abramowitz and Stegun 1964, 26.7.5), added up with forty digits.
TEST(StudentQuantile, IsTheSeriesFromFourDegreesOn) {
    EXPECT_NEAR(studentQuantile975(4), 2.775582224236797930, 1e-14);
    EXPECT_NEAR(studentQuantile975(5), 2.570308227150842714, 1e-14);
    EXPECT_NEAR(studentQuantile975(7), 2.364575373950131286, 1e-14);
    EXPECT_NEAR(studentQuantile975(30), 2.042272425276678012, 1e-14);
}

} // namespace tamarin::test
