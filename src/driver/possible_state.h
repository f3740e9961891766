// Whether the state in a dealer's line is possible.
//
// The reader of match states takes a line by its grammar and replays its betting; it does not ask
// whether its cards can lie on one table. A player has to ask: hands are looked up by their cards,
// and a hand of unknown or repeated cards has no place in any table.
#pragma once

#include "game/state.h"

#include <cstdint>

namespace tamarin {

// Stands for a card that a line leaves out; not a card.
inline constexpr uint8_t unknownCard = 0xff;

// A record to read a line into: every card unknown until it is read.
MatchState unseenState();

// Whether a state that was read into unseenState() is possible: no known card is there twice; the
// viewing seat knows its own cards when it is to act or when there is a board; at a showdown that
// it is in, everybody's cards are shown. Other cards may be unknown, its own too while there is
// nothing to decide.
bool isPossible(const Game& game, const MatchState& seen);

} // namespace tamarin
