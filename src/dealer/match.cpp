#include "dealer/match.h"

#include <algorithm>
#include <cassert>
#include <deque>
#include <optional>

namespace tamarin {

namespace {

// States whose answer may still come after it was given up; older ones are forgotten.
constexpr size_t lateStatesKept = 64;

// How long a player that is not to act may wait for a state. Players that answer at once are served
// a third of the writes, and the match is faster for it; a person watching does not see it.
constexpr Duration heldAtMost = std::chrono::milliseconds(1);

// What the dealer knows of one player beside its result.
struct Place {
    std::string sentText;            // the last state sent, without its line end
    std::deque<std::string> givenUp; // states whose answer did not come in time
    int lateInARow = 0;
    Duration usedInHand{0};
};

// The time that a player is charged for one answer. The dealer waits in turns; of each turn the
// player pays what the dealer meant to wait at the most. What the dealer spends on other things, or
// sleeps through because somebody has stopped it, is not the player's.
class ThinkingTime {
public:
    explicit ThinkingTime(TimePoint asked) : counted_(asked) {}

    Duration used() const { return used_; }
    void count(TimePoint now) {
        used_ += std::min(now - counted_, meant_);
        counted_ = now;
    }
    // How long the turn that begins now is meant to wait.
    Duration mean(Duration wait) {
        meant_ = std::min(wait, longestServe);
        return meant_;
    }

private:
    TimePoint counted_;
    Duration used_{0};
    Duration meant_ = heldAtMost; // nobody waits before the first turn; sending takes microseconds
};

class Match {
public:
    Match(const Game* game, std::vector<Player>& players, const MatchOptions& options,
          const MatchEvents& events, const Clock& clock)
        : game_(game), players_(players), options_(options), events_(events), clock_(clock),
          places_(players.size()),
          result_(Scoreboard(players.size(), options.duplicate ? players.size() : 1)) {
        for (const Player& player : players)
            result_.players.emplace_back().name = player.name;
    }

    MatchResult play() {
        const TimePoint start = clock_.now();
        uint64_t hand = 0;
        while (hand < options_.hands && keepGoing() && playHand(hand))
            ++hand;
        result_.played = hand;
        result_.seconds = seconds(clock_.now() - start);
        return std::move(result_);
    }

private:
    bool keepGoing() {
        if (!result_.failure.empty() || result_.stopped)
            return false;
        if (!events_.keepPlaying()) {
            result_.stopped = true;
            return false;
        }
        return true;
    }

    void keepTime(size_t player, Duration used) {
        PlayerResult& result = result_.players[player];
        result.latency.add(used);
        if (hand_ * 10 < options_.hands)
            result.firstTenth.add(used);
        if ((hand_ + 1) * 10 > options_.hands * 9)
            result.lastTenth.add(used);
    }

    // False when the match ended before the hand did.
    bool playHand(uint64_t hand) {
        hand_ = hand;
        const size_t numPlayers = players_.size();
        const uint64_t deal = options_.duplicate ? hand / numPlayers : hand;
        State state{};
        initState(game_, static_cast<uint32_t>(hand), &state);
        dealFromSeed(game_, options_.seed, deal, &state);
        seats_ = seatsOfHand(options_, numPlayers, hand);
        for (Place& place : places_)
            place.usedInHand = Duration{0};

        while (!state.finished) {
            const uint8_t seat = currentPlayer(game_, &state);
            const TimePoint asked = clock_.now();
            sendState(state, seat);
            const auto action = decide(state, seat, asked);
            if (!action)
                return false;
            ++result_.players[seats_[seat]].actions[static_cast<size_t>(action->type)];
            doAction(game_, &*action, &state);
        }
        sendState(state, std::nullopt);
        return finish(state);
    }

    // Every seat is told. Only the seat to act is in a hurry: what the others are told is held back
    // until their turn comes or the seat to act takes its time, so that one write and one wake-up
    // serve several states.
    void sendState(const State& state, std::optional<uint8_t> toAct) {
        char text[MAX_LINE_LEN];
        MatchState view{state, 0};
        for (uint8_t seat = 0; seat < game_->numPlayers; ++seat) {
            view.viewingPlayer = seat;
            const size_t player = seats_[seat];
            auto& connection = players_[player].connection;
            if (!connection)
                continue;
            const int length = printMatchState(game_, &view, sizeof text - 2, text);
            assert(length > 0);
            text[length] = '\r';
            text[length + 1] = '\n';
            const std::string_view line{text, static_cast<size_t>(length) + 2};
            if (seat == toAct)
                connection->send(line);
            else
                connection->hold(line);
            places_[player].sentText.assign(text, static_cast<size_t>(length));
        }
    }

    // The action of the seat to act, whoever has to choose it; none when the match ends here.
    std::optional<Action> decide(const State& state, uint8_t seat, TimePoint asked) {
        const size_t player = seats_[seat];
        Place& place = places_[player];
        const Duration limit =
            players_[player].unhurried
                ? Duration::max()
                : std::min(options_.actionLimit, options_.handLimit - place.usedInHand);
        ThinkingTime time(asked);
        bool lastLook = false;
        std::string line;
        for (;;) {
            if (!takeUnexpectedLines(player, state.handId))
                return std::nullopt;
            auto& connection = players_[player].connection;
            if (!connection)
                return substitute(player, state, Fault::gone, "");
            const bool answered = connection->nextLine(line);
            time.count(clock_.now());
            if (answered && isGivenUp(place, line))
                continue;
            if (answered) {
                place.usedInHand += time.used();
                place.lateInARow = 0;
                keepTime(player, time.used());
                const MatchState view{state, seat};
                const Verdict verdict = judgeReply(game_, &view, place.sentText, line);
                if (verdict.fault && !count(player, *verdict.fault, state.handId, line))
                    return std::nullopt;
                return verdict.action;
            }
            if (connection->ended()) {
                leave(player, connection->ending());
                return substitute(player, state, Fault::gone, departure_);
            }
            if (time.used() >= limit && lastLook) {
                place.usedInHand += time.used();
                return tooLate(player, state);
            }
            if (time.used() >= limit) {
                // An answer that is there by now came while the dealer was busy: it is in time.
                lastLook = true;
                servePlayers(players_, time.mean(Duration::zero()));
            } else if (time.used() < heldAtMost) {
                servePlayers(players_, time.mean(std::min(limit, heldAtMost) - time.used()));
            } else {
                sendWhatIsHeld();
                servePlayers(players_, time.mean(limit - time.used()));
            }
            if (!keepGoing())
                return std::nullopt;
        }
    }

    void sendWhatIsHeld() {
        for (Player& player : players_)
            if (player.connection)
                player.connection->flush();
    }

    std::optional<Action> substitute(size_t player, const State& state, Fault fault,
                                     const std::string& detail) {
        if (!count(player, fault, state.handId, detail))
            return std::nullopt;
        if (std::ranges::none_of(players_,
                                 [](const Player& p) { return p.connection.has_value(); })) {
            result_.failure = "every player is gone";
            return std::nullopt;
        }
        return substituteAction(game_, &state);
    }

    std::optional<Action> tooLate(size_t player, const State& state) {
        Place& place = places_[player];
        place.givenUp.push_back(place.sentText);
        if (place.givenUp.size() > lateStatesKept)
            place.givenUp.pop_front();
        if (++place.lateInARow >= lateAnswersTaken) {
            if (!count(player, Fault::late, state.handId, place.sentText))
                return std::nullopt;
            leave(player, "was late " + std::to_string(lateAnswersTaken) + " times in a row");
            return substitute(player, state, Fault::gone, departure_);
        }
        return substitute(player, state, Fault::late, place.sentText);
    }

    // Whether the line is the answer to a state that was given up: it is no fault a second time.
    static bool isGivenUp(Place& place, const std::string& line) {
        const auto found = std::ranges::find_if(place.givenUp, [&](const std::string& text) {
            return line.size() > text.size() && line[text.size()] == ':' && line.starts_with(text);
        });
        if (found == place.givenUp.end())
            return false;
        place.givenUp.erase(found);
        return true;
    }

    // Players that were not asked have nothing to say. False when that ends the match.
    bool takeUnexpectedLines(size_t asked, uint32_t hand) {
        std::string line;
        for (size_t player = 0; player < players_.size(); ++player) {
            if (player == asked || !players_[player].connection)
                continue;
            while (players_[player].connection->nextLine(line))
                if (!isGivenUp(places_[player], line) &&
                    !count(player, Fault::unexpected, hand, line))
                    return false;
        }
        return true;
    }

    // Remembers in departure_ how the player ended.
    void leave(size_t player, const std::string& how) {
        departure_ = how;
        result_.players[player].gone = true;
        players_[player].connection.reset();
        if (auto& child = players_[player].child) {
            // A process that broke off is usually just ending; its last words explain it.
            for (int i = 0; i < 20 && !child->ended(); ++i)
                servePlayers({&players_[player], 1}, std::chrono::milliseconds(10));
            departure_ += "; its process " + child->explain();
        }
    }

    // False when the fault ends the match.
    bool count(size_t player, Fault fault, uint32_t hand, const std::string& detail) {
        ++result_.players[player].faults[static_cast<size_t>(fault)];
        events_.faulty(player, fault, hand, detail);
        if (options_.stopOnFault)
            result_.failure = players_[player].name + ": " + faultName(fault) + " in hand " +
                              std::to_string(hand) + (detail.empty() ? "" : ": " + detail);
        return !options_.stopOnFault;
    }

    bool finish(const State& state) {
        std::array<double, MAX_PLAYERS> bySeat{};
        std::vector<double> byPlayer(players_.size());
        for (uint8_t seat = 0; seat < game_->numPlayers; ++seat) {
            // Adding zero turns a negative zero into zero.
            bySeat[seat] = valueOfState(game_, &state, seat) + 0.0;
            byPlayer[seats_[seat]] = bySeat[seat];
        }
        result_.board.add(byPlayer);
        const Status status =
            events_.handFinished({&state, {bySeat.data(), players_.size()}, seats_});
        if (!status)
            result_.failure = status.error();
        return true;
    }

    const Game* game_;
    std::vector<Player>& players_;
    const MatchOptions& options_;
    const MatchEvents& events_;
    const Clock& clock_;
    std::vector<Place> places_; // by player
    uint64_t hand_ = 0;
    std::vector<size_t> seats_; // of this hand: the player in each seat
    std::string departure_;
    MatchResult result_;
};

} // namespace

MatchResult playMatch(const Game* game, std::vector<Player>& players, const MatchOptions& options,
                      const MatchEvents& events, const Clock& clock) {
    assert(players.size() == game->numPlayers);
    assert(!options.duplicate || options.hands % players.size() == 0);
    return Match(game, players, options, events, clock).play();
}

Status checkDealable(const Game* game) {
    if (game->numBoardCards[0] != 0)
        return Error{"it has board cards in its first round, so its states cannot be read by a "
                     "player that does not see the last seat's cards; it can only be trained"};
    for (int seat = 0; seat < game->numPlayers; ++seat) {
        const std::string where = "seat " + std::to_string(seat + 1);
        if (game->blind[seat] < 0)
            return Error{where + " has a negative blind"};
        if (game->stack[seat] <= 0)
            return Error{where + " has no stack"};
    }
    for (int round = 0; game->bettingRule == limitRule && round < game->numRounds; ++round)
        if (game->raiseSize[round] < 0)
            return Error{"round " + std::to_string(round + 1) + " has a negative raise size"};
    return {};
}

void dealFromSeed(const Game* game, uint64_t seed, uint64_t deal, State* state) {
    uint32_t key[] = {static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32),
                      static_cast<uint32_t>(deal), static_cast<uint32_t>(deal >> 32)};
    rng_state_t generator;
    init_by_array(&generator, key, std::size(key));
    dealCards(game, &generator, state);
}

std::vector<size_t> seatsOfHand(const MatchOptions& options, size_t numPlayers, uint64_t hand) {
    std::vector<size_t> seats(numPlayers);
    const size_t shift = options.duplicate || !options.fixedSeats ? hand % numPlayers : 0;
    for (size_t player = 0; player < numPlayers; ++player)
        seats[(player + shift) % numPlayers] = player;
    return seats;
}

} // namespace tamarin
