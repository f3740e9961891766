// The progress lines of a training run, printed while CFR::logProgress is on.
#pragma once

#include <ctime>

namespace tamarin {

class TrainingProgress {
public:
    // parts: how many lines the run has, 100 for percents, 10 for tenths. To be made when the run
    // begins: the first line's time includes what comes before the first iteration.
    TrainingProgress(unsigned long long iterations, int parts)
        : iterations_(iterations), parts_(parts) {}

    // Prints when a part is reached, or at each iteration where there are fewer than parts. it is
    // below the number of iterations. Returns the iteration up to which nothing more will be
    // printed.
    unsigned long long at(unsigned long long it);

private:
    void print(long long part);

    unsigned long long iterations_;
    int parts_;
    time_t last_ = time(nullptr);
    time_t elapsed_ = 0;
};

} // namespace tamarin
