// How often every hand wins against a known one, less how often it loses: exactly, over all boards
// that may still come. Half of one more than that is its share of the pot when nobody bets any
// more.
#pragma once

#include "abstraction/work.h"
#include "response/public_deck.h"
#include "showdown/preflop_margins.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tamarin {

class BoardMargins {
public:
    // Both must outlive the object.
    BoardMargins(const Game& game, const PublicDeck& deck);

    // In hold'em the margins before the board are counted once, of all pairs of hands, in seconds
    // (preflop_margins.h); to be called before of() is asked for them. stopped() when work was
    // stopped.
    bool countsPairs() const { return fullDeck_; }
    Status prepare(const Work& work);

    // Whether margins are found with so many cards on the board: before the flop of hold'em, and
    // where no more than mostBoards may come.
    static constexpr uint64_t mostBoards = 100'000;
    bool can(size_t boardCards) const;

    // By holding, in [-1, 1]: the share of boards on which it wins against the other's hole cards
    // less that on which it loses; 0 where it shares a card with the other or the board. Any
    // thread.
    std::vector<double> of(std::span<const uint8_t> other, std::span<const uint8_t> board) const;

private:
    uint64_t boardsToCome(size_t boardCards) const;
    std::vector<double> counted(std::span<const uint8_t> other,
                                std::span<const uint8_t> board) const;

    const PublicDeck& deck_;
    size_t wholeBoard_;
    bool fullDeck_; // of hold'em: whole boards of five cards
    std::optional<PreflopMargins> preflop_;
};

} // namespace tamarin
