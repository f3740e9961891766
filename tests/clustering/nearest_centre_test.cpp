#include "clustering/nearest_centre.h"

#include "clustering/plain_clustering.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

template <class Metric>
class NearestCentre : public ::testing::Test {};
using Metrics = ::testing::Types<HistogramMetric, StrengthMetric>;
TYPED_TEST_SUITE(NearestCentre, Metrics);

template <class Metric>
Rows<Metric> rowsOf(const std::vector<uint8_t>& bytes) {
    Rows<Metric> rows(bytes.size() / Metric::width);
    for (size_t i = 0; i < rows.size(); ++i)
        std::copy_n(&bytes[i * Metric::width], Metric::width, rows[i].begin());
    return rows;
}

TYPED_TEST(NearestCentre, IsThePlainOne) {
    for (const size_t count : {1U, 2U, 7U, 8U, 9U, 64U, 333U}) {
        std::vector<uint8_t> centres = flat<TypeParam>(clumpedRows<TypeParam>(count, count));
        sortCentres<TypeParam>(centres);
        const Rows<TypeParam> rows = rowsOf<TypeParam>(centres);
        const NearestCentres<TypeParam> nearest(centres);
        ASSERT_EQ(nearest.size(), count);
        uint32_t guess = 0;
        for (const auto& row : clumpedRows<TypeParam>(500, 1000)) {
            const Nearest plain = plainNearest<TypeParam>(rows, row.data());
            EXPECT_EQ(nearest.find(row.data()), plain);
            EXPECT_EQ(nearest.find(row.data(), guess), plain);
            guess = static_cast<uint32_t>((guess + 5) % count);
        }
    }
}

TYPED_TEST(NearestCentre, TakesTheFirstOfEquals) {
    // Three rows, each twelve times over: blocks of eight begin in the midst of equals.
    std::vector<uint8_t> centres;
    for (const auto& row : clumpedRows<TypeParam>(3, 5))
        for (int copy = 0; copy < 12; ++copy)
            centres.insert(centres.end(), row.begin(), row.end());
    sortCentres<TypeParam>(centres);
    const NearestCentres<TypeParam> nearest(centres);
    for (uint32_t k = 0; k < 36; ++k)
        for (const uint32_t guess : {0U, 11U, 12U, 20U, 35U})
            EXPECT_EQ(nearest.find(&centres[k * TypeParam::width], guess),
                      (Nearest{k / 12 * 12, 0}));
}

TYPED_TEST(NearestCentre, KnowsTheFarCorners) {
    std::vector<uint8_t> centres(TypeParam::width, 0);
    const NearestCentres<TypeParam> nearest(centres);
    const std::array<uint8_t, 48> most = [] {
        std::array<uint8_t, 48> row;
        row.fill(255);
        return row;
    }();
    const uint32_t farthest = TypeParam::width == 48 ? 48 * 255 : 8 * 255 * 255;
    EXPECT_EQ(nearest.find(most.data()), (Nearest{0, farthest}));
}

TEST(NearestCentreOrder, IsBySumAndThenByBytes) {
    const auto row = [](uint8_t a, uint8_t b) {
        std::vector<uint8_t> bytes(StrengthMetric::width, 0);
        bytes[0] = a;
        bytes[7] = b;
        return bytes;
    };
    std::vector<uint8_t> centres;
    for (const auto& next : {row(9, 1), row(200, 0), row(1, 9), row(3, 0)})
        centres.insert(centres.end(), next.begin(), next.end());
    sortCentres<StrengthMetric>(centres);
    std::vector<uint8_t> wanted;
    for (const auto& next : {row(3, 0), row(1, 9), row(9, 1), row(200, 0)})
        wanted.insert(wanted.end(), next.begin(), next.end());
    EXPECT_EQ(centres, wanted);
}

} // namespace
} // namespace tamarin::test
