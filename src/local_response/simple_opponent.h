// Opponents that do not look at their cards, against bets of any size.
#pragma once

#include "local_response/opponent.h"
#include "response/simple_play.h"

namespace tamarin {

// As SimpleStrategy plays in limit games. In no-limit nobody says how much to raise, so it does not
// raise there: uniform play is of fold and call, and who always raises is refused by assertion.
class SimpleOpponent : public Opponent {
public:
    // The game must outlive the object.
    SimpleOpponent(const Game& game, SimplePlay play);

    void look(const PublicDeck&, int, int, std::span<const uint8_t>, std::span<const uint16_t>,
              SeenHands&) const override {}
    void answer(const State& state, size_t hands, const SeenHands& seen,
                RangeAnswer& answer) const override;

private:
    const Game& game_;
    SimplePlay play_;
};

} // namespace tamarin
