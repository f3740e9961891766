// A round as a person types it.
#pragma once

#include <string>

namespace tamarin {

// 0..3, from the number or the name: "preflop" or "pre-flop", "flop", "turn", "river". Throws a
// UsageError of anything else.
int readRound(const std::string& text);

} // namespace tamarin
