// Card abstractions: river hands drawn and measured against clusters of starting hands, and centres
// fitted to them and to histograms made up.
#include "abstraction/round_indexers.h"
#include "clustering/deck_samples.h"
#include "clustering/fit_centres.h"
#include "clustering/river_strength.h"
#include "signature/parts.h"
#include "support/split_mix.h"

#include <cassert>

namespace tamarin {

namespace {

constexpr uint64_t clusteredHands = 3'000;

template <class Metric, class Row>
void addFit(Fnv1a& hash, const std::vector<Row>& rows) {
    std::vector<uint8_t> weights(rows.size());
    for (size_t i = 0; i < weights.size(); ++i)
        weights[i] = static_cast<uint8_t>(1 + i % 24);
    const PointSet<Metric> points(rows, weights);
    FitOptions options;
    options.centres = 23;
    options.seed = 43;
    options.restarts = 2;
    options.iterations = 12;
    FitState state;
    const Status fitted = fitCentres(points, options, Work{}, {}, state);
    assert(fitted);
    for (const uint8_t entry : state.best)
        hash.add(entry);
    hash.add(state.bestDistance);
    const NearestCentres<Metric> centres(state.best);
    for (const Row& row : rows) {
        const Nearest nearest = centres.find(row.data());
        hash.add(nearest.number);
        hash.add(nearest.distance);
    }
}

// Counts of "that bin or above" that fall from 46, in uneven steps.
std::vector<HistogramRow> madeUpHistograms() {
    SplitMix random(47);
    std::vector<HistogramRow> rows(clusteredHands);
    for (HistogramRow& row : rows) {
        uint32_t left = 46;
        for (uint8_t& entry : row) {
            left -= std::min(left, random.below(4));
            entry = static_cast<uint8_t>(left);
        }
    }
    return rows;
}

} // namespace

void addClustering(Fnv1a& hash) {
    std::vector<uint8_t> clusterOf(roundSizes[0]);
    for (size_t hand = 0; hand < clusterOf.size(); ++hand)
        clusterOf[hand] = static_cast<uint8_t>(hand * hand % strengthWidth);
    const RiverStrength strength(clusterOf, strengthWidth);
    const auto rows = sampleRiver(strength, clusteredHands, 53, Work{});
    assert(rows);
    for (const StrengthRow& row : *rows)
        for (const uint8_t entry : row)
            hash.add(entry);
    addFit<StrengthMetric>(hash, *rows);
    addFit<HistogramMetric>(hash, madeUpHistograms());
}

} // namespace tamarin
