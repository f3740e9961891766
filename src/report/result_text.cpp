#include "report/result_text.h"

#include <cmath>

#include <fmt/format.h>

namespace tamarin {

ResultUnit unitOf(const Game& game) {
    const int32_t blind = bigBlind(game);
    return blind > 0 ? ResultUnit{1000.0 / blind, 1, "mbb/hand"} : ResultUnit{1, 4, "chips/hand"};
}

std::string resultWithInterval(const Interval& interval, double factor, int digits) {
    if (!std::isfinite(interval.halfWidth))
        return fmt::format("{:+.{}f}", interval.mean * factor, digits);
    return fmt::format("{:+.{}f} +- {:.{}f}", interval.mean * factor, digits,
                       interval.halfWidth * factor, digits);
}

} // namespace tamarin
