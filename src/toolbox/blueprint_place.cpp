#include "toolbox/blueprint_place.h"

#include "directory/convergence_log.h"
#include "directory/kept_files.h"
#include "driver/played_blueprint.h"
#include "support/file.h"
#include "support/progress.h"
#include "toolbox/command.h"

#include <algorithm>
#include <filesystem>

namespace tamarin {

BlueprintPlace::BlueprintPlace(const TrainingRequest& wanted)
    : request(wanted), path(wanted.out + "/" + blueprintName), checkpoint(path + ".checkpoint") {}

Result<bool> BlueprintPlace::takeUp(const std::function<Status()>& read) const {
    std::error_code error;
    const bool there = std::filesystem::exists(checkpoint, error);
    if (request.fresh || (!there && !request.resume))
        return false;
    if (!there)
        return Error{checkpoint + " is not there: nothing to resume"};
    if (!request.resume && !request.resumeIfThere)
        return Error{checkpoint + " is that of an earlier run: --resume goes on from it, " +
                     "--fresh starts over"};
    // One that cannot be read at all may be a good one.
    if (const auto readable = MappedFile::open(checkpoint); !readable)
        return Error{readable.error()};
    const Status taken = read();
    if (taken)
        return true;
    if (request.resume)
        return Error{taken.error()};
    const auto aside = setAsideBadFile(checkpoint);
    if (!aside)
        return Error{aside.error()};
    complain("{}; starting over, it is kept as {}", taken.error(), *aside);
    return false;
}

TrainingRequest BlueprintPlace::whatIsLeft(bool resumed, uint64_t iteration) const {
    TrainingRequest left = request;
    if (resumed && request.secondsInAll && request.goal.seconds)
        left.goal.seconds =
            std::max(0.0, *request.goal.seconds - secondsTrained(request.out, iteration));
    return left;
}

int BlueprintPlace::stopped(const TrainingOutcome& outcome, uint64_t iteration, bool better,
                            const std::function<int()>& finish) const {
    if (!request.quality.empty() && better) {
        if (outcome.saved)
            complain("stopped; the same command goes on from {}", checkpoint);
        const int status = finish();
        return status == exitDone ? interruptStatus() : status;
    }
    if (outcome.saved)
        complain("stopped; {} holds all {} iterations, {} goes on from it, and {} is as it was",
                 checkpoint, describeCount(iteration),
                 request.quality.empty() ? "--resume" : "the same command", path);
    return interruptStatus();
}

Status BlueprintPlace::replace(const std::function<Status()>& write) const {
    KeptFiles kept;
    if (request.keepOther && std::filesystem::exists(path))
        if (Status safe = kept.keep(path); !safe)
            return safe;
    if (Status written = write(); !written)
        return written;
    kept.replaced();
    return {};
}

} // namespace tamarin
