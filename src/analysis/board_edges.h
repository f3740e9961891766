// How often every hand wins against a known one, less how often it loses: exactly, over all boards
// that may still come.
#pragma once

#include "abstraction/work.h"
#include "analysis/played_hand.h"
#include "analysis/preflop_edges.h"
#include "response/public_deck.h"

#include <optional>
#include <span>
#include <vector>

namespace tamarin {

class BoardEdges {
public:
    // Both must outlive the object.
    BoardEdges(const Game& game, const PublicDeck& deck);

    // With a full deck the edges before the board are counted once, in seconds (preflop_edges.h);
    // to be called before of() is asked for them. stopped() when work was stopped.
    Status prepare(const Work& work);

    // By holding, in [-1, 1]: the share of boards on which it wins against the other less that on
    // which it loses; 0 where it shares a card with the other or the board. Any thread.
    std::vector<double> of(const HoleCards& other, std::span<const uint8_t> board) const;

private:
    std::vector<double> counted(const HoleCards& other, std::span<const uint8_t> board) const;

    const PublicDeck& deck_;
    size_t wholeBoard_;
    bool fullDeck_; // of hold'em: whole boards of five cards
    std::optional<PreflopEdges> preflop_;
};

} // namespace tamarin
