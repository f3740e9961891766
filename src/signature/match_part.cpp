// A match: hands of every game between simple opponents, by the rules, through text.
#include "bots/fixed_choice.h"
#include "bots/random_choice.h"
#include "bots/rule_choice.h"
#include "dealer/scoreboard.h"
#include "signature/games.h"
#include "signature/parts.h"
#include "solver/cfr.h"
#include "support/rng.h"

#include <cassert>
#include <vector>

namespace tamarin {

namespace {

constexpr uint32_t matchHands = 300;

enum Player { rule, random, raise };

class Table {
public:
    Table(Fnv1a& hash, const char* definition)
        : hash_(hash), game_(gameFromText(definition)), scores_(game_->numPlayers, 1) {
        init_genrand(&deals_, 23);
        init_genrand(&choices_, 29);
        hash_.add(gameAsText(*game_));
    }

    void play() {
        for (uint32_t hand = 0; hand < matchHands; ++hand)
            playHand(hand);
        for (size_t p = 0; p < game_->numPlayers; ++p) {
            hash_.add(scores_.chips(p));
            hash_.add(scores_.perHand(p).mean);
            hash_.add(scores_.perHand(p).halfWidth);
        }
    }

private:
    void playHand(uint32_t hand) {
        State state{};
        initState(game_.get(), hand, &state);
        dealCards(game_.get(), &deals_, &state);
        while (!state.finished) {
            const uint8_t seat = currentPlayer(game_.get(), &state);
            const Action action = told(choose(seen(state, seat), hand));
            doAction(game_.get(), &action, &state);
        }
        std::vector<double> chips(game_->numPlayers);
        for (uint8_t seat = 0; seat < game_->numPlayers; ++seat) {
            const MatchState after = seen(state, seat);
            const double won = valueOfState(game_.get(), &state, seat);
            hash_.add(won);
            if (numFolded(game_.get(), &state) + 1 < game_->numPlayers) // cards are shown
                hash_.add(valueOfState(game_.get(), &after.state, seat));
            chips[playerAt(seat, hand)] = won;
        }
        scores_.add(chips);
    }

    // Players change seats from hand to hand.
    size_t playerAt(uint8_t seat, uint32_t hand) const { return (seat + hand) % game_->numPlayers; }

    // The state as the seat reads it out of the dealer's line.
    MatchState seen(const State& state, uint8_t seat) {
        const MatchState sent{state, seat};
        char line[MAX_LINE_LEN];
        const int length = printMatchState(game_.get(), &sent, sizeof line, line);
        assert(length > 0);
        hash_.add(std::string_view(line, static_cast<size_t>(length)));
        MatchState read{};
        [[maybe_unused]] const int consumed = readMatchState(line, game_.get(), &read);
        assert(consumed == length && matchStatesEqual(game_.get(), &sent, &read));
        return read;
    }

    Action choose(MatchState state, uint32_t hand) {
        switch (playerAt(state.viewingPlayer, hand)) {
        case rule:
            return ruleChoice(game_.get(), &state);
        case random:
            return randomChoice(game_.get(), &state.state, &choices_);
        default:
            return alwaysRaise(game_.get(), &state.state);
        }
    }

    // The action as the dealer reads it out of the answer.
    Action told(const Action& action) {
        char text[32];
        const int length = printAction(game_.get(), &action, sizeof text, text);
        assert(length > 0);
        hash_.add(std::string_view(text, static_cast<size_t>(length)));
        Action read{};
        [[maybe_unused]] const int consumed = readAction(text, game_.get(), &read);
        assert(consumed == length);
        return read;
    }

    Fnv1a& hash_;
    GamePtr game_;
    Scoreboard scores_;
    rng_state_t deals_;
    rng_state_t choices_;
};

} // namespace

void addMatch(Fnv1a& hash) {
    for (const char* definition : {signature::kuhn3, signature::leduc, signature::limit2,
                                   signature::limit3, signature::noLimit2})
        Table(hash, definition).play();
}

} // namespace tamarin
