// The first decisions of a hold'em strategy: by bucket, and as the grid of the 169 starting hands.
#pragma once

#include "directory/holdem_game.h"
#include "strategy/cfr_node.h"
#include "strategy/node_store.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

// A pre-flop decision: what the seat to act does in each bucket, and which bucket each hand is in.
struct PreflopDecision {
    std::string sequence; // the actions before it, "cr"
    int seat;             // from 0
    int acting;           // players still able to act, this one included
    bool valid[numAbstractedActions];
    std::array<std::array<double, numAbstractedActions>, 10> strategy; // [bucket]
    // [row][column] by rank from ace down: suited above the diagonal, offsuit below it.
    std::array<std::array<uint8_t, 13>, 13> bucket;
};

// "AKs", "T9o", "77" for a place in the grid.
std::string startingHandAt(size_t row, size_t column);

// The decisions after at most so many actions, by the betting's depth-first order. An error when
// the strategy lacks one of them.
Result<std::vector<PreflopDecision>> preflopDecisions(const Game& game, const HoldemTables& tables,
                                                      const NodeStore& strategy, size_t actions);

// "seat 1 first to act", "seat 0 after call, raise"
std::string describeDecision(const PreflopDecision& decision);

std::string chartAsText(const PreflopDecision& decision);
nlohmann::ordered_json chartAsJson(const PreflopDecision& decision);
// A self-contained page of all of them.
std::string chartPage(const HoldemGame& game, const std::vector<PreflopDecision>& decisions,
                      const std::string& source);

} // namespace tamarin
