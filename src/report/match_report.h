// The result of a match, for people and for programs.
#pragma once

#include "dealer/match.h"

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

// What a player won, freed of luck, chips a hand; over duplicate blocks where the match has them.
struct FreedFigures {
    Interval luckFree;
    std::optional<Interval> expected; // what the deals are worth, where both strategies are known
};

struct MatchReport {
    std::string gameName;
    const Game* game;
    MatchOptions options;
    const MatchResult* result;
    std::vector<FreedFigures> freed = {}; // by player; empty where nothing is known
};

std::string reportAsTable(const MatchReport& report);
nlohmann::ordered_json reportAsJson(const MatchReport& report);

// Bytes from a player, fit for a terminal: others than printable ASCII as \xNN, cut at 300.
std::string printable(const std::string& text);

} // namespace tamarin
