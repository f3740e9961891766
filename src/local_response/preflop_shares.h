// What each two hole cards win of the pot against each other before any card of the board, from
// boards that are drawn.
//
// A full deck has 1,712,304 boards for each of 47,008 kinds of match-ups: minutes of counting for
// answers that a responder's choices do not need to a thousandth. So one of each of the 169
// starting hands meets all holdings on so many boards that it draws for itself; hands that a
// renaming of the suits turns into it have its answers.
#pragma once

#include "abstraction/work.h"
#include "response/public_deck.h"
#include "support/result.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class PreflopShares {
public:
    // The answers depend on the seed and the number of boards (at least 1) alone, not on the
    // threads. stopped() when work was stopped.
    static Result<PreflopShares> draw(const Game& game, const PublicDeck& deck, uint32_t boards,
                                      uint64_t seed, const Work& work);

    // What the hole cards win, in [0, 1], against each of the holdings. None of them may have one
    // of the cards. Any thread.
    void against(std::span<const uint8_t> hole, std::span<const uint16_t> holdings,
                 std::vector<double>& shares) const;

private:
    explicit PreflopShares(const PublicDeck& deck) : deck_(&deck), rows_(deck.numHandClasses()) {}

    const PublicDeck* deck_;
    std::vector<std::vector<double>> rows_; // [class of starting hands][holding]; of the first
};

} // namespace tamarin
