#include "support/step_progress.h"

#include <algorithm>

namespace tamarin {

StepProgress::StepProgress(bool quiet, FILE* out, const Clock& clock)
    : quiet_(quiet), out_(out), clock_(clock) {}

void StepProgress::at(const std::string& step, uint64_t done, uint64_t total) {
    if (quiet_)
        return;
    if (step != step_ || !shown_) {
        end();
        step_ = step;
        shown_.emplace(step, "", total, out_, clock_);
    }
    done_ = std::max(done_, done);
    shown_->update(done_);
}

void StepProgress::line(const std::string& text) {
    end();
    if (!quiet_)
        std::fprintf(out_, "%s\n", text.c_str());
}

// A step that was cut off stays where it was.
void StepProgress::end() {
    if (shown_)
        shown_->finish(done_);
    shown_.reset();
    done_ = 0;
}

} // namespace tamarin
