#include "local_response/simple_opponent.h"

#include "game/games.h"

#include <map>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// The shares of the two hands asked for, which are alike, by action.
std::map<int, double> shares(const Game& game, SimplePlay play,
                             const std::vector<Action>& actions) {
    State state{};
    initState(&game, 0, &state);
    for (const Action& action : actions)
        doAction(&game, &action, &state);
    RangeAnswer answer;
    SimpleOpponent(game, play).answer(state, 2, {}, answer);
    std::map<int, double> byAction;
    EXPECT_EQ(answer.actions.size(), answer.shares.size());
    for (size_t k = 0; k < answer.actions.size(); ++k) {
        EXPECT_EQ(answer.shares[k], std::vector<double>(2, answer.shares[k][0]));
        byAction[answer.actions[k].type] = answer.shares[k][0];
    }
    return byAction;
}

using Shares = std::map<int, double>;

// As SimpleStrategy, state by state of the tree.
TEST(SimpleOpponent, PlaysLimitAsTheStrategyOfTheTree) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    size_t compared = 0;
    for (size_t n = 0; n < tree.nodes().size(); n += 7) {
        std::vector<Action> actions;
        for (const char letter : tree.sequence(static_cast<int32_t>(n)))
            actions.push_back({letter == 'c' ? actionCall : actionRaise, 0});
        for (const SimplePlay play :
             {SimplePlay::fold, SimplePlay::call, SimplePlay::raise, SimplePlay::uniform}) {
            const auto expected = SimpleStrategy(tree, play).shares(static_cast<int32_t>(n), 0);
            const auto found = shares(*game, play, actions);
            for (int a = 0; a < numAbstractedActions; ++a)
                EXPECT_EQ(found.contains(a) ? found.at(a) : 0.0, expected[static_cast<size_t>(a)]);
            ++compared;
        }
    }
    EXPECT_GT(compared, 3000U);
}

TEST(SimpleOpponent, DoesNotRaiseInNoLimit) {
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const std::vector<Action> bet{{actionRaise, 777}};
    EXPECT_EQ(shares(*game, SimplePlay::uniform, bet),
              (Shares{{actionFold, 0.5}, {actionCall, 0.5}}));
    EXPECT_EQ(shares(*game, SimplePlay::fold, bet), (Shares{{actionFold, 1}}));
    EXPECT_EQ(shares(*game, SimplePlay::call, bet), (Shares{{actionCall, 1}}));
    EXPECT_EQ(shares(*game, SimplePlay::fold, {{actionCall, 0}}), (Shares{{actionCall, 1}}));
}

} // namespace
} // namespace tamarin::test
