#include "support/statistics.h"

#include <cassert>
#include <cmath>
#include <iterator>
#include <limits>

namespace tamarin {

void RunningMoments::add(double value) {
    ++count_;
    const double distance = value - mean_;
    mean_ += distance / static_cast<double>(count_);
    squares_ += distance * (value - mean_);
}

double RunningMoments::variance() const {
    return count_ < 2 ? 0 : squares_ / static_cast<double>(count_ - 1);
}

Interval interval95(const RunningMoments& moments) {
    if (moments.count() < 2)
        return {moments.mean(), std::numeric_limits<double>::infinity()};
    const double error = std::sqrt(moments.variance() / static_cast<double>(moments.count()));
    return {moments.mean(), studentQuantile975(moments.count() - 1) * error};
}

double studentQuantile975(uint64_t degrees) {
    assert(degrees > 0);
    constexpr double exact[] = {12.706205, 4.302653, 3.182446};
    if (degrees <= std::size(exact))
        return exact[degrees - 1];
    constexpr double x = 1.959963984540054;
    constexpr double x2 = x * x;
    constexpr double g1 = x * (x2 + 1) / 4;
    constexpr double g2 = x * ((5 * x2 + 16) * x2 + 3) / 96;
    constexpr double g3 = x * (((3 * x2 + 19) * x2 + 17) * x2 - 15) / 384;
    constexpr double g4 = x * ((((79 * x2 + 776) * x2 + 1482) * x2 - 1920) * x2 - 945) / 92160;
    const double n = static_cast<double>(degrees);
    return x + (g1 + (g2 + (g3 + g4 / n) / n) / n) / n;
}

} // namespace tamarin
