#include "training/holdem_run.h"

#include "training/training_run.h"

#include <algorithm>
#include <cstdio>

namespace tamarin {

std::string stepAsJson(const HoldemStep& step) {
    char text[160];
    std::snprintf(text, sizeof text,
                  "{\"iteration\":%llu,\"seconds\":%.3f,\"iterationsPerSecond\":%.1f,"
                  "\"averageRegret\":%.9g}",
                  static_cast<unsigned long long>(step.deals), step.seconds, step.rate,
                  step.averageRegret);
    return text;
}

HoldemEnd runHoldemTraining(HoldemTrainer& trainer, const HoldemGoal& goal,
                            const HoldemHooks& hooks, const Clock& clock) {
    const TimePoint start = clock.now();
    const uint64_t before = trainer.deals();
    const uint64_t batch = trainer.config().batch;
    uint64_t lookAt = nextStep(before, batch);
    TimePoint savedAt = start;
    uint64_t savedDeals = before;
    uint64_t reported = UINT64_MAX;
    const auto report = [&] {
        const double took = seconds(clock.now() - start);
        const auto done = static_cast<double>(trainer.deals() - before);
        reported = trainer.deals();
        if (hooks.step)
            hooks.step({reported, took, took > 0.0 ? done / took : 0.0, trainer.averageRegret()});
    };
    const auto finish = [&](HoldemEnd end) {
        if (reported != trainer.deals()) {
            report();
        }
        return end;
    };
    while (true) {
        if (goal.deals && trainer.deals() >= *goal.deals)
            return finish(HoldemEnd::deals);
        if (hooks.stop && hooks.stop())
            return finish(HoldemEnd::stopped);
        if (goal.seconds && seconds(clock.now() - start) >= *goal.seconds)
            return finish(HoldemEnd::seconds);
        trainer.run(batch);
        if (hooks.progress)
            hooks.progress(trainer.deals());
        if (hooks.save && ((hooks.saveEveryDeals != 0 && trainer.deals() / hooks.saveEveryDeals !=
                                                             savedDeals / hooks.saveEveryDeals) ||
                           (hooks.saveEverySeconds > 0.0 &&
                            seconds(clock.now() - savedAt) >= hooks.saveEverySeconds))) {
            hooks.save();
            savedAt = clock.now();
            savedDeals = trainer.deals();
        }
        if (trainer.deals() >= lookAt) {
            report();
            lookAt = nextStep(trainer.deals(), batch);
        }
    }
}

} // namespace tamarin
