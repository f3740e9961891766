// A match: the hands, one after the other, between players who are already seated.
//
// Every player is sent every state, as its seat sees it, after every change and at the end of the
// hand; the player to act answers with that state, ":" and its action. One thread; the dealer waits
// in poll() and nowhere else. Nothing that a player sends, fails to send or does can end the match
// before its time or hang it: an answer that is missing or wrong is replaced by a fold or a call. A
// player is charged for the time in which the dealer waits for it, not for what the dealer does
// meanwhile or sleeps through when it is stopped; and what has come is read before an answer is
// called late.
#pragma once

#include "dealer/player.h"
#include "dealer/reply.h"
#include "dealer/scoreboard.h"
#include "game/game.h"
#include "support/result.h"

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tamarin {

struct MatchOptions {
    uint64_t hands = 1000; // in duplicate matches a multiple of the number of players
    uint64_t seed = 1;
    // Each deal is played once for every rotation of the players around the table, so that the luck
    // of the cards cancels out; results are taken over these blocks.
    bool duplicate = false;
    // Players keep their seats. Otherwise they move on by one seat every hand, so that the seats
    // even out (in a duplicate match they move in any case).
    bool fixedSeats = false;
    Duration actionLimit = std::chrono::seconds(60); // for one answer
    Duration handLimit = std::chrono::seconds(300);  // for all answers of a player in one hand
    bool stopOnFault = false; // a fault ends the match; otherwise it is counted
};

// A player that is late this many times in a row is taken to be gone: otherwise it would use up the
// time limit of every hand.
inline constexpr int lateAnswersTaken = 5;

struct FinishedHand {
    const State* state;
    std::span<const double> chips;   // by seat
    std::span<const size_t> players; // by seat: who sat there
};

struct MatchEvents {
    // After every hand; an error ends the match.
    std::function<Status(const FinishedHand&)> handFinished = [](const FinishedHand&) {
        return Status{};
    };
    // Every fault, with the hand it happened in and what is known about it.
    std::function<void(size_t player, Fault fault, uint32_t hand, const std::string& detail)>
        faulty = [](size_t, Fault, uint32_t, const std::string&) {};
    // Asked often; false ends the match with the hands finished so far.
    std::function<bool()> keepPlaying = [] { return true; };
};

struct PlayerResult {
    std::string name;
    std::array<uint64_t, 3> actions{}; // folds, calls (and checks), raises, as played
    std::array<uint64_t, numFaults> faults{};
    LatencyHistogram latency; // of the answers that came in time
    // The same of the first and the last tenth of the hands asked for: a player that leaks or
    // clogs up grows slow.
    LatencyHistogram firstTenth;
    LatencyHistogram lastTenth;
    bool gone = false;
};

struct MatchResult {
    explicit MatchResult(Scoreboard empty) : board(std::move(empty)) {}

    Scoreboard board; // players in the order in which they were given
    std::vector<PlayerResult> players;
    double seconds = 0;   // of play
    uint64_t played = 0;  // finished hands, those of an incomplete block included
    bool stopped = false; // keepPlaying said so
    // Why the match ended before its time; empty when it did not, or was stopped.
    std::string failure;
};

// Plays until all hands are played or something above ends the match. The players stay seated, but
// a player that is gone has lost its connection.
MatchResult playMatch(const Game* game, std::vector<Player>& players, const MatchOptions& options,
                      const MatchEvents& events = {}, const Clock& clock = steadyClock());

// What the dealer asks of a game beyond a valid definition. No negative blinds or raises and no
// empty stacks: chips would not sum to zero. No board cards in the first round: in the text of a
// state nothing separates them from the last seat's hole cards, so where these are unknown the text
// cannot be read back and no player could answer.
Status checkDealable(const Game* game);

// The cards of one deal: a function of the seed and the deal's number alone.
void dealFromSeed(const Game* game, uint64_t seed, uint64_t deal, State* state);

// Who sits where in one hand, by seat.
std::vector<size_t> seatsOfHand(const MatchOptions& options, size_t numPlayers, uint64_t hand);

} // namespace tamarin
