// A match taken apart, as text and as JSON.
#pragma once

#include "analysis/match_analysis.h"

#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

struct AnalysisReport {
    std::string log; // where the hands are from
    std::string gameName;
    const Game* game;
    const MatchAnalysis* analysis;
};

std::string analysisAsTable(const AnalysisReport& report);
nlohmann::ordered_json analysisAsJson(const AnalysisReport& report);

// "+12.3 +- 4.5", of chips times the factor; without an interval where there is none.
std::string resultWithInterval(const Interval& interval, double factor, int digits);
// What figures in chips are shown in: thousandths of the largest blind, or chips where there is
// none.
struct ResultUnit {
    double factor;
    int digits;
    const char* name;
};
ResultUnit unitOf(const Game& game);

} // namespace tamarin
