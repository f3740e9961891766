// Local best response (Lisy and Bowling 2017): what can be won from a known strategy of a game that
// is too large for a best response.
//
// The responder knows the probability of every hand of the opponent, given what the opponent has
// done. Whenever it is to act, it weighs each action that it may take now as if both would check
// and call from then on: calling wins its share of the pot against those hands, folding loses what
// it has put in, and a bet wins what lies there from the hands that the strategy would fold to it
// and is called by all others. It takes the best. Since it really plays so, what it wins is what a
// best response wins at least: a lower bound, never an estimate of the whole.
//
// Only the responder's hole cards and the board are given. What the opponent does is not drawn, and
// no hand is dealt to it: all its actions are followed with the probabilities that its possible
// hands give them, down to what they win at the end. On average that is what dealt hands come to,
// with less left to chance. A hand that ends early is settled on average over the cards that did
// not come.
#pragma once

#include "local_response/bet_menu.h"
#include "local_response/opponent.h"
#include "showdown/board_margins.h"

#include <array>
#include <deque>
#include <vector>

namespace tamarin {

// A game for two and all that a responder plays it with; everything must outlive its users.
struct LocalGame {
    const Game& game;
    const PublicDeck& deck;
    const Opponent& opponent;
    const BoardMargins& margins; // prepared, if it is to play from before the flop
    BetMenu menu = BetMenu::pot;
    int from = 0; // the round before which the responder checks and calls
};

// What a local responder is dealt, and the cards that lie on the board at the end.
struct LocalDeal {
    std::array<uint8_t, 2> hole;
    std::array<uint8_t, MAX_BOARD_CARDS> board;
};

// One thread.
class LocalPlay {
public:
    explicit LocalPlay(const LocalGame& game) : game_(game) {}

    // What the responder wins on average in each seat, in chips.
    std::array<double, 2> values(const LocalDeal& deal);

private:
    // What is known in a round, found when it is first asked for.
    struct RoundView {
        std::vector<uint16_t> holdings; // that share no card with what the responder sees
        std::array<SeenHands, 2> seen;  // [seat of the opponent]
        std::array<bool, 2> looked{};
        std::vector<double> margins; // of each holding over the responder's hand
    };
    struct Frame {
        RangeAnswer answer;
        std::vector<double> reach; // behind one of the answer's actions, by number of the holding
    };

    void begin(const LocalDeal& deal);
    const SeenHands& seenIn(int round);
    const std::vector<double>& marginsIn(int round);
    Frame& frame(size_t depth);

    // What the responder wins from a state on: the mean over the opponent's hands, each weighed
    // with its reach.
    double play(const State& state, size_t depth, const std::vector<double>& reach);
    double face(const State& state, size_t depth, const std::vector<double>& reach);
    double follow(const State& state, const Action& action, size_t depth,
                  const std::vector<double>& reach);
    // round: in which the hand ended.
    double settle(const State& state, int round, const std::vector<double>& reach);

    Action choose(const State& state, const std::vector<double>& reach);
    // What the local rule promises, in chips and times the sum of the reach.
    double worthOfCall(const State& state, const std::vector<double>& reach);
    double worthOfBet(const State& state, const std::vector<double>& reach);

    double ahead(int round, const std::vector<double>& reach);
    double total(int round, const std::vector<double>& reach) const;
    int lastRound() const { return game_.game.numRounds - 1; }
    int opponent() const { return 1 - seat_; }
    // Chips that a bet to so many wins or loses at a showdown.
    double contested(int32_t bet) const;

    const LocalGame game_;
    LocalDeal deal_{};
    int seat_ = 0; // the responder's
    std::array<RoundView, MAX_ROUNDS> rounds_;
    std::deque<Frame> frames_; // [depth]; stay where they are
    RangeAnswer tried_;        // to a bet that is only thought of
};

} // namespace tamarin
