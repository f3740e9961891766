// A training as the commands do it: what was asked for, and a run with log, progress and
// checkpoints, until a goal or a signal.
#pragma once

#include "support/lock.h"
#include "training/algorithms.h"
#include "training/training_run.h"

#include <functional>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

struct TrainingRequest {
    std::string directory = ".";
    std::string out;                    // of the results; where `player` looks when empty
    std::optional<Algorithm> algorithm; // the game's default when not given
    uint64_t seed = 1;
    std::optional<int> threads;     // 0: all cores; the game's default when not given
    uint32_t sampledDeals = 0;      // 0: all of a small game's deals
    TrainingGoal goal;              // the game's default when there is none
    uint64_t checkpointEvery = 0;   // iterations; 0: not by number
    double checkpointSeconds = 0.0; // 0: not by time
    bool resume = false;            // go on from the checkpoint, which must be there
    bool resumeIfThere = false;     // the same where there is one of the same configuration
    bool secondsInAll = false;      // the goal's seconds are those of all runs together, by the log
    bool fresh = false;
    bool dryRun = false;
    bool json = false;
    bool quiet = false;
    // Keep the strategy that is replaced as strategy.bad, unless the manifest says that it is whole
    // and of the same game and tables.
    bool keepOther = false;
    uint32_t measureFlops = 0; // of a blueprint: measured now and then, on so many; 0: never
    std::string made = "tamarin train"; // the command, for the manifest
    // Of a blueprint: how good it was to be, for the manifest of one that is finished; without a
    // goal it then goes on until it is stopped, and what it has come to is kept as a blueprint.
    std::string quality;
};

struct TrainingOutcome {
    TrainingEnd end;
    TrainingStep last;
    Status saved; // of the last checkpoint
};

// Makes the directory of the results and locks it. Earlier results are looked at under the lock:
// they may be those of a run that goes on.
Result<FileLock> lockResults(const std::string& out);

// Runs the trainer on, saves at the end too, and says on standard error what could not be saved.
// Without a way to save, the run leaves no log either. resumed: after an earlier run's iterations.
//
// measure, which takes long and counts as none of the training's time, is called after a minute of
// it, after two, four and so on, and at the end; what it returns joins the step in the log, as JSON
// members, and stands beside the progress.
struct LongMeasure {
    nlohmann::ordered_json members; // none where it was stopped
    std::string note;
};
TrainingOutcome runWatched(Trainer& trainer, const TrainingRequest& request, bool resumed,
                           const std::function<Status()>& save,
                           const std::function<LongMeasure()>& measure = nullptr);

// "for 5 min", "until it is stopped": how long a blueprint is trained.
std::string lengthOf(const TrainingGoal& goal);

// Iterations a second, tried for so long or until a signal.
double measureSpeed(Trainer& trainer, double forSeconds);

// "dcfr after 300 iterations, 0.1 s (all iterations done)".
std::string describe(const TrainingOutcome& outcome, Algorithm algorithm);
// The last step with the algorithm and the end.
nlohmann::ordered_json asJson(const TrainingOutcome& outcome, Algorithm algorithm);

} // namespace tamarin
