#include "training/training_run.h"

#include <algorithm>
#include <cstdio>

namespace tamarin {

namespace {

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string list(size_t count, const std::function<double(size_t)>& at) {
    std::string text = "[";
    for (size_t i = 0; i < count; ++i) {
        if (i != 0)
            text += ',';
        text += number(at(i));
    }
    text += ']';
    return text;
}

uint64_t roundUp(uint64_t value, uint64_t block) {
    return (value + block - 1) / block * block;
}

} // namespace

std::string stepAsJson(const TrainingStep& step) {
    const size_t seats = step.value.value.size();
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.3f", step.seconds);
    return "{\"iteration\":" + std::to_string(step.iteration) + ",\"seconds\":" + seconds +
           ",\"nashConv\":" + number(step.value.nashConv()) +
           ",\"gain\":" + list(seats, [&](size_t p) { return step.value.gain(p); }) +
           ",\"value\":" + list(seats, [&](size_t p) { return step.value.value[p]; }) + '}';
}

uint64_t nextStep(uint64_t iteration, uint64_t block) {
    uint64_t step = block;
    while (step <= iteration)
        step += roundUp(std::max<uint64_t>(1, step / 8), block);
    return step;
}

TrainingEnd runTraining(const SmallGame& game, Trainer& trainer, const TrainingGoal& goal,
                        const TrainingHooks& hooks, int threads, const Clock& clock) {
    const TimePoint start = clock.now();
    const auto elapsed = [&] { return seconds(clock.now() - start); };
    const uint64_t last = goal.iterations ? roundUp(*goal.iterations, trainer.block()) : UINT64_MAX;
    uint64_t lookAt = nextStep(trainer.iteration(), trainer.block());
    uint64_t saveAt = UINT64_MAX;
    const auto planSave = [&] {
        if (hooks.saveEvery != 0 && hooks.save)
            saveAt = roundUp((trainer.iteration() / hooks.saveEvery + 1) * hooks.saveEvery,
                             trainer.block());
    };
    planSave();
    // Iterations between two looks at the clock and the stop flag: about a hundredth of a second.
    uint64_t stretch = 1;
    uint64_t reported = UINT64_MAX;
    double reportedNashConv = 0.0;
    const auto report = [&] {
        const TrainingStep step{trainer.iteration(), elapsed(),
                                evaluateProfile(game, trainer.average(), threads)};
        reported = step.iteration;
        reportedNashConv = step.value.nashConv();
        if (hooks.step)
            hooks.step(step);
    };
    const auto finish = [&](TrainingEnd end) {
        if (reported != trainer.iteration())
            report();
        return end;
    };
    while (true) {
        if (trainer.iteration() >= last)
            return finish(TrainingEnd::iterations);
        if (hooks.stop && hooks.stop())
            return finish(TrainingEnd::stopped);
        if (goal.seconds && elapsed() >= *goal.seconds)
            return finish(TrainingEnd::seconds);
        const uint64_t until = std::min({last, lookAt, saveAt, trainer.iteration() + stretch});
        const TimePoint before = clock.now();
        const uint64_t from = trainer.iteration();
        trainer.run(until - from);
        const double took = seconds(clock.now() - before);
        if (until - from >= stretch)
            stretch = took < 0.005  ? stretch * 2
                      : took > 0.02 ? std::max<uint64_t>(1, stretch / 2)
                                    : stretch;
        if (trainer.iteration() >= saveAt) {
            hooks.save(trainer);
            planSave();
        }
        if (trainer.iteration() >= lookAt) {
            report();
            lookAt = nextStep(trainer.iteration(), trainer.block());
            if (goal.nashConv && reportedNashConv <= *goal.nashConv)
                return finish(TrainingEnd::nashConv);
        }
    }
}

} // namespace tamarin
