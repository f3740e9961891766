#include "toolbox/making_cards.h"

#include "abstraction/table_names.h"
#include "clustering/abstraction_plan.h"
#include "support/clock.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/resources.h"
#include "support/step_progress.h"
#include "toolbox/command.h"

namespace tamarin {

Result<MadeAbstraction> makeCards(MakeOptions options, bool quiet) {
    const AbstractionPlan plan = planAbstraction(options);
    if (plan.state == AbstractionPlan::State::missing ||
        plan.state == AbstractionPlan::State::begun)
        if (const Status enough = checkResources(plan.memory, plan.disk,
                                                 inDirectory(options.directory, lookupDirectory));
            !enough)
            return Error{enough.error()};
    StepProgress progress(quiet);
    options.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
        progress.at(step, done, total);
    };
    options.log = [&](const std::string& line) { progress.line(line); };
    options.stop = interrupted;
    const TimePoint start = steadyClock().now();
    auto made = makeAbstraction(options);
    if (made && made->made)
        progress.line(
            fmt::format("all in {}", describeDuration(seconds(steadyClock().now() - start))));
    if (!made && stoppedBySignal(made.error()))
        progress.line(fmt::format("stopped; what is done is kept, and the same command{} goes on "
                                  "from there",
                                  options.force ? " without --force" : ""));
    return made;
}

} // namespace tamarin
