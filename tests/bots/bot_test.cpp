#include "bots/bot.h"

#include "bots/fixed_choice.h"
#include "bots/random_choice.h"
#include "bots/rule_choice.h"
#include "game/games.h"
#include "support/tree_paths.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

using Choice = std::function<Action(const Game*, const MatchState*)>;

struct Outcome {
    double mean;  // chips a hand of the first player
    double error; // standard error
};

// Plays without a dealer: the first choice against others, moving on by one seat every hand.
Outcome playHands(const char* gameName, const std::vector<Choice>& choices, int hands) {
    const GamePtr game = test::loadGameFile(gameName);
    const size_t players = game->numPlayers;
    EXPECT_EQ(choices.size(), players);
    rng_state_t generator;
    init_genrand(&generator, 11);
    double sum = 0;
    double squares = 0;
    for (int hand = 0; hand < hands; ++hand) {
        MatchState view{};
        State& state = view.state;
        initState(game.get(), static_cast<uint32_t>(hand), &state);
        dealCards(game.get(), &generator, &state);
        const size_t shift = static_cast<size_t>(hand) % players;
        while (!state.finished) {
            view.viewingPlayer = currentPlayer(game.get(), &state);
            Action action =
                choices[(view.viewingPlayer + players - shift) % players](game.get(), &view);
            doAction(game.get(), &action, &state);
        }
        const double won = valueOfState(game.get(), &state, static_cast<uint8_t>(shift));
        sum += won;
        squares += won * won;
    }
    const double mean = sum / hands;
    return {mean, std::sqrt((squares / hands - mean * mean) / hands)};
}

rng_state_t* botNumbers() {
    static rng_state_t generator = [] {
        rng_state_t seeded;
        init_genrand(&seeded, 12);
        return seeded;
    }();
    return &generator;
}

const Choice rule = [](const Game* game, const MatchState* state) {
    return ruleChoice(game, state);
};
const Choice call = [](const Game*, const MatchState*) { return alwaysCall(); };
const Choice random_ = [](const Game* game, const MatchState* state) {
    return randomChoice(game, &state->state, botNumbers());
};

void expectWin(const char* game, const std::vector<Choice>& choices, int hands) {
    const Outcome outcome = playHands(game, choices, hands);
    EXPECT_GT(outcome.mean, 4 * outcome.error) << game;
}

} // namespace

TEST(RuleBot, BeatsTheRandomBot) {
    expectWin("kuhn.limit.3p.game", {rule, random_, random_}, 10000);
    expectWin("holdem.limit.2p.reverse_blinds.game", {rule, random_}, 10000);
    expectWin("holdem.limit.3p.game", {rule, random_, random_}, 10000);
    expectWin("holdem.nolimit.2p.reverse_blinds.game", {rule, random_}, 20000);
}

TEST(RuleBot, BeatsTheCallBot) {
    expectWin("kuhn.limit.3p.game", {rule, call, call}, 10000);
    expectWin("holdem.limit.2p.reverse_blinds.game", {rule, call}, 10000);
}

TEST(MakeBot, KnowsItsKinds) {
    const std::string game = tamarin::test::inTree("games/kuhn.limit.3p.game");
    for (const BotKind& kind : botKinds())
        EXPECT_NE(makeBot(kind.name, game.c_str(), 1), nullptr) << kind.name;
    EXPECT_EQ(makeBot("genius", game.c_str(), 1), nullptr);
    EXPECT_EQ(botNames(), "random, call, raise, rule");
}

} // namespace tamarin::test
