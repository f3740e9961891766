// The result of a match, for people and for programs.
#pragma once

#include "dealer/match.h"

#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

struct MatchReport {
    std::string gameName;
    const Game* game;
    MatchOptions options;
    const MatchResult* result;
};

std::string reportAsTable(const MatchReport& report);
nlohmann::ordered_json reportAsJson(const MatchReport& report);

// Bytes from a player, fit for a terminal: others than printable ASCII as \xNN, cut at 300.
std::string printable(const std::string& text);

} // namespace tamarin
