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

bool inOrder(const std::vector<uint8_t>& centres, FitStep step) {
    std::vector<uint8_t> sorted = centres;
    if (step == FitStep::river)
        sortCentres<StrengthMetric>(sorted);
    else
        sortCentres<HistogramMetric>(sorted);
    return sorted == centres;
}

// How many bytes the centres of the fit under way have.
size_t centreBytes(const Unfinished& unfinished) {
    if (unfinished.step == FitStep::none)
        return 0;
    if (unfinished.step == FitStep::startingHands)
        return unfinished.options.clusters * HistogramMetric::width;
    const auto round = static_cast<size_t>(unfinished.step) - static_cast<size_t>(FitStep::preflop);
    return unfinished.counts[round] * centreWidth(AbstractionMethod::emd, round);
}

bool possible(const Unfinished& unfinished) {
    if (static_cast<size_t>(unfinished.options.method) >= methodNames.size() ||
        unfinished.step > FitStep::river)
        return false;
    const size_t bytes = centreBytes(unfinished);
    const FitState& fit = unfinished.fit;
    for (const auto* centres : {&fit.centres, &fit.best})
        if (!centres->empty() && centres->size() != bytes)
            return false;
    if (!inOrder(fit.best, unfinished.step))
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
