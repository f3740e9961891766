// What a deal is worth when both strategies are known: the mean over all that both may do with
// these cards, by one walk of the betting tree.
#pragma once

#include "analysis/played_hand.h"
#include "response/hand_strategy.h"
#include "response/public_deck.h"

#include <array>

namespace tamarin {

// In chips, for seat 0; the board is the whole one.
double dealValue(const Game& game, const CompiledTree& tree,
                 const std::array<const HandStrategy*, 2>& strategies,
                 const std::array<HoleCards, 2>& hole, std::span<const uint8_t> board);

// The board of a hand, with cards in place of those that no round showed: a log does not have them.
// They are drawn from the cards left, by a generator that begins with the hole cards, so that
// duplicate deals have them alike. The value of the deal stays right on average: given what was
// shown, the cards that were not are as likely as any.
std::vector<uint8_t> wholeBoard(const Game& game, const PublicDeck& deck, const PlayedHand& hand);

} // namespace tamarin
