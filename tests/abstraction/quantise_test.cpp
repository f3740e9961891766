#include "abstraction/quantise.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Quantise, LevelIsTheRoundedPlaceInTheRange) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> draw(0.1, 0.7);
    const TableRange range{0.1, 0.7};
    for (int i = 0; i < 100000; ++i) {
        const double entry = draw(random);
        for (const int highest : {1, 4, 100})
            ASSERT_EQ(levelOf(entry, range, highest),
                      std::round((entry - range.min) / (range.max - range.min) * highest));
    }
    // The nearest number below a half stays below.
    const TableRange unit{0, 1};
    EXPECT_EQ(levelOf(0.5, unit, 1), 1);
    EXPECT_EQ(levelOf(std::nextafter(0.5, 0), unit, 1), 0);
}

TEST(Quantise, EmptyRangeAndNoNumberGiveZero) {
    EXPECT_EQ(levelOf(0.5, TableRange{0.5, 0.5}, 100), 0);
    EXPECT_EQ(levelOf(std::numeric_limits<double>::quiet_NaN(), TableRange{0, 1}, 100), 0);
    EXPECT_EQ(rangeOf({}).min, DBL_MAX);
}

TEST(Quantise, GreatestOfNegativesIsTheSmallestPositive) {
    const std::vector<double> table{-3, -1};
    EXPECT_EQ(rangeOf(table).min, -3);
    EXPECT_EQ(rangeOf(table).max, DBL_MIN);
}

TEST(Quantise, ThreadsMakeNoDifference) {
    std::mt19937_64 random(8);
    std::vector<double> table(300'000);
    for (double& entry : table)
        entry = static_cast<double>(random() % 1000) / 999;
    const TableRange range = rangeOf(table, 1);
    EXPECT_EQ(range.min, rangeOf(table, 3).min);
    EXPECT_EQ(range.max, rangeOf(table, 3).max);
    std::vector<uint8_t> one(table.size());
    std::vector<uint8_t> three(table.size());
    clustersOf(table, range, one.data(), 1);
    clustersOf(table, range, three.data(), 3);
    EXPECT_EQ(one, three);
    holdemBucketsOf(table, range, table, range, one.data(), 1);
    holdemBucketsOf(table, range, table, range, three.data(), 3);
    EXPECT_EQ(one, three);
    for (const uint8_t bucket : one)
        ASSERT_LT(bucket, holdemBuckets);
}

} // namespace
} // namespace tamarin::test
