// What the two methods share while they make an abstraction: the state that is saved, the steps
// that are told of and timed, the files of the rounds.
#pragma once

#include "abstraction/large_buffer.h"
#include "abstraction/work.h"
#include "clustering/deck_pass.h"
#include "clustering/make_abstraction.h"
#include "clustering/unfinished.h"
#include "support/clock.h"

#include <span>
#include <string>
#include <vector>

namespace tamarin {

class AbstractionRun {
public:
    AbstractionRun(const MakeOptions& made, std::string folder, Unfinished begun);

    const MakeOptions& options;
    Unfinished state;
    std::vector<MadeAbstraction::Step> steps;

    uint32_t buckets(int round) const { return options.counts[static_cast<size_t>(round)]; }

    // A step of the work begins; its progress is told under this name, and its time is kept.
    Work beginStep(const std::string& name);
    void endStep();

    // Where a stop loses nothing. Saves at once, or only when the last save is some time ago.
    Status save();
    Status saveNowAndThen();

    // Room for the buckets of a whole round.
    static Result<LargeBuffer<uint16_t>> takeBuckets(int round);

    // A round is done: writes its file and the state, in which no fit is under way then.
    Status finishRound(int round, std::span<const uint16_t> buckets, PassTotals totals,
                       std::vector<uint8_t> centres);

private:
    std::string path_; // of the state
    std::string folder_;
    TimePoint stepStart_;
    TimePoint lastSave_;
};

// The rounds that are not done yet, one after the other.
Status makeByDistance(AbstractionRun& run);
Status makeByPercentile(AbstractionRun& run);

} // namespace tamarin
