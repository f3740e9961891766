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

} // namespace tamarin
