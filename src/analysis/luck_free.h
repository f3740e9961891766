// What a player of known strategy won in a hand, freed of luck: AIVAT (Burch, Schmid, Moravcik,
// Morrill and Bowling 2018), for games for two in which the log shows both hands.
//
// Let k be the player whose strategy is known and o the opponent; j is o's hand, p what everybody
// has seen (betting and board). Nothing is known of how o plays; but what o does depends on j and p
// alone. So, given j and p, the hands i that k may hold are distributed as the cards and k's own
// strategy have it:
//
//     w(i) = 1 if i shares no card with j or the board, else 0; times the probability with which k,
//            holding i, does what it did on the way to p
//
// and o's actions cancel out. For any function v(p, i) let V(p) be its mean over i weighed with
// w(i). Three things follow.
//
//   - At the end of the hand, V of the payoff is the expectation of what k wins, given j and all
//     that was seen: taking it in place of the payoff leaves the mean as it was (imaginary
//     observations).
//   - Before k acts the probability of action a is the mean of k's probabilities of a over i, and
//     before cards come every board is as likely as the hands i that it leaves weigh. So, of
//     whatever estimate v, the step V(after) - (mean of V(after) over what could have happened) has
//     mean 0, given what was before. With S(a) the sum of w(i) * (probability of a, holding i) *
//     v(p a, i) the mean is the sum of all S(a) divided by that of w(i); for a board it is the mean
//     of v over the boards that share no card with i and j, weighed with w(i).
//   - The same holds of the deal of j. The deal of i is no step: V is a mean over i already.
//
// The luck-free result is the payoff's V less all these steps. Its mean is k's true expectation
// against this opponent, whatever v is: every step has mean 0. With v near the truth the steps are
// all that happens but for o's own choices. o's actions are no step: their probabilities are not
// known.
#pragma once

#include "analysis/played_hand.h"
#include "analysis/value_estimate.h"
#include "response/hand_strategy.h"
#include "response/public_deck.h"
#include "support/result.h"

namespace tamarin {

class LuckFree {
public:
    // The game has two hole cards, and no board before the first betting. All must outlive the
    // object.
    LuckFree(const Game& game, const CompiledTree& tree, const PublicDeck& deck,
             const HandStrategy& strategy, const ValueEstimate& estimate);

    // What the seat, which plays the strategy, won, in chips. An error when the strategy never does
    // what the seat did, with any hand. Any thread.
    Result<double> of(const PlayedHand& hand, int seat) const;

private:
    class Hand;
    const Game& game_;
    const CompiledTree& tree_;
    const PublicDeck& deck_;
    const HandStrategy& strategy_;
    const ValueEstimate& estimate_;
};

} // namespace tamarin
