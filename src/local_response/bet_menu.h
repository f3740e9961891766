// What a local responder may do: it always may fold and call; the menus differ in the bets.
//
// The more bets it tries, the more it finds. Published are fold and call, with a pot-sized bet and
// all-in, and 56 sizes (Lisy and Bowling 2017); the sizes of the last one are ours.
#pragma once

#include "game/game.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tamarin {

enum class BetMenu : uint8_t {
    foldCall, // no bet
    raise,    // limit games: the one raise that there is
    pot,      // no-limit: the pot and all-in
    wide,     // no-limit: 56 sizes, which are the smallest bet, all-in, and between them 54 from
              // 0.1 to 100 pots, each 1.139 times the one before
};

// "fold-call", "raise", "pot", "wide".
std::optional<BetMenu> betMenuNamed(std::string_view name);
const char* nameOf(BetMenu menu);

// The raises that the seat to act tries, ascending and all different, as the rules take them. A
// size in pots is counted in the pot after a call; what is less than the smallest bet or more than
// the stack is left out, since those two are on each menu that has sizes, but for a pot-sized bet
// beyond the stack, which is all-in.
std::vector<Action> betsOf(BetMenu menu, const Game& game, const State& state);

} // namespace tamarin
