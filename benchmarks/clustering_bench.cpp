// The nearest centre of hands among so many, in the spaces of the turn and of the river; items are
// hands.
#include "abstraction/round_indexers.h"
#include "clustering/deck_samples.h"
#include "clustering/nearest_centre.h"
#include "clustering/seed_centres.h"

#include <cstdint>
#include <cstdlib>
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

BENCHMARK(nearestTurnCentre)->Arg(200)->Arg(1000)->Arg(9000);
BENCHMARK(nearestRiverCentre)->Arg(200)->Arg(1000)->Arg(9000);

} // namespace

} // namespace tamarin
