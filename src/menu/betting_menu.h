// Bet menus: which sizes of bets and raises a tree of no-limit betting has, out of the many that
// the rules take; a text file of a few lines (docs/bet-menu.md).
//
//     # first bets of three sizes and all-in, two raises of the pot, then all-in alone
//     bets = 1/2 1 2 A, 1 A, 1 A, A
//     bets river = 1 A
//     opponents = min 3
//
// Folding and calling are always there. "bets" has one list of sizes for each number of raises
// before in the round, with commas between; the last list goes on for all raises after it. A line
// for a round (preflop, flop, turn, river) counts for it and the rounds after it that have no line
// of their own; without a name it is that of preflop. "opponents" are sizes besides, of all seats
// but the one that a blueprint is made for: what it should know an answer to and need not do. A
// list without sizes is "none".
#pragma once

#include "menu/bet_size.h"
#include "support/result.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

class BettingMenu {
public:
    static constexpr size_t mostSizes = 8;     // in a list of bets
    static constexpr size_t mostBesides = 6;   // in a list of opponents
    static constexpr size_t mostLists = 16;    // in a line
    static constexpr size_t mostBytes = 65536; // of a text

    // name: of the file, for errors: "NAME:3: what is wrong; what to do".
    static Result<BettingMenu> parse(const std::string& text, const std::string& name);
    static Result<BettingMenu> read(const std::string& path);

    // What parse() takes for the same menu; equal menus have equal texts.
    std::string text() const;
    // Of the text.
    uint64_t hash() const;
    bool operator==(const BettingMenu&) const = default;

    // Whether some list of opponents has a size: seats then have different trees.
    bool hasBesides() const;

    // The totals that the seat to act may raise to, ascending and all different, as the rules take
    // them; besides: with those of opponents. Empty where no raise is allowed or the menu has none.
    std::vector<int32_t> raises(const Game& game, const State& state, bool besides) const;

private:
    using SizeList = std::vector<BetSize>;
    using RoundLists = std::vector<SizeList>; // by raises before

    friend class MenuReader;
    void normalise();

    std::array<RoundLists, MAX_ROUNDS> bets_;
    std::array<RoundLists, MAX_ROUNDS> besides_;
};

} // namespace tamarin
