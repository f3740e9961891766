// The progress lines of a training run, printed while CFR::logProgress is on.
#pragma once

#include <ctime>

namespace tamarin {

class TrainingProgress {
public:
    // parts: how many lines the run has, 100 for percents, 10 for tenths. start: when the run
    // began, so that the first line's time includes what came before the first iteration.
    TrainingProgress(unsigned long long iterations, int parts, time_t start)
        : iterations_(iterations), parts_(parts), last_(start) {}

    // Prints when a part is reached, or at each iteration where there are fewer than parts. it is
    // below the number of iterations. Returns the iteration up to which nothing more will be
    // printed.
    unsigned long long at(unsigned long long it);

private:
    void print(long long part);

    unsigned long long iterations_;
    int parts_;
    time_t last_;
    time_t elapsed_ = 0;
};

} // namespace tamarin
