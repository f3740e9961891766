#include "clustering/abstraction_plan.h"

#include "clustering/card_abstraction.h"
#include "clustering/deck_samples.h"
#include "clustering/river_equities.h"
#include "clustering/unfinished.h"

#include <cmath>

namespace tamarin {

namespace {

constexpr uint64_t headBytes = 1000; // of a description, about

uint64_t centreBytes(const MakeOptions& options) {
    const bool emd = options.options.method == AbstractionMethod::emd;
    uint64_t bytes = 0;
    for (size_t round = 0; round < holdemRounds; ++round)
        bytes += options.counts[round] * (!emd         ? sizeof(uint64_t)
                                          : round == 3 ? StrengthMetric::width
                                                       : HistogramMetric::width);
    return bytes;
}

uint64_t sampleOf(const MakeOptions& options, size_t round) {
    const uint64_t asked = options.options.sample;
    return asked != 0 ? asked : defaultSample(options.counts[round]);
}

// The most of what is held at one time: the river's table beside the flop's rows or the turn's
// sample, each with its sorted copy, and the river's buckets beside its sample.
uint64_t memoryOf(const MakeOptions& options) {
    constexpr uint64_t fitting = 3 * sizeof(uint32_t); // centre, distance and member of a point
    if (options.options.method == AbstractionMethod::percentile)
        return RiverTable<uint16_t>::memoryBytes() + 2 * roundSizes[3];
    const uint64_t bins = RiverTable<uint8_t>::memoryBytes();
    const uint64_t flop =
        roundSizes[1] * (PointSet<HistogramMetric>::bytesOfPoint() + histogramWidth + fitting);
    const uint64_t turn =
        sampleOf(options, 2) * (PointSet<HistogramMetric>::bytesOfPoint() + fitting) +
        2 * roundSizes[2];
    const uint64_t river =
        sampleOf(options, 3) * (PointSet<StrengthMetric>::bytesOfPoint() + fitting) +
        2 * roundSizes[3];
    return std::max({bins + flop, bins + turn, river});
}

// Seconds on two cores. The search for a nearest centre looks at a part of them that shrinks with
// their number, so its time grows with about the square root.
double secondsOf(const MakeOptions& options) {
    if (options.options.method == AbstractionMethod::percentile)
        return 20;
    const auto root = [&](size_t round) {
        return std::sqrt(static_cast<double>(options.counts[round]));
    };
    const auto ofSample = [&](size_t round) {
        return root(round) * static_cast<double>(sampleOf(options, round)) / 1e6;
    };
    const double fits =
        options.options.restarts * (0.15 * root(1) + 0.05 * ofSample(2) + 0.1 * ofSample(3));
    const double passes = 5 + 0.05 * root(2) + 0.6 * root(3);
    return 8 + fits + passes;
}

void lookAtState(const MakeOptions& options, const std::string& folder, AbstractionPlan& plan) {
    const auto compare = [&](const AbstractionOptions& there, const BucketCounts& counts,
                             AbstractionPlan::State same) {
        plan.problem = differenceOf(there, counts, options.options, options.counts);
        plan.state = plan.problem.empty() ? same : AbstractionPlan::State::different;
        if (!plan.problem.empty())
            plan.problem = folder + ": made with other options: " + plan.problem;
    };
    struct stat status {};
    const std::string description = folder + "/" + descriptionFileName;
    const std::string unfinished = folder + "/" + unfinishedFileName;
    if (systemFiles().stat(description.c_str(), &status) == 0) {
        const auto opened = CardAbstraction::open(options.directory, options.nameOrOwn(),
                                                  CardAbstraction::Check::sizes);
        if (opened)
            return compare(opened->description().options, opened->description().counts(),
                           AbstractionPlan::State::whole);
        plan.state = AbstractionPlan::State::different;
        plan.problem = opened.error();
    } else if (systemFiles().stat(unfinished.c_str(), &status) == 0) {
        if (const auto read = readUnfinished(unfinished))
            compare(read->options, read->counts, AbstractionPlan::State::begun);
    }
}

} // namespace

AbstractionPlan planAbstraction(const MakeOptions& options) {
    AbstractionPlan plan;
    const std::string folder = abstractionFolder(options.directory, options.nameOrOwn());
    for (size_t round = 0; round < holdemRounds; ++round)
        plan.files.push_back({folder + "/" + bucketFileNames[round], 2 * roundSizes[round]});
    plan.files.push_back({folder + "/" + descriptionFileName, headBytes + centreBytes(options)});
    for (const AbstractionPlan::File& file : plan.files)
        plan.disk += file.bytes;
    plan.memory = memoryOf(options);
    plan.seconds = secondsOf(options);
    if (!options.force)
        lookAtState(options, folder, plan);
    return plan;
}

} // namespace tamarin
