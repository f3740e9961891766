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

class Run {
public:
    Run(Trainer& trainer, const TrainingGoal& goal, const TrainingHooks& hooks, const Clock& clock)
        : trainer_(trainer), goal_(goal), hooks_(hooks), clock_(clock), start_(clock.now()),
          first_(trainer.iteration()),
          last_(goal.iterations ? roundUp(*goal.iterations, trainer.block()) : UINT64_MAX),
          lookAt_(nextStep(first_, trainer.block())) {
        planSave();
    }

    TrainingEnd run() {
        std::optional<TrainingEnd> end;
        while (!(end = reached())) {
            advance();
            if (hooks_.progress)
                hooks_.progress(trainer_.iteration());
            if (hooks_.save && saveIsDue()) {
                hooks_.save();
                planSave();
            }
            if (trainer_.iteration() >= lookAt_) {
                report();
                lookAt_ = nextStep(trainer_.iteration(), trainer_.block());
            }
        }
        if (reported_ != trainer_.iteration())
            report();
        return *end;
    }

private:
    double since(TimePoint then) const { return seconds(clock_.now() - then); }

    std::optional<TrainingEnd> reached() {
        if (closeEnough_)
            return TrainingEnd::nashConv;
        if (trainer_.iteration() >= last_)
            return TrainingEnd::iterations;
        if (hooks_.stop && hooks_.stop())
            return TrainingEnd::stopped;
        if (goal_.seconds && since(start_) >= *goal_.seconds)
            return TrainingEnd::seconds;
        return std::nullopt;
    }

    void advance() {
        const TimePoint before = clock_.now();
        const uint64_t from = trainer_.iteration();
        const uint64_t until = std::min({last_, lookAt_, saveAt_, from + stretch_});
        trainer_.run(until - from);
        const double took = since(before);
        if (until - from < stretch_)
            return;
        if (took < 0.005)
            stretch_ *= 2;
        else if (took > 0.02)
            stretch_ = std::max<uint64_t>(1, stretch_ / 2);
    }

    bool saveIsDue() const {
        return trainer_.iteration() >= saveAt_ ||
               (hooks_.saveEverySeconds > 0.0 && since(savedAt_) >= hooks_.saveEverySeconds);
    }

    void planSave() {
        savedAt_ = clock_.now();
        if (hooks_.save && hooks_.saveEvery != 0)
            saveAt_ = roundUp((trainer_.iteration() / hooks_.saveEvery + 1) * hooks_.saveEvery,
                              trainer_.block());
    }

    void report() {
        reported_ = trainer_.iteration();
        const double took = since(start_);
        const double rate = took > 0.0 ? static_cast<double>(reported_ - first_) / took : 0.0;
        const TrainingStep step{reported_, took, rate, trainer_.measure()};
        if (const auto* value = std::get_if<ProfileValue>(&step.measure))
            closeEnough_ = goal_.nashConv && value->nashConv() <= *goal_.nashConv;
        if (hooks_.step)
            hooks_.step(step);
    }

    Trainer& trainer_;
    const TrainingGoal& goal_;
    const TrainingHooks& hooks_;
    const Clock& clock_;
    const TimePoint start_;
    const uint64_t first_;
    const uint64_t last_;
    uint64_t lookAt_;
    uint64_t saveAt_ = UINT64_MAX;
    TimePoint savedAt_;
    uint64_t stretch_ = 1; // iterations between two looks at the clock and the stop flag
    uint64_t reported_ = UINT64_MAX;
    bool closeEnough_ = false;
};

} // namespace

std::string stepAsJson(const TrainingStep& step) {
    return formatted("{\"iteration\":%llu,\"seconds\":%.3f",
                     static_cast<unsigned long long>(step.iteration), step.seconds) +
           std::visit([&](const auto& measure) { return asJson(step, measure); }, step.measure) +
           '}';
}

const char* describe(TrainingEnd end) {
    switch (end) {
    case TrainingEnd::iterations:
        return "all iterations done";
    case TrainingEnd::seconds:
        return "time is up";
    case TrainingEnd::nashConv:
        return "NashConv reached";
    case TrainingEnd::stopped:
        return "stopped by a signal";
    }
    return "";
}

uint64_t nextStep(uint64_t iteration, uint64_t block) {
    uint64_t step = block;
    while (step <= iteration)
        step += roundUp(std::max<uint64_t>(1, step / 8), block);
    return step;
}

TrainingEnd runTraining(Trainer& trainer, const TrainingGoal& goal, const TrainingHooks& hooks,
                        const Clock& clock) {
    return Run(trainer, goal, hooks, clock).run();
}

} // namespace tamarin
