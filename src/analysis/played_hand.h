// A finished hand of a game for two, as small as it can be: its cards and its actions.
#pragma once

#include "game/game.h"
#include "response/public_deck.h"
#include "tree/compiled_tree.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

struct PlayedHand {
    std::array<HoleCards, 2> hole; // by seat
    std::vector<uint8_t> board;    // of the rounds that the betting reached, and no other card
    std::vector<uint8_t> actions;  // fold, call and raise, as the betting tree numbers them
};

// Of a game for two with two hole cards.
PlayedHand playedHand(const Game& game, const State& finished);

// What a settlement pays the seat, in chips: board is the whole one where nobody has folded.
double payoffAt(const CompiledTree::Settlement& settlement, int seat, const HoleCards& own,
                const HoleCards& other, std::span<const uint8_t> board);

} // namespace tamarin
