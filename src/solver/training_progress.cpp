#include "solver/training_progress.h"

#include "solver/cfr.h"

#include <algorithm>
#include <iostream>

namespace tamarin {

unsigned long long TrainingProgress::at(unsigned long long it) {
    if (!CFR::logProgress)
        return iterations_;
    const auto parts = static_cast<unsigned long long>(parts_);
    if (iterations_ < parts) { // a part is less than an iteration: each reaches one
        print(static_cast<long long>(it * parts / iterations_));
        return it + 1;
    }
    const unsigned long long step = iterations_ / parts;
    if (it % step == 0)
        print(static_cast<long long>(it / step));
    return std::min(iterations_, (it / step + 1) * step);
}

// The time left is the length of the last part times the parts still to go. A line of tenths shows
// the tenth and not the percent.
void TrainingProgress::print(long long part) {
    const time_t now = time(nullptr);
    elapsed_ += now - last_;
    const double minutesLeft = static_cast<double>((now - last_) * (parts_ - part)) / 60.0;
    std::cout << "CFR progress: " << part
              << "% (elapsed time: " << static_cast<double>(elapsed_) / 60.0
              << " mins, expected time left: " << minutesLeft << " mins)" << std::endl;
    last_ = time(nullptr);
}

} // namespace tamarin
