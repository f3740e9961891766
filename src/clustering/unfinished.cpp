#include "clustering/unfinished.h"

#include "clustering/checked_file.h"

namespace tamarin {

namespace {

constexpr CheckedKind unfinishedKind{"tmrnabsu", 1, "an unfinished card abstraction"};

template <class Unfinished, class Archive>
void eachUnfinishedField(Unfinished& unfinished, Archive& field) {
    eachField(unfinished.options, field);
    for (auto& count : unfinished.counts)
        field(count);
    for (auto& round : unfinished.rounds)
        eachField(round, field);
    field(unfinished.startingHandClusters);
    field(unfinished.step);
    auto& fit = unfinished.fit;
    field(fit.restart);
    field(fit.iteration);
    field(fit.centres);
    field(fit.distance);
    field(fit.best);
    field(fit.bestDistance);
}

// How many centres a fit has, and how wide they are.
size_t centreBytes(const Unfinished& unfinished) {
    switch (unfinished.step) {
    case FitStep::none:
        return 0;
    case FitStep::startingHands:
        return unfinished.options.clusters * HistogramMetric::width;
    case FitStep::preflop:
        return unfinished.counts[0] * HistogramMetric::width;
    case FitStep::flop:
        return unfinished.counts[1] * HistogramMetric::width;
    case FitStep::turn:
        return unfinished.counts[2] * HistogramMetric::width;
    case FitStep::river:
        return unfinished.counts[3] * StrengthMetric::width;
    }
    return 0;
}

bool possible(const Unfinished& unfinished) {
    if (unfinished.step > FitStep::river)
        return false;
    const size_t bytes = centreBytes(unfinished);
    const FitState& fit = unfinished.fit;
    for (const auto* centres : {&fit.centres, &fit.best})
        if (!centres->empty() && centres->size() != bytes)
            return false;
    for (size_t round = 0; round < unfinished.rounds.size(); ++round) {
        const uint32_t buckets = unfinished.rounds[round].buckets;
        if (buckets != 0 && buckets != unfinished.counts[round])
            return false;
    }
    for (const uint8_t cluster : unfinished.startingHandClusters)
        if (cluster >= unfinished.options.clusters)
            return false;
    const size_t starting = unfinished.startingHandClusters.size();
    return (starting == 0 || starting == roundSizes[0]) &&
           (fit.restart < unfinished.options.restarts || !fit.best.empty() ||
            unfinished.step == FitStep::none);
}

} // namespace

Status writeUnfinished(const std::string& path, const Unfinished& unfinished) {
    Packer packer;
    eachUnfinishedField(unfinished, packer);
    return writeCheckedFile(path, unfinishedKind, packer.bytes());
}

Result<Unfinished> readUnfinished(const std::string& path) {
    const Result<std::string> payload = readCheckedFile(path, unfinishedKind);
    if (!payload)
        return Error{payload.error()};
    Unfinished unfinished;
    Unpacker unpacker(*payload);
    eachUnfinishedField(unfinished, unpacker);
    if (!unpacker.whole() || !possible(unfinished))
        return Error{path + ": holds numbers that no unfinished card abstraction has"};
    return unfinished;
}

} // namespace tamarin
