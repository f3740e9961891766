#include "toolbox/training_session.h"

#include "directory/convergence_log.h"
#include "directory/json.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/command.h"

#include <algorithm>

namespace tamarin {

namespace {

constexpr double firstLongMeasure = 60; // seconds

// How good the training is and, where time alone ends it, how long it goes on.
std::string noteOn(const TrainingMeasure* measure, const TrainingGoal& goal, double took) {
    std::string text;
    if (const auto* value = std::get_if<ProfileValue>(measure))
        text = fmt::format("NashConv {:.2e}", value->nashConv());
    else if (const auto* regret = std::get_if<AverageRegret>(measure))
        text = fmt::format("average regret {:.3g}", regret->chips);
    if (goal.seconds && !goal.iterations && !goal.nashConv)
        text += (text.empty() ? "" : ", ") + describeDuration(std::max(0.0, *goal.seconds - took)) +
                " left";
    return text;
}

} // namespace

Result<FileLock> lockResults(const std::string& out) {
    if (Status made = makeDirectories(out); !made)
        return Error{made.error()};
    return FileLock::take(out + "/train.lock");
}

std::string lengthOf(const TrainingGoal& goal) {
    if (goal.seconds)
        return "for " + describeDuration(*goal.seconds);
    return goal.iterations ? "to the iterations wanted" : "until it is stopped";
}

TrainingOutcome runWatched(Trainer& trainer, const TrainingRequest& request, bool resumed,
                           const std::function<Status()>& save,
                           const std::function<LongMeasure()>& measure) {
    std::optional<ConvergenceLog> log;
    if (save)
        log.emplace(request.out, resumed ? std::optional(trainer.iteration()) : std::nullopt);
    std::optional<Progress> progress;
    if (!request.quiet) {
        if (resumed)
            remark("going on after iteration {}", describeCount(trainer.iteration()));
        progress.emplace("Training", "iterations", request.goal.iterations.value_or(0));
        progress->resumeAt(trainer.iteration());
    }
    const TrainingGoal& goal = request.goal;
    HeldClock clock;
    const TimePoint start = clock.now();
    std::optional<TrainingStep> last;
    std::string measured;
    const auto note = [&] {
        const double took = seconds(clock.now() - start);
        return noteOn(last ? &last->measure : nullptr, goal, took) + measured;
    };
    Status saved;
    double measureAt = firstLongMeasure;
    uint64_t measuredAt = UINT64_MAX; // the iteration
    const auto takeLong = [&](const TrainingStep& step) {
        while (measureAt <= step.seconds)
            measureAt *= 2;
        measuredAt = step.iteration;
        clock.hold([&] {
            const LongMeasure found = measure();
            if (found.members.empty())
                return;
            measured = ", " + found.note;
            nlohmann::ordered_json line = {{"iteration", step.iteration},
                                           {"seconds", step.seconds}};
            line.update(found.members);
            if (log)
                log->add(line.dump());
        });
    };
    TrainingHooks hooks;
    hooks.step = [&](const TrainingStep& step) {
        last = step;
        if (log)
            log->add(stepAsJson(step));
        if (measure && step.seconds >= measureAt)
            takeLong(step);
    };
    if (progress)
        hooks.progress = [&](uint64_t iteration) { progress->update(iteration, note()); };
    if (save)
        hooks.save = [&] {
            saved = save();
            if (!saved)
                complain(saved.error());
        };
    hooks.saveEvery = request.checkpointEvery;
    hooks.saveEverySeconds = request.checkpointSeconds;
    hooks.stop = [] { return interrupted(); };
    const TrainingEnd end = runTraining(trainer, goal, hooks, clock);
    if (measure && end != TrainingEnd::stopped && measuredAt != last->iteration)
        takeLong(*last);
    if (progress)
        progress->finish(trainer.iteration(), note());
    if (log && !log->good())
        complain("the log {} could not be written", log->path());
    if (save)
        hooks.save(); // where that fails, the strategies may still find room
    return {end, *last, saved};
}

double measureSpeed(Trainer& trainer, double forSeconds) {
    const uint64_t from = trainer.iteration();
    const TimePoint start = steadyClock().now();
    double took = 0.0;
    while (took < forSeconds && !interrupted()) {
        trainer.run(1);
        took = seconds(steadyClock().now() - start);
    }
    return took > 0.0 ? static_cast<double>(trainer.iteration() - from) / took : 0.0;
}

std::string describe(const TrainingOutcome& outcome, Algorithm algorithm) {
    return fmt::format("{} after {} iterations, {} ({})", algorithmName(algorithm),
                       describeCount(outcome.last.iteration),
                       describeDuration(outcome.last.seconds), describe(outcome.end));
}

nlohmann::ordered_json asJson(const TrainingOutcome& outcome, Algorithm algorithm) {
    nlohmann::ordered_json json = readJson(stepAsJson(outcome.last));
    json["algorithm"] = algorithmName(algorithm);
    json["end"] = describe(outcome.end);
    return json;
}

} // namespace tamarin
