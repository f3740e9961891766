#include "clustering/fit_centres.h"

#include "clustering/plain_clustering.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

template <class Metric>
class FitCentres : public ::testing::Test {
protected:
    // Of more than one chunk, and of few different rows: some centres stay without points.
    PointSet<Metric> many{clumpedRows<Metric>(1500, 11), someWeights(1500, 12)};
    PointSet<Metric> repeated = [] {
        Rows<Metric> rows = clumpedRows<Metric>(12, 13);
        for (size_t i = 12; i < 60; ++i)
            rows.push_back(rows[i % 12]);
        return PointSet<Metric>(rows, {});
    }();
    Work work = [] {
        Work two;
        two.threads = 2;
        return two;
    }();
};
using Metrics = ::testing::Types<HistogramMetric, StrengthMetric>;
TYPED_TEST_SUITE(FitCentres, Metrics);

template <class Metric>
void expectPlain(const PointSet<Metric>& points, const FitOptions& options, const Work& work) {
    FitState state;
    ASSERT_TRUE(fitCentres(points, options, work, {}, state).ok());
    const PlainClustering<Metric> plain(points, options);
    Rows<Metric> best;
    uint64_t least = UINT64_MAX;
    for (uint32_t restart = 0; restart < options.restarts; ++restart) {
        Rows<Metric> centres = plain.seeds(mixBits(options.seed + splitMixStep) + restart);
        const uint64_t sum = plain.iterate(centres);
        if (sum < least) {
            least = sum;
            best = centres;
        }
    }
    EXPECT_EQ(state.bestDistance, least);
    EXPECT_EQ(state.best, flat<Metric>(best));
}

TYPED_TEST(FitCentres, IsThePlainClustering) {
    for (const uint32_t centres : {1U, 5U, 30U}) {
        FitOptions options;
        options.centres = centres;
        options.seed = centres;
        options.restarts = 2;
        options.iterations = 6;
        expectPlain(this->many, options, this->work);
    }
}

TYPED_TEST(FitCentres, EmptyCentresMoveAsInThePlainOne) {
    FitOptions options;
    options.centres = 20; // of 12 different rows
    options.restarts = 1;
    expectPlain(this->repeated, options, this->work);
    FitState state;
    ASSERT_TRUE(fitCentres(this->repeated, options, this->work, {}, state).ok());
    EXPECT_EQ(state.bestDistance, 0U);
    // All at one place: the empty ones must go to the points that are served worst.
    Assignment assignment;
    std::vector<uint8_t> centres;
    for (int k = 0; k < 4; ++k)
        centres.insert(centres.end(), this->many.row(0), this->many.row(0) + TypeParam::width);
    const NearestCentres<TypeParam> nearest(centres);
    ASSERT_TRUE(assignPoints(this->many, nearest, this->work, assignment));
    const auto moved = movedCentres(this->many, assignment, centres, this->work);
    const size_t worst = static_cast<size_t>(
        std::max_element(assignment.distance.begin(), assignment.distance.end()) -
        assignment.distance.begin());
    EXPECT_TRUE(std::equal(this->many.row(worst), this->many.row(worst) + TypeParam::width,
                           moved.begin() + static_cast<ptrdiff_t>(TypeParam::width)));
}

TYPED_TEST(FitCentres, IsTheSameWithAnyNumberOfThreads) {
    // Enough points for threads to share.
    const PointSet<TypeParam> points(clumpedRows<TypeParam>(40000, 11), someWeights(40000, 12));
    FitOptions options;
    options.centres = 40;
    FitState one;
    this->work.threads = 1;
    ASSERT_TRUE(fitCentres(points, options, this->work, {}, one).ok());
    for (const int threads : {2, 3}) {
        FitState several;
        this->work.threads = threads;
        ASSERT_TRUE(fitCentres(points, options, this->work, {}, several).ok());
        EXPECT_EQ(several, one);
    }
    EXPECT_EQ(one.restart, 3U);
    options.seed = 2;
    FitState other;
    ASSERT_TRUE(fitCentres(points, options, this->work, {}, other).ok());
    EXPECT_NE(other.best, one.best);
}

TYPED_TEST(FitCentres, GoesOnFromEveryStateItWasStoppedIn) {
    FitOptions options;
    options.centres = 10;
    options.restarts = 2;
    std::vector<FitState> states;
    FitState whole;
    const auto watch = [&](const FitState& state) { states.push_back(state); };
    ASSERT_TRUE(fitCentres(this->many, options, this->work, watch, whole).ok());
    ASSERT_GT(states.size(), 6U);
    for (FitState state : states) {
        ASSERT_TRUE(fitCentres(this->many, options, this->work, {}, state).ok());
        EXPECT_EQ(state, whole);
    }
}

TYPED_TEST(FitCentres, StopsWhereItIsAsked) {
    FitOptions options;
    options.centres = 10;
    FitState whole;
    ASSERT_TRUE(fitCentres(this->many, options, this->work, {}, whole).ok());
    for (const int asks : {0, 1, 5, 12, 20, 40}) {
        std::atomic<int> left{asks};
        FitState state;
        this->work.stop = [&] { return left-- <= 0; };
        const Status fitted = fitCentres(this->many, options, this->work, {}, state);
        if (!fitted)
            EXPECT_EQ(fitted.error(), "stopped");
        else
            EXPECT_GT(asks, 20);
        this->work.stop = nullptr;
        ASSERT_TRUE(fitCentres(this->many, options, this->work, {}, state).ok());
        EXPECT_EQ(state, whole);
    }
}

TYPED_TEST(FitCentres, EveryIterationIsBetter) {
    FitOptions options;
    options.centres = 25;
    options.restarts = 1;
    options.tolerance = 1000000;
    std::vector<uint64_t> sums;
    const auto watch = [&](const FitState& state) {
        if (state.iteration > 0)
            sums.push_back(state.distance);
    };
    FitState state;
    ASSERT_TRUE(fitCentres(this->many, options, this->work, watch, state).ok());
    ASSERT_GT(sums.size(), 3U);
    for (size_t i = 1; i < sums.size(); ++i)
        EXPECT_LT(sums[i], sums[i - 1]);
    EXPECT_LE(state.bestDistance, sums.back());
}

// A constant that a change of the method, on both sides, would move.
TEST(FitCentresPinned, TheSumsOfDistances) {
    const auto fitted = []<class Metric>(const PointSet<Metric>& points) {
        FitOptions options;
        options.centres = 16;
        FitState state;
        EXPECT_TRUE(fitCentres(points, options, {}, {}, state).ok());
        return state.bestDistance;
    };
    EXPECT_EQ(fitted(PointSet<HistogramMetric>(clumpedRows<HistogramMetric>(1500, 11),
                                               someWeights(1500, 12))),
              842236U);
    EXPECT_EQ(fitted(PointSet<StrengthMetric>(clumpedRows<StrengthMetric>(1500, 11),
                                              someWeights(1500, 12))),
              6860373U);
}

} // namespace
} // namespace tamarin::test
