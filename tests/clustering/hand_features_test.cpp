#include "clustering/hand_features.h"

#include "clustering/plain_clustering.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(HandFeatures, BinsCutTheEquityInto49) {
    EXPECT_EQ(equityBin(0), 0U);
    EXPECT_EQ(equityBin(40), 0U); // 40 / 1980 is just below 1 / 49
    EXPECT_EQ(equityBin(41), 1U);
    EXPECT_EQ(equityBin(990), 24U);
    EXPECT_EQ(equityBin(1939), 47U);
    EXPECT_EQ(equityBin(1940), 48U);
    EXPECT_EQ(equityBin(1980), 48U);
}

TEST(HandFeatures, CountsAreScaledToBytes) {
    EXPECT_EQ(scaledCount(0, 1081), 0);
    EXPECT_EQ(scaledCount(1081, 1081), 255);
    EXPECT_EQ(scaledCount(2, 1081), 0); // 0.47
    EXPECT_EQ(scaledCount(3, 1081), 1); // 0.71
    EXPECT_EQ(scaledCount(1, 510), 1);  // a half goes up
    EXPECT_EQ(scaledCount(509, 510), 255);
}

TEST(HandFeatures, TheDistanceOfRowsIsTheEarthThatMoves) {
    // All of 46 rivers in bin 10, and all in bin 30: each moves 20 bins.
    std::array<uint8_t, histogramWidth> weak{};
    std::array<uint8_t, histogramWidth> strong{};
    for (size_t j = 0; j < histogramWidth; ++j) {
        weak[j] = j + 1 <= 10 ? 46 : 0;
        strong[j] = j + 1 <= 30 ? 46 : 0;
    }
    EXPECT_EQ(HistogramMetric::distance(weak.data(), strong.data()), 46U * 20);
    EXPECT_EQ(HistogramMetric::distance(strong.data(), weak.data()), 46U * 20);
    EXPECT_EQ(sumOfRow<HistogramMetric>(strong.data()), 46U * 30);
}

template <class Metric>
void expectBoundsHold() {
    const auto rows = clumpedRows<Metric>(60, 9);
    for (const auto& a : rows)
        for (const auto& b : rows) {
            const uint32_t distance = Metric::distance(a.data(), b.data());
            EXPECT_EQ(distance,
                      plainDistance(static_cast<const Metric*>(nullptr), a.data(), b.data()));
            const uint32_t sumOfA = sumOfRow<Metric>(a.data());
            const uint32_t sumOfB = sumOfRow<Metric>(b.data());
            const uint32_t apart = std::max(sumOfA, sumOfB) - std::min(sumOfA, sumOfB);
            EXPECT_TRUE(Metric::canBeWithin(apart, distance));
        }
}

TEST(HandFeatures, RowsWhoseSumsLieApartAreNotNear) {
    expectBoundsHold<HistogramMetric>();
    expectBoundsHold<StrengthMetric>();
    EXPECT_FALSE(HistogramMetric::canBeWithin(21, 20));
    EXPECT_FALSE(StrengthMetric::canBeWithin(9, 10)); // 81 > 80
    EXPECT_TRUE(StrengthMetric::canBeWithin(8, 8));   // eight entries, one apart each
}

} // namespace
} // namespace tamarin::test
