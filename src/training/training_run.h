// A training run: until when, and what is reported and saved on the way.
#pragma once

#include "support/clock.h"
#include "training/trainer.h"

#include <functional>
#include <optional>
#include <string>

namespace tamarin {

struct TrainingGoal {
    std::optional<uint64_t> iterations; // in all, those of a resumed run included
    std::optional<double> seconds;      // of this process
    // Of a small game's average strategy, looked at in the steps of the log. Hold'em has none.
    std::optional<double> nashConv;
    // Whatever comes first; with none of them the run ends only when it is told to.
    bool any() const { return iterations || seconds || nashConv; }
};

// What is known at one step of the log.
struct TrainingStep {
    uint64_t iteration;
    double seconds; // of this process
    double rate;    // iterations a second since this process began
    TrainingMeasure measure;
};

// One JSON object, no line end: of a small game and of hold'em
// {"iteration":9,"seconds":0.100,"nashConv":0.2,"gain":[...],"value":[...]}
// {"iteration":8,"seconds":0.100,"iterationsPerSecond":80.0,"averageRegret":0.25}
std::string stepAsJson(const TrainingStep& step);

// Why a run ended, and how a person is told.
enum class TrainingEnd { iterations, seconds, nashConv, stopped };
const char* describe(TrainingEnd end);

struct TrainingHooks {
    std::function<void(const TrainingStep&)> step;    // at each step of the log
    std::function<void(uint64_t iteration)> progress; // about a hundred times a second
    std::function<void()> save;
    uint64_t saveEvery = 0;        // iterations; 0: not by number
    double saveEverySeconds = 0.0; // 0: not by time
    std::function<bool()> stop;    // asked as often; true ends the run
};

// The first step of the log after an iteration. Steps are an eighth apart, whatever the speed, so
// that a goal in NashConv ends on the same iteration on every machine.
uint64_t nextStep(uint64_t iteration, uint64_t block);

// Runs the trainer on from where it is. The last step, at the end, is always reported. The clock,
// progress and the stop are seen to between blocks, of which one may take seconds.
TrainingEnd runTraining(Trainer& trainer, const TrainingGoal& goal, const TrainingHooks& hooks,
                        const Clock& clock = steadyClock());

} // namespace tamarin
