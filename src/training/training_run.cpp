#include "training/training_run.h"

#include <algorithm>
#include <cstdio>

namespace tamarin {

namespace {

template <class... Numbers>
std::string formatted(const char* format, Numbers... numbers) {
    char text[160];
    std::snprintf(text, sizeof text, format, numbers...);
    return text;
}

std::string list(size_t count, const std::function<double(size_t)>& at) {
    std::string text = "[";
    for (size_t i = 0; i < count; ++i)
        text += formatted(i == 0 ? "%.17g" : ",%.17g", at(i));
    return text + ']';
}

std::string asJson(const TrainingStep& /*step*/, const ProfileValue& of) {
    const size_t seats = of.value.size();
    return formatted(",\"nashConv\":%.17g", of.nashConv()) +
           ",\"gain\":" + list(seats, [&](size_t p) { return of.gain(p); }) +
           ",\"value\":" + list(seats, [&](size_t p) { return of.value[p]; });
}

std::string asJson(const TrainingStep& step, const AverageRegret& regret) {
    return formatted(",\"iterationsPerSecond\":%.1f,\"averageRegret\":%.9g", step.rate,
                     regret.chips);
}

uint64_t roundUp(uint64_t value, uint64_t block) {
    return (value + block - 1) / block * block;
}

struct Run {
    Trainer& trainer;
    const TrainingGoal& goal;
    const TrainingHooks& hooks;
    const Clock& clock;
    const TimePoint start = clock.now();
    const uint64_t first = trainer.iteration();
    const uint64_t last = goal.iterations ? roundUp(*goal.iterations, trainer.block()) : UINT64_MAX;
    uint64_t lookAt = nextStep(first, trainer.block());
    uint64_t saveAt = UINT64_MAX;
    TimePoint savedAt = start;
    uint64_t stretch = 1; // iterations between two looks at the clock and the stop flag
    uint64_t reported = UINT64_MAX;
    bool closeEnough = false;

    TrainingEnd run() {
        planSave();
        std::optional<TrainingEnd> end;
        while (!(end = reached())) {
            advance();
            if (hooks.progress)
                hooks.progress(trainer.iteration());
            if (hooks.save && saveIsDue()) {
                hooks.save();
                planSave();
            }
            if (trainer.iteration() >= lookAt) {
                report();
                lookAt = nextStep(trainer.iteration(), trainer.block());
            }
        }
        if (reported != trainer.iteration())
            report();
        return *end;
    }

    double since(TimePoint then) const { return seconds(clock.now() - then); }

    std::optional<TrainingEnd> reached() {
        if (closeEnough)
            return TrainingEnd::nashConv;
        if (trainer.iteration() >= last)
            return TrainingEnd::iterations;
        if (hooks.stop && hooks.stop())
            return TrainingEnd::stopped;
        if (goal.seconds && since(start) >= *goal.seconds)
            return TrainingEnd::seconds;
        return std::nullopt;
    }

    void advance() {
        const TimePoint before = clock.now();
        const uint64_t from = trainer.iteration();
        const uint64_t until = std::min({last, lookAt, saveAt, from + stretch});
        trainer.run(until - from);
        const double took = since(before);
        if (until - from < stretch)
            return;
        if (took < 0.005)
            stretch *= 2;
        else if (took > 0.02)
            stretch = std::max<uint64_t>(1, stretch / 2);
    }

    bool saveIsDue() const {
        return trainer.iteration() >= saveAt ||
               (hooks.saveEverySeconds > 0.0 && since(savedAt) >= hooks.saveEverySeconds);
    }

    void planSave() {
        savedAt = clock.now();
        if (hooks.save && hooks.saveEvery != 0)
            saveAt = roundUp((trainer.iteration() / hooks.saveEvery + 1) * hooks.saveEvery,
                             trainer.block());
    }

    void report() {
        reported = trainer.iteration();
        const double took = since(start);
        const double rate = took > 0.0 ? static_cast<double>(reported - first) / took : 0.0;
        const TrainingStep step{reported, took, rate, trainer.measure()};
        if (const auto* value = std::get_if<ProfileValue>(&step.measure))
            closeEnough = goal.nashConv && value->nashConv() <= *goal.nashConv;
        if (hooks.step)
            hooks.step(step);
    }
};

} // namespace

std::string stepAsJson(const TrainingStep& step) {
    return formatted("{\"iteration\":%llu,\"seconds\":%.3f",
                     static_cast<unsigned long long>(step.iteration), step.seconds) +
           std::visit([&](const auto& measure) { return asJson(step, measure); }, step.measure) +
           '}';
}

const char* describe(TrainingEnd end) {
    constexpr const char* texts[] = {"all iterations done", "time is up", "NashConv reached",
                                     "stopped by a signal"};
    return texts[static_cast<size_t>(end)];
}

uint64_t nextStep(uint64_t iteration, uint64_t block) {
    uint64_t step = block;
    while (step <= iteration)
        step += roundUp(std::max<uint64_t>(1, step / 8), block);
    return step;
}

TrainingEnd runTraining(Trainer& trainer, const TrainingGoal& goal, const TrainingHooks& hooks,
                        const Clock& clock) {
    return Run{trainer, goal, hooks, clock}.run();
}

} // namespace tamarin
