// What a hand wins against each holding of the opponent when both check to the end: over all boards
// that may still come, exactly. Where they are too many, before the flop of a full deck, they are
// drawn (preflop_shares.h).
#pragma once

#include "local_response/preflop_shares.h"
#include "response/public_deck.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class RollOut {
public:
    // Boards to come beyond which all of them are not tried.
    static constexpr uint64_t mostBoards = 100'000;

    // preflop: may be null; else it must outlive the object, as the game and the deck must.
    RollOut(const Game& game, const PublicDeck& deck, const PreflopShares* preflop = nullptr)
        : game_(game), deck_(deck), preflop_(preflop) {}

    // Whether all boards are tried from a round on.
    bool isExact(int round) const;
    // Whether a hand can be rolled out in a round.
    bool can(int round) const;

    // shares: for each holding the share of the pot that the hole cards win on average, in [0, 1].
    // board: as many cards as are out in a round from which hands can be rolled out. Holdings share
    // no card with the hole cards or the board. Any thread.
    void against(std::span<const uint8_t> hole, std::span<const uint8_t> board,
                 std::span<const uint16_t> holdings, std::vector<double>& shares) const;

private:
    uint64_t boardsToCome(size_t cardsOut) const;

    const Game& game_;
    const PublicDeck& deck_;
    const PreflopShares* preflop_;
};

} // namespace tamarin
