#include "clustering/abstraction_plan.h"

#include "clustering/card_abstraction.h"
#include "clustering/river_equities.h"
#include "clustering/unfinished.h"
#include "support/util.h"

#include <cmath>

namespace tamarin {

namespace {

constexpr uint64_t headBytes = 1000; // of a description, about

uint64_t centreBytes(const MakeOptions& options) {
    uint64_t bytes = 0;
    for (size_t round = 0; round < holdemRounds; ++round)
        bytes += options.counts[round] * centreWidth(options.options.method, round);
    return bytes;
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
        options.sampleOf(2) * (PointSet<HistogramMetric>::bytesOfPoint() + fitting) +
        2 * roundSizes[2];
    const uint64_t river =
        options.sampleOf(3) * (PointSet<StrengthMetric>::bytesOfPoint() + fitting) +
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
        return root(round) * static_cast<double>(options.sampleOf(round)) / 1e6;
    };
    const double fits =
        options.options.restarts * (0.15 * root(1) + 0.05 * ofSample(2) + 0.1 * ofSample(3));
    const double passes = 5 + 0.05 * root(2) + 0.6 * root(3);
    return 8 + fits + passes;
}

// What is there or begun, and which rounds are done.
struct Found {
    AbstractionPlan::State state = AbstractionPlan::State::missing;
    std::string problem;
    std::array<bool, holdemRounds> done{};
};

Found lookAtState(const MakeOptions& options, const std::string& folder) {
    using State = AbstractionPlan::State;
    const auto differing = [&](const char* is, const AbstractionOptions& there,
                               const BucketCounts& counts) {
        const std::string difference =
            differenceOf(there, counts, options.options.normalised(), options.counts);
        return difference.empty() ? difference
                                  : folder + ": " + is + " with other options: " + difference;
    };
    const std::string unfinished = folder + "/" + unfinishedFileName;
    if (file_exist(folder + "/" + descriptionFileName)) {
        const auto opened = CardAbstraction::open(options.directory, options.nameOrOwn(),
                                                  CardAbstraction::Check::sizes);
        if (!opened)
            return {State::different, opened.error(), {}};
        const AbstractionDescription& there = opened->description();
        const std::string problem = differing("made", there.options, there.counts());
        if (!problem.empty())
            return {State::different, problem, {}};
        return {State::whole, "", {true, true, true, true}};
    }
    const auto begun = file_exist(unfinished) ? readUnfinished(unfinished) : Error{"not there"};
    if (!begun)
        return {};
    const std::string problem = differing("begun", begun->options, begun->counts);
    if (!problem.empty())
        return {State::different, problem, {}};
    Found found{State::begun, "", {}};
    for (int round = 0; round < holdemRounds; ++round)
        found.done[static_cast<size_t>(round)] = begun->done(round);
    return found;
}

} // namespace

AbstractionPlan planAbstraction(const MakeOptions& options) {
    AbstractionPlan plan;
    const std::string folder = abstractionFolder(options.directory, options.nameOrOwn());
    const Found found = options.force ? Found{} : lookAtState(options, folder);
    plan.state = found.state;
    plan.problem = found.problem;
    if (plan.state == AbstractionPlan::State::whole)
        return plan;
    for (size_t round = 0; round < holdemRounds; ++round)
        if (!found.done[round])
            plan.files.push_back({folder + "/" + bucketFileNames[round], 2 * roundSizes[round]});
    plan.files.push_back({folder + "/" + descriptionFileName, headBytes + centreBytes(options)});
    for (const AbstractionPlan::File& file : plan.files)
        plan.disk += file.bytes;
    plan.memory = memoryOf(options);
    plan.seconds = secondsOf(options);
    return plan;
}

} // namespace tamarin
