// How trainings came closer to an equilibrium, from their logs (directory/convergence_log.h): as
// curves, as a table and as JSON.
#pragma once

#include "support/result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

// What was measured on the way. Of a small game the average strategies' NashConv, of hold'em the
// average regret, of a strategy that was measured against the best play the exploitability.
enum class ConvergenceMeasure : uint8_t { nashConv, averageRegret, exploitability };
const char* nameOf(ConvergenceMeasure measure);
// "chips/hand", "chips", "mbb/hand".
const char* unitOf(ConvergenceMeasure measure);

struct ConvergencePoint {
    uint64_t iteration;
    double seconds; // of all runs that the training was divided into
    double value;
    std::optional<double> interval95; // half its width
};

struct ConvergenceCurve {
    std::string log; // its path
    ConvergenceMeasure measure;
    std::vector<ConvergencePoint> points; // at least one
};

// The curves of a log's text, one for each measure that it has. Refuses a text without a point, and
// a line that is none of a log: "PATH:3: ...".
Result<std::vector<ConvergenceCurve>> readConvergence(const std::string& path,
                                                      std::string_view text);

// About so many points, evenly apart in the logarithm of the time, and the last.
std::vector<ConvergencePoint> thinned(const std::vector<ConvergencePoint>& points, size_t about);

std::string convergenceAsTable(const std::vector<ConvergenceCurve>& curves);
nlohmann::ordered_json convergenceAsJson(const std::vector<ConvergenceCurve>& curves);

} // namespace tamarin
