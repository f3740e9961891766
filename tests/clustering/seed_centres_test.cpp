#include "clustering/seed_centres.h"

#include "clustering/plain_clustering.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

template <class Metric>
class SeedCentres : public ::testing::Test {};
using Metrics = ::testing::Types<HistogramMetric, StrengthMetric>;
TYPED_TEST_SUITE(SeedCentres, Metrics);

TYPED_TEST(SeedCentres, AreThePlainOnes) {
    const PointSet<TypeParam> points(clumpedRows<TypeParam>(2500, 3), someWeights(2500, 4));
    FitOptions options;
    options.centres = 50;
    const PlainClustering<TypeParam> plain(points, options);
    for (const uint64_t seed : {1U, 2U, 3U})
        EXPECT_EQ(*seedCentres(points, 50, seed, {}), flat<TypeParam>(plain.seeds(seed)));
    EXPECT_NE(*seedCentres(points, 50, 1, {}), *seedCentres(points, 50, 2, {}));
}

TYPED_TEST(SeedCentres, TakeEveryDifferentPointWhereThereAreFew) {
    Rows<TypeParam> rows = clumpedRows<TypeParam>(5, 3);
    for (int i = 0; i < 45; ++i)
        rows.push_back(rows[static_cast<size_t>(i % 5)]);
    const PointSet<TypeParam> points(rows, {});
    const std::vector<uint8_t> seeds = *seedCentres(points, 8, 1, {});
    for (size_t i = 0; i < 5; ++i) {
        bool found = false;
        for (size_t k = 0; k < 8; ++k)
            found = found || std::equal(rows[i].begin(), rows[i].end(),
                                        seeds.begin() + static_cast<ptrdiff_t>(k * rows[i].size()));
        EXPECT_TRUE(found) << i;
    }
}

TYPED_TEST(SeedCentres, AreDrawnByWeight) {
    // The first centre alone: of two rows, one stands for three times as many hands.
    Rows<TypeParam> rows(2);
    rows[1].fill(100);
    const PointSet<TypeParam> points(rows, {6, 18});
    int heavy = 0;
    for (uint64_t seed = 0; seed < 4000; ++seed)
        heavy += (*seedCentres(points, 1, seed, {}))[0] == 100;
    EXPECT_NEAR(heavy, 3000, 120); // four standard deviations
}

TYPED_TEST(SeedCentres, StopWhenAsked) {
    const PointSet<TypeParam> points(clumpedRows<TypeParam>(20, 3), {});
    Work work;
    work.stop = [] { return true; };
    EXPECT_FALSE(seedCentres(points, 5, 1, work).has_value());
}

} // namespace
} // namespace tamarin::test
