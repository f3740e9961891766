#include "analysis/bot_play.h"

#include "bots/bot.h"
#include "game/games.h"
#include "game/random_hand.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Plays hands at random, and at every decision asks the bot itself.
TEST(RulePlay, DoesWhatTheBotDoes) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const RulePlay play(*game, tree);
    std::array<int, 3> chosen{};
    for (uint32_t seed = 1; seed <= 300; ++seed) {
        int32_t node = 0;
        bool begun = false;
        const auto decide = [&](const State& state) {
            const uint8_t seat = currentPlayer(game.get(), &state);
            const MatchState view{state, seat};
            const Action action = ruleChoice(game.get(), &view);
            std::vector<uint8_t> cards(state.holeCards[seat], state.holeCards[seat] + 2);
            cards.insert(cards.end(), state.boardCards,
                         state.boardCards + sumBoardCards(game.get(), state.round));
            const ActionShares shares = play.shares(node, play.classOf(seat, state.round, cards));
            ActionShares all{};
            all[static_cast<size_t>(action.type)] = 1;
            EXPECT_EQ(shares, all);
            ++chosen[static_cast<size_t>(action.type)];
        };
        playRandomHand(*game, seed, [&](const State& state) {
            if (begun) { // follow the action that led here
                int round = state.round;
                if (state.numActions[round] == 0)
                    --round;
                const ActionType taken = state.action[round][state.numActions[round] - 1].type;
                node = tree.nodes()[static_cast<size_t>(node)].child[taken];
            }
            begun = true;
            if (!state.finished)
                decide(state);
        });
    }
    for (const int count : chosen)
        EXPECT_GT(count, 50);
}

TEST(BotPlay, KnowsEveryBot) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    for (const BotKind& kind : botKinds())
        EXPECT_NE(botPlay(kind.name, *game, tree), nullptr) << kind.name;
    EXPECT_EQ(botPlay("fold", *game, tree), nullptr); // a simple play, and no bot
    const auto random = botPlay("random", *game, tree);
    EXPECT_EQ(random->shares(0, 0), (ActionShares{1.0 / 3, 1.0 / 3, 1.0 / 3}));
}

} // namespace
} // namespace tamarin::test
