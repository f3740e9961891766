// The nearest centre of hands among so many, in the spaces of the turn and of the river; items are
// hands. And what fits reach: meanDistance is the earth mover's distance of a turn hand from its
// nearest centre, in rivers times bins, less being better.
#include "abstraction/round_indexers.h"
#include "clustering/deck_samples.h"
#include "clustering/fit_centres.h"
#include "clustering/nearest_centre.h"
#include "clustering/seed_centres.h"
#include "support/util.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

#include <benchmark/benchmark.h>

namespace tamarin {

namespace {

constexpr uint64_t hands = 100'000;

const std::vector<StrengthRow>& riverHands() {
    static const std::vector<StrengthRow> rows = [] {
        std::vector<uint8_t> clusters(roundSizes[0]);
        for (size_t hand = 0; hand < clusters.size(); ++hand)
            clusters[hand] = static_cast<uint8_t>(hand % strengthWidth);
        return *sampleRiver(RiverStrength(clusters, strengthWidth), hands, 1, {});
    }();
    return rows;
}

const std::vector<HistogramRow>& turnHands() {
    static const std::vector<HistogramRow> rows = [] {
        const BoardSet rivers(5);
        const auto bins = riverBins(rivers, {});
        if (!bins)
            std::abort();
        return *sampleTurn(EquityHistograms(rivers, *bins), hands, 1, {});
    }();
    return rows;
}

template <class Metric, class Row>
void findNearest(benchmark::State& state, const std::vector<Row>& rows) {
    const PointSet<Metric> points(rows, {});
    std::vector<uint8_t> centres =
        *seedCentres(points, static_cast<uint32_t>(state.range(0)), 1, {});
    sortCentres<Metric>(centres);
    const NearestCentres<Metric> nearest(centres);
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(nearest.find(rows[next].data()));
        next = next + 1 < rows.size() ? next + 1 : 0;
    }
    state.SetItemsProcessed(state.iterations());
}

void nearestTurnCentre(benchmark::State& state) {
    findNearest<HistogramMetric>(state, turnHands());
}
void nearestRiverCentre(benchmark::State& state) {
    findNearest<StrengthMetric>(state, riverHands());
}

constexpr size_t fittedHands = 20'000;
constexpr size_t fittedCentres = 200;
using Rows = std::vector<std::vector<double>>;

std::vector<HistogramRow> handsToFit() {
    return {turnHands().begin(), turnHands().begin() + fittedHands};
}

Rows asDoubles(const uint8_t* bytes, size_t count) {
    Rows rows;
    for (size_t i = 0; i < count; ++i, bytes += histogramWidth)
        rows.emplace_back(bytes, bytes + histogramWidth);
    return rows;
}

double meanDistance(const Rows& points, const Rows& centres) {
    double sum = 0;
    for (const auto& point : points) {
        double nearest = DBL_MAX;
        for (const auto& centre : centres) {
            double distance = 0;
            for (size_t i = 0; i < histogramWidth; ++i)
                distance += std::abs(point[i] - centre[i]);
            nearest = std::min(nearest, distance);
        }
        sum += nearest;
    }
    return sum / static_cast<double>(points.size());
}

// restarts: its argument. One thread, as the plain one has.
void fitTurnCentres(benchmark::State& state) {
    const std::vector<HistogramRow> drawn = handsToFit();
    const PointSet<HistogramMetric> points(drawn, {});
    FitOptions options;
    options.centres = fittedCentres;
    options.restarts = static_cast<uint32_t>(state.range(0));
    Work work;
    work.threads = 1;
    FitState fitted;
    for (auto _ : state) {
        fitted = {};
        if (!fitCentres(points, options, work, {}, fitted))
            std::abort();
    }
    state.counters["meanDistance"] = meanDistance(asDoubles(drawn[0].data(), drawn.size()),
                                                  asDoubles(fitted.best.data(), fittedCentres));
}

// Means by Euclid's distance, in floating point, from every hundredth hand, until nothing changes.
void fitTurnCentresPlainly(benchmark::State& state) {
    const std::vector<HistogramRow> drawn = handsToFit();
    Rows points = asDoubles(drawn[0].data(), drawn.size());
    Rows centres(fittedCentres, std::vector<double>(histogramWidth));
    std::vector<double*> pointRows;
    std::vector<double*> centreRows;
    for (auto& point : points)
        pointRows.push_back(point.data());
    for (auto& centre : centres)
        centreRows.push_back(centre.data());
    for (auto _ : state)
        std::free(k_means(pointRows.data(), fittedHands, histogramWidth, fittedCentres, 0,
                          centreRows.data()));
    state.counters["meanDistance"] = meanDistance(points, centres);
}

// By equity alone: hands in order of it, cut into equal parts, each with its medians for a centre.
void cutTurnByEquity(benchmark::State& state) {
    const std::vector<HistogramRow> drawn = handsToFit();
    Rows points = asDoubles(drawn[0].data(), drawn.size());
    Rows centres;
    double sum = 0;
    for (auto _ : state) {
        std::ranges::sort(points, {}, [](const std::vector<double>& point) {
            return std::accumulate(point.begin(), point.end(), 0.0);
        });
        sum = 0;
        constexpr size_t part = fittedHands / fittedCentres;
        for (size_t begin = 0; begin < points.size(); begin += part) {
            const Rows own(points.begin() + static_cast<ptrdiff_t>(begin),
                           points.begin() + static_cast<ptrdiff_t>(begin + part));
            std::vector<double> medians;
            for (size_t i = 0; i < histogramWidth; ++i) {
                std::vector<double> column;
                for (const auto& point : own)
                    column.push_back(point[i]);
                std::ranges::nth_element(column, column.begin() + part / 2);
                medians.push_back(column[part / 2]);
            }
            sum += meanDistance(own, {medians}) * part;
        }
    }
    state.counters["meanDistance"] = sum / static_cast<double>(points.size());
}

BENCHMARK(fitTurnCentres)->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond);
BENCHMARK(cutTurnByEquity)->Unit(benchmark::kMillisecond);
BENCHMARK(fitTurnCentresPlainly)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(nearestTurnCentre)->Arg(200)->Arg(1000)->Arg(9000);
BENCHMARK(nearestRiverCentre)->Arg(200)->Arg(1000)->Arg(9000);

} // namespace

} // namespace tamarin
