#include "clustering/unfinished.h"

#include "clustering/checked_file.h"

namespace tamarin {

namespace {

constexpr CheckedKind unfinishedKind{"tmrnabsu", 1, "an unfinished card abstraction"};

void pack(Packer& packer, const FitState& fit) {
    packer.add(fit.restart);
    packer.add(fit.iteration);
    packer.add(fit.centres);
    packer.add(fit.distance);
    packer.add(fit.best);
    packer.add(fit.bestDistance);
}

void unpack(Unpacker& unpacker, FitState& fit) {
    unpacker.take(fit.restart);
    unpacker.take(fit.iteration);
    unpacker.take(fit.centres);
    unpacker.take(fit.distance);
    unpacker.take(fit.best);
    unpacker.take(fit.bestDistance);
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
    pack(packer, unfinished.options);
    for (const uint32_t count : unfinished.counts)
        packer.add(count);
    for (const RoundDescription& round : unfinished.rounds)
        pack(packer, round);
    packer.add(unfinished.startingHandClusters);
    packer.add(static_cast<uint32_t>(unfinished.step));
    pack(packer, unfinished.fit);
    return writeCheckedFile(path, unfinishedKind, packer.bytes());
}

Result<Unfinished> readUnfinished(const std::string& path) {
    const Result<std::string> payload = readCheckedFile(path, unfinishedKind);
    if (!payload)
        return Error{payload.error()};
    Unfinished unfinished;
    Unpacker unpacker(*payload);
    unpack(unpacker, unfinished.options);
    for (uint32_t& count : unfinished.counts)
        unpacker.take(count);
    for (RoundDescription& round : unfinished.rounds)
        unpack(unpacker, round);
    unpacker.take(unfinished.startingHandClusters);
    uint32_t step = 0;
    unpacker.take(step);
    unfinished.step = static_cast<FitStep>(step);
    unpack(unpacker, unfinished.fit);
    if (!unpacker.whole() || !possible(unfinished))
        return Error{path + ": holds numbers that no unfinished card abstraction has"};
    return unfinished;
}

} // namespace tamarin
