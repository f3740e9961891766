// Progress of work in several steps: one display after another, each ended before the next begins.
#pragma once

#include "support/clock.h"
#include "support/progress.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace tamarin {

class StepProgress {
public:
    // quiet: shows nothing at all.
    explicit StepProgress(bool quiet = false, FILE* out = stderr,
                          const Clock& clock = steadyClock());
    ~StepProgress() { end(); }
    StepProgress(const StepProgress&) = delete;
    StepProgress& operator=(const StepProgress&) = delete;

    // Tells how far a step is; another step's name ends the one before. Parts done that arrive out
    // of order (from threads that count together) never move the display back.
    void at(const std::string& step, uint64_t done, uint64_t total);
    // A line of its own, after the step that is shown.
    void line(const std::string& text);

private:
    void end();

    bool quiet_;
    FILE* out_;
    const Clock& clock_;
    std::string step_;
    std::optional<Progress> shown_;
    uint64_t done_ = 0;
};

} // namespace tamarin
