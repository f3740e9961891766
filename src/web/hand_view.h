// A hand as JSON, for a page that knows no rules: who did what and put in how much, the cards that
// may be seen, and what the seat to act may do.
//
//   hand, names, you        the hand's number; who sits in each seat; whose view it is, or null
//   blinds, stacks          by seat, in chips; a stack without end is null
//   actions                 in order: seat, round, type (f, c, r), to: what the seat has in then
//   round, board            the round reached; the board's cards by round, as far as dealt
//   cards, made             by seat: the hole cards, or null; what they make in each round
//   toAct                   the seat to act, or null
//   options                 of the view's own seat when it is to act, else null:
//                           owed, fold, raise: null or {min, max}, both totals
//   result                  of a finished hand: chips won by seat; else null
#pragma once

#include "game/game.h"

#include <optional>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

struct HandView {
    std::span<const std::string> names; // by seat
    std::optional<uint8_t> you;         // the seat whose view it is
    bool allCards = false;              // of a finished hand: everybody's, folded or not
};

// The view's own cards, and after a showdown those of the seats still in, must be in the state.
nlohmann::ordered_json handAsJson(const Game& game, const State& state, const HandView& view);

// What a person calls so many cards: "Pair of kings", "Ace-king suited", "Full house, kings over
// threes", of one card "King". cards: hole cards, then the board.
std::string nameOfHand(const Game& game, std::span<const uint8_t> cards);

// Actions made in the hand so far.
uint32_t actionsIn(const State& state);

// Without white space; bytes that are not UTF-8 become U+FFFD.
std::string wireText(const nlohmann::ordered_json& value);

} // namespace tamarin
