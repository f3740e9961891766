// Regret matching (Hart and Mas-Colell 2000).
#pragma once

#include <cstddef>

namespace tamarin {

// Shares of the positive parts of count numbers; uniform where none is positive. Regrets give the
// current strategy, and the sums of strategies the average one. CFRNode has the plain form. A total
// of 0 divides to NaN, which the choice throws away: the loop has no branch.
inline void matchRegrets(const double* numbers, size_t count, double* shares) {
    double total = 0.0;
    for (size_t i = 0; i < count; ++i) {
        shares[i] = numbers[i] > 0.0 ? numbers[i] : 0.0;
        total += shares[i];
    }
    for (size_t i = 0; i < count; ++i) {
        const double share = shares[i] / total;
        shares[i] = total > 0.0 ? share : 1.0 / static_cast<double>(count);
    }
}

} // namespace tamarin
