#include "clustering/abstraction_run.h"

#include "clustering/card_abstraction.h"

#include <utility>

namespace tamarin {

AbstractionRun::AbstractionRun(const MakeOptions& made, std::string folder, Unfinished begun)
    : options(made), state(std::move(begun)), path_(folder + "/" + unfinishedFileName),
      folder_(std::move(folder)), stepStart_(steadyClock().now()), lastSave_(stepStart_) {}

Work AbstractionRun::beginStep(const std::string& name) {
    steps.push_back({name, 0});
    stepStart_ = steadyClock().now();
    Work work;
    work.threads = options.threads;
    work.stop = options.stop;
    if (options.progress)
        work.progress = [this, name](uint64_t done, uint64_t total) {
            options.progress(name, done, total);
        };
    return work;
}

void AbstractionRun::endStep() {
    steps.back().seconds = seconds(steadyClock().now() - stepStart_);
}

Status AbstractionRun::save() {
    lastSave_ = steadyClock().now();
    return writeUnfinished(path_, state);
}

Status AbstractionRun::saveNowAndThen() {
    if (seconds(steadyClock().now() - lastSave_) < options.saveSeconds)
        return {};
    return save();
}

Result<LargeBuffer<uint16_t>> AbstractionRun::takeBuckets(int round) {
    const auto at = static_cast<size_t>(round);
    return LargeBuffer<uint16_t>::take(roundSizes[at], "the buckets of a round");
}

Status AbstractionRun::finishRound(int round, std::span<const uint16_t> buckets, PassTotals totals,
                                   std::vector<uint8_t> centres) {
    RoundDescription done;
    if (Status written = writeBuckets(folder_, round, buckets, done); !written)
        return written;
    done.buckets = this->buckets(round);
    done.distance = totals.distance;
    done.deckHands = totals.hands;
    done.centres = std::move(centres);
    state.rounds[static_cast<size_t>(round)] = std::move(done);
    state.step = FitStep::none;
    state.fit = {};
    return save();
}

} // namespace tamarin
