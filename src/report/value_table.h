// What strategies of a small game are worth, as text.
#pragma once

#include "training/best_response.h"

#include <string>

namespace tamarin {

// "seat 0: value -0.0261, best response -0.0261, gain 1e-8" and so on, as a table with the
// NashConv.
std::string valueTable(const Game& rules, const ProfileValue& value);

} // namespace tamarin
