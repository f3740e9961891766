// The method emd: k-means over histograms before the river, over strengths on it.
#include "clustering/abstraction_run.h"
#include "clustering/deck_samples.h"
#include "clustering/equity_histograms.h"
#include "clustering/fit_centres.h"
#include "clustering/river_strength.h"
#include "support/split_mix.h"

#include <numeric>

namespace tamarin {

namespace {

// Every fit and every sample draws numbers of its own.
uint64_t seedOf(const AbstractionRun& run, FitStep step, bool sample) {
    return mixBits(run.options.options.seed +
                   splitMixStep * (2 * static_cast<uint64_t>(step) + sample));
}

// A run was stopped between the end of this fit and the end of its round.
bool isFitted(const AbstractionRun& run, FitStep step) {
    return run.state.step == step && run.state.fit.restart == run.options.options.restarts;
}

// Fits centres, or goes on fitting; they are in run.state.fit.best then.
template <class Metric>
Status fit(AbstractionRun& run, FitStep step, const std::string& name, uint32_t centres,
           const PointSet<Metric>& points) {
    const AbstractionOptions& options = run.options.options;
    if (run.state.step != step) {
        run.state.step = step;
        run.state.fit = {};
    }
    const Work work = run.beginStep(name);
    // Told in iterations: most restarts end before they have had all of theirs.
    Work parts = work;
    parts.progress = nullptr;
    const uint64_t all = uint64_t{options.restarts} * options.iterations;
    Status saved;
    const auto iterated = [&](const FitState& state) {
        const bool last = state.restart == options.restarts;
        work.report(uint64_t{state.restart} * options.iterations + state.iteration, all);
        if (Status now = last ? run.save() : run.saveNowAndThen(); !now)
            saved = now;
    };
    parts.stop = [&] { return !saved.ok() || work.shouldStop(); };
    const FitOptions fitting{centres, seedOf(run, step, false), options.restarts,
                             options.iterations, options.tolerance};
    const Status fitted = fitCentres(points, fitting, parts, iterated, run.state.fit);
    if (!saved)
        return saved;
    if (!fitted) {
        if (Status kept = run.save(); !kept)
            return kept;
        return fitted;
    }
    run.endStep();
    return {};
}

template <class Metric, class Row>
Status passWithCentres(AbstractionRun& run, int round, const std::string& name,
                       const auto& makeRows) {
    auto buckets = AbstractionRun::takeBuckets(round);
    if (!buckets)
        return Error{buckets.error()};
    const Work work = run.beginStep(name);
    const NearestCentres<Metric> centres(run.state.fit.best);
    const auto totals = passOverRound<Row>(
        round, {buckets->data(), buckets->size()}, work, makeRows, [&](const Row& row) {
            const Nearest nearest = centres.find(row.data());
            return BucketChoice{nearest.number, nearest.distance};
        });
    if (!totals)
        return stopped();
    const Status finished =
        run.finishRound(round, {buckets->data(), buckets->size()}, *totals, run.state.fit.best);
    run.endStep();
    return finished;
}

Status clusterStartingHands(AbstractionRun& run, const EarlyHistograms& early) {
    const auto hands = startingHandCounts();
    const PointSet<HistogramMetric> points({early.preflop.begin(), early.preflop.end()},
                                           {hands.begin(), hands.end()});
    if (Status fitted = fit(run, FitStep::startingHands, "clustering starting hands",
                            run.options.options.clusters, points);
        !fitted)
        return fitted;
    const NearestCentres<HistogramMetric> centres(run.state.fit.best);
    std::vector<uint8_t> clusters;
    for (const HistogramRow& row : early.preflop)
        clusters.push_back(static_cast<uint8_t>(centres.find(row.data()).number));
    run.state.startingHandClusters = std::move(clusters);
    run.state.step = FitStep::none;
    run.state.fit = {};
    return run.save();
}

// Every starting hand by itself, weakest first.
Status separateStartingHands(AbstractionRun& run, const EarlyHistograms& early) {
    const std::array<uint16_t, roundSizes[0]> buckets = ranksOfStartingHands(early);
    std::vector<uint8_t> centres(buckets.size() * histogramWidth);
    for (size_t hand = 0; hand < buckets.size(); ++hand)
        std::copy_n(early.preflop[hand].begin(), histogramWidth,
                    centres.begin() + static_cast<ptrdiff_t>(buckets[hand] * histogramWidth));
    return run.finishRound(0, buckets, {0, numHoldings(deckCards)}, std::move(centres));
}

Status makePreflop(AbstractionRun& run, const EarlyHistograms& early) {
    if (run.buckets(0) == roundSizes[0])
        return separateStartingHands(run, early);
    const auto hands = startingHandCounts();
    const PointSet<HistogramMetric> points({early.preflop.begin(), early.preflop.end()},
                                           {hands.begin(), hands.end()});
    if (Status fitted = fit(run, FitStep::preflop, "fitting the pre-flop", run.buckets(0), points);
        !fitted)
        return fitted;
    const NearestCentres<HistogramMetric> centres(run.state.fit.best);
    std::array<uint16_t, roundSizes[0]> buckets;
    PassTotals totals;
    for (size_t hand = 0; hand < buckets.size(); ++hand) {
        const Nearest nearest = centres.find(early.preflop[hand].data());
        buckets[hand] = static_cast<uint16_t>(nearest.number);
        totals.distance += uint64_t{hands[hand]} * nearest.distance;
        totals.hands += hands[hand];
    }
    return run.finishRound(0, buckets, totals, run.state.fit.best);
}

Status assignFlop(AbstractionRun& run, const EarlyHistograms& early) {
    std::vector<uint16_t> buckets(early.flop.size());
    const Work work = run.beginStep("placing flop hands");
    const NearestCentres<HistogramMetric> centres(run.state.fit.best);
    std::atomic<uint64_t> distance{0};
    std::atomic<uint64_t> hands{0};
    const bool done = forEach(work, chunksOf(early.flop.size()), [&](size_t chunk) {
        const size_t end = std::min((chunk + 1) * chunkPoints, early.flop.size());
        PassTotals own;
        for (size_t hand = chunk * chunkPoints; hand < end; ++hand) {
            const Nearest nearest = centres.find(early.flop[hand].data());
            buckets[hand] = static_cast<uint16_t>(nearest.number);
            own.distance += uint64_t{early.flopHands[hand]} * nearest.distance;
            own.hands += early.flopHands[hand];
        }
        distance += own.distance;
        hands += own.hands;
    });
    if (!done)
        return stopped();
    const Status finished = run.finishRound(1, buckets, {distance, hands}, run.state.fit.best);
    run.endStep();
    return finished;
}

Status makeFlop(AbstractionRun& run, const EarlyHistograms& early) {
    {
        const PointSet<HistogramMetric> points(early.flop, early.flopHands);
        if (Status fitted = fit(run, FitStep::flop, "fitting the flop", run.buckets(1), points);
            !fitted)
            return fitted;
    }
    return assignFlop(run, early);
}

Status fitTurn(AbstractionRun& run, const EquityHistograms& histograms) {
    const Work work = run.beginStep("sampling turn hands");
    auto rows =
        sampleTurn(histograms, run.options.sampleOf(2), seedOf(run, FitStep::turn, true), work);
    if (!rows)
        return stopped();
    run.endStep();
    const PointSet<HistogramMetric> points(std::move(*rows), {});
    return fit(run, FitStep::turn, "fitting the turn", run.buckets(2), points);
}

Status makeTurn(AbstractionRun& run, const EquityHistograms& histograms) {
    if (!isFitted(run, FitStep::turn))
        if (Status fitted = fitTurn(run, histograms); !fitted)
            return fitted;
    return passWithCentres<HistogramMetric, HistogramRow>(
        run, 2, "placing turn hands",
        [&](const uint8_t* board, HistogramRow* rows) { histograms.turnRows(board, rows); });
}

Status fitRiver(AbstractionRun& run, const RiverStrength& strength) {
    const Work work = run.beginStep("sampling river hands");
    auto rows =
        sampleRiver(strength, run.options.sampleOf(3), seedOf(run, FitStep::river, true), work);
    if (!rows)
        return stopped();
    run.endStep();
    const PointSet<StrengthMetric> points(std::move(*rows), {});
    return fit(run, FitStep::river, "fitting the river", run.buckets(3), points);
}

Status makeRiver(AbstractionRun& run) {
    const RiverStrength strength(run.state.startingHandClusters, run.options.options.clusters);
    if (!isFitted(run, FitStep::river))
        if (Status fitted = fitRiver(run, strength); !fitted)
            return fitted;
    return passWithCentres<StrengthMetric, StrengthRow>(
        run, 3, "placing river hands",
        [&](const uint8_t* board, StrengthRow* rows) { strength.rows(board, rows); });
}

Status makeEarlyRounds(AbstractionRun& run, const EquityHistograms& histograms) {
    const bool clusters = run.state.startingHandClusters.empty();
    if (!clusters && run.state.done(0) && run.state.done(1))
        return {};
    const Work work = run.beginStep("counting flop histograms");
    const auto early = earlyHistograms(histograms, work);
    if (!early)
        return Error{early.error()};
    run.endStep();
    if (clusters)
        if (Status made = clusterStartingHands(run, *early); !made)
            return made;
    if (!run.state.done(0))
        if (Status made = makePreflop(run, *early); !made)
            return made;
    if (!run.state.done(1))
        return makeFlop(run, *early);
    return {};
}

Status makeBeforeRiver(AbstractionRun& run) {
    if (!run.state.startingHandClusters.empty() && run.state.done(0) && run.state.done(1) &&
        run.state.done(2))
        return {};
    const Work work = run.beginStep("counting river equities");
    const BoardSet rivers(5);
    const auto bins = riverBins(rivers, work);
    if (!bins)
        return Error{bins.error()};
    run.endStep();
    const EquityHistograms histograms(rivers, *bins);
    if (Status made = makeEarlyRounds(run, histograms); !made)
        return made;
    return run.state.done(2) ? Status() : makeTurn(run, histograms);
}

} // namespace

Status makeByDistance(AbstractionRun& run) {
    if (Status made = makeBeforeRiver(run); !made)
        return made;
    return run.state.done(3) ? Status() : makeRiver(run);
}

} // namespace tamarin
