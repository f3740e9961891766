// A run of hold'em training: until when, and what is reported and saved on the way.
#pragma once

#include "support/clock.h"
#include "training/holdem_trainer.h"

#include <functional>
#include <optional>
#include <string>

namespace tamarin {

struct HoldemGoal {
    std::optional<uint64_t> deals; // in all, those of a resumed run included
    std::optional<double> seconds; // of this process
    // Whatever comes first; with neither the run ends only when it is told to.
};

// What is known at one step of the log.
struct HoldemStep {
    uint64_t deals;
    double seconds; // of this process
    double rate;    // deals a second since this process began
    double averageRegret;
};

// One JSON object, no line end:
// {"iteration":8,"seconds":0.100,"iterationsPerSecond":80.0,"averageRegret":0.25}
std::string stepAsJson(const HoldemStep& step);

enum class HoldemEnd { deals, seconds, stopped };

struct HoldemHooks {
    std::function<void(const HoldemStep&)> step;  // at each step of the log, an eighth apart
    std::function<void(uint64_t deals)> progress; // several times a second where deals are fast
    std::function<void()> save;                   // between batches
    uint64_t saveEveryDeals = 0;                  // 0: not by number
    double saveEverySeconds = 0.0;                // 0: not by time
    std::function<bool()> stop;                   // asked between batches; true ends the run
};

// Runs the trainer on from where it is. The last step, at the end, is always reported.
HoldemEnd runHoldemTraining(HoldemTrainer& trainer, const HoldemGoal& goal,
                            const HoldemHooks& hooks, const Clock& clock = steadyClock());

} // namespace tamarin
