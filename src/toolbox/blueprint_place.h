// What all trainings of blueprints do with the files in OUT: go on from the checkpoint, replace the
// blueprint, and leave both as they should be when they are stopped.
#pragma once

#include "toolbox/training_session.h"

#include <cstdint>
#include <functional>
#include <string>

namespace tamarin {

struct BlueprintPlace {
    explicit BlueprintPlace(const TrainingRequest& request);

    const TrainingRequest& request; // outlives the object
    std::string path;
    std::string checkpoint;

    // Goes on from the checkpoint, by read, where that is wanted, and refuses to forget one
    // unasked. Whether it did.
    Result<bool> takeUp(const std::function<Status()>& read) const;

    // The request for what is left to do, after takeUp(): seconds of earlier runs count where they
    // are to (TrainingRequest::secondsInAll).
    TrainingRequest whatIsLeft(bool resumed, uint64_t iteration) const;

    // After a run that was stopped: with a quality what was trained so far is kept as a blueprint
    // where it is better than what is there; finish writes it. Returns the exit status.
    int stopped(const TrainingOutcome& outcome, uint64_t iteration, bool better,
                const std::function<int()>& finish) const;

    // Writes the blueprint; keeps the one that is replaced where that was asked for.
    Status replace(const std::function<Status()>& write) const;
};

} // namespace tamarin
