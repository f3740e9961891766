// One size of a bet or raise, as a menu has it: in pots, in big blinds, the smallest, all-in.
#pragma once

#include "game/game.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tamarin {

struct BetSize {
    enum class Unit : uint8_t {
        pots,   // of the pot after a call
        blinds, // big blinds: what the seat has put in in this round after it (chips in a game
                // without blinds)
        least,  // the smallest that the rules take
        allIn,
    };
    static constexpr uint32_t mostUnits = 1000;
    static constexpr uint32_t mostParts = 10'000; // of a denominator

    Unit unit = Unit::allIn;
    uint32_t numerator = 0; // in lowest terms; 0 and 1 where the unit has no number
    uint32_t denominator = 1;

    bool operator==(const BetSize&) const = default;
};

// "1/2", "0.75", "2": pots; "3b", "2.5b", "5/2b": big blinds; "min", "A". Empty for anything else:
// numbers are above 0 and at most mostUnits.
std::optional<BetSize> parseBetSize(std::string_view text);
// The same text again, but for a decimal, which comes as a fraction.
std::string textOf(const BetSize& size);

// The total that the seat to act would have put in after a raise of that size, rounded to a chip,
// halves up; the rules may take less or more. The seat must be allowed a no-limit raise.
int64_t raiseOfSize(const BetSize& size, const Game& game, const State& state);

// A total made legal: the smallest raise where it is smaller, and all-in where less than a big
// blind would be left behind, with which nobody could bet any more. Empty where the seat to act may
// not raise.
std::optional<int32_t> legalRaise(int64_t total, const Game& game, const State& state);

// Whether the seat to act may raise, and between which totals; unlike raiseIsValid() it is silent
// when a round's list of actions is nearly full, which a tree meets thousands of times.
bool mayRaise(const Game& game, const State& state, int32_t& least, int32_t& most);

// The pot after a call of the seat to act.
int64_t potAfterCall(const Game& game, const State& state);

} // namespace tamarin
