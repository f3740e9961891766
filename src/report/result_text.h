// How results of a match are written: with their intervals, and in which unit.
#pragma once

#include "game/game.h"
#include "support/statistics.h"

#include <string>

namespace tamarin {

// What figures in chips are shown in: thousandths of the largest blind, or chips where there is
// none.
struct ResultUnit {
    double factor; // times chips
    int digits;    // after the point
    const char* name;
};
ResultUnit unitOf(const Game& game);

// "+12.3 +- 4.5", of chips times the factor; without an interval where there is none.
std::string resultWithInterval(const Interval& interval, double factor, int digits);

} // namespace tamarin
