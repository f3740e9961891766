// A training run: until when, and what is reported on the way.
#pragma once

#include "support/clock.h"
#include "training/best_response.h"
#include "training/trainer.h"

#include <functional>
#include <optional>

namespace tamarin {

struct TrainingGoal {
    std::optional<uint64_t> iterations; // in all, those of a resumed run included
    std::optional<double> seconds;      // of this process
    std::optional<double> nashConv; // of the average strategy, looked at in the steps of the log
    // Whatever comes first; with none of them the run ends only when it is told to.
};

// What is known at one step of the log.
struct TrainingStep {
    uint64_t iteration;
    double seconds;
    ProfileValue value;
};

// One JSON object, no line end:
// {"iteration":9,"seconds":0.1,"nashConv":0.2,"gain":[...],"value":[...]}
std::string stepAsJson(const TrainingStep& step);

// Why a run ended.
enum class TrainingEnd { iterations, seconds, nashConv, stopped };

struct TrainingHooks {
    std::function<void(const TrainingStep&)> step; // at each step of the log
    std::function<void(const Trainer&)> save;      // every saveEvery iterations
    uint64_t saveEvery = 0;                        // 0: never
    std::function<bool()> stop;                    // asked often; true ends the run
};

// The first step of the log after an iteration. Steps are an eighth apart, whatever the speed, so
// that a goal in NashConv ends on the same iteration on every machine.
uint64_t nextStep(uint64_t iteration, uint64_t block);

// Runs the trainer on from where it is. The last step, at the end, is always reported, and the
// result is that step.
TrainingEnd runTraining(const SmallGame& game, Trainer& trainer, const TrainingGoal& goal,
                        const TrainingHooks& hooks, int threads = 1,
                        const Clock& clock = steadyClock());

} // namespace tamarin
