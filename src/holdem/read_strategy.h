// A hold'em strategy file in flat form.
#pragma once

#include "holdem/sets.h"
#include "support/result.h"

#include <string>

namespace tamarin {

// Reads a whole strategy into sets, which must be of the same game. An error says which record does
// not belong to the game, or what is missing.
Status readStrategyFile(const std::string& path, HoldemSets& sets);

} // namespace tamarin
