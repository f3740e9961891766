#include "local_response/tree_opponent.h"

#include "game/games.h"
#include "response/measured.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

State after(const Game& game, const std::vector<Action>& actions) {
    State state{};
    initState(&game, 0, &state);
    for (const Action& action : actions)
        doAction(&game, &action, &state);
    return state;
}

constexpr Action call{actionCall, 0};

// What a hand does in a limit game is what the strategy does with its class at the tree's node.
TEST(TreeOpponent, PlaysItsStrategyInTheTree) {
    const Measured measured(shortGame(4, 4, "2 2 2", "10 10 20", "0 3 1"));
    const TreeOpponent opponent(*measured.game, measured.tree, *measured.strategy);
    const std::vector<uint8_t> board{measured.deck.cards()[0], measured.deck.cards()[5],
                                     measured.deck.cards()[9]};
    const std::vector<uint16_t> holdings{static_cast<uint16_t>(measured.deck.numberOf(
                                             measured.deck.cards()[1], measured.deck.cards()[2])),
                                         static_cast<uint16_t>(measured.deck.numberOf(
                                             measured.deck.cards()[3], measured.deck.cards()[15]))};
    // Seat 1 acts last after the flop.
    const State state = after(*measured.game, {{actionRaise, 0}, call, call});
    const int32_t node = opponent.nodeOf(state);
    ASSERT_EQ(measured.tree.sequence(node), "rcc");
    SeenHands seen;
    opponent.look(measured.deck, 1, 1, board, holdings, seen);
    RangeAnswer answer;
    opponent.answer(state, holdings.size(), seen, answer);
    ASSERT_EQ(answer.actions.size(), 2U);
    EXPECT_EQ(answer.actions[0].type, actionCall);
    EXPECT_EQ(answer.actions[1].type, actionRaise);
    for (size_t i = 0; i < holdings.size(); ++i) {
        std::vector<uint8_t> cards(2);
        std::ranges::copy(measured.deck.cardsOf(holdings[i]), cards.begin());
        cards.insert(cards.end(), board.begin(), board.end());
        const auto shares =
            measured.strategy->shares(node, measured.strategy->classOf(1, 1, cards));
        EXPECT_EQ(answer.shares[0][i], shares[actionCall]);
        EXPECT_EQ(answer.shares[1][i], shares[actionRaise]);
    }
    EXPECT_NE(answer.shares[0][0], answer.shares[0][1]);
}

// As `player`: after a raise of any size by what it asks for, and with nothing owed it checks.
TEST(TreeOpponent, PlaysByPotOddsAfterARaiseInNoLimit) {
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const PublicDeck deck(*game);
    const SimpleStrategy folds(tree, SimplePlay::fold);
    const TreeOpponent opponent(*game, tree, folds, [](int round, const uint8_t* cards) {
        return round == 0 && cards[1] / 4 == 12 ? 0.34 : 0.3;
    });
    const std::vector<uint16_t> holdings{static_cast<uint16_t>(deck.numberOf(50, 51)), // aces
                                         static_cast<uint16_t>(deck.numberOf(0, 4))};
    SeenHands seen;
    opponent.look(deck, 0, 0, {}, holdings, seen);
    RangeAnswer answer;
    const auto share = [&](const State& state, ActionType type, size_t hand) {
        opponent.answer(state, holdings.size(), seen, answer);
        for (size_t k = 0; k < answer.actions.size(); ++k)
            if (answer.actions[k].type == type)
                return answer.shares[k][hand];
        return 0.0;
    };
    // 200 for a pot of 600 asks for a third, the smallest raise, 100 of 400, for a quarter.
    const State pot = after(*game, {{actionRaise, 300}});
    EXPECT_EQ(opponent.nodeOf(pot), TreeOpponent::noNode);
    EXPECT_EQ(share(pot, actionCall, 0), 1);
    EXPECT_EQ(share(pot, actionFold, 1), 1);
    EXPECT_EQ(share(pot, actionCall, 1), 0);
    EXPECT_EQ(share(after(*game, {{actionRaise, 200}}), actionCall, 1), 1);
    EXPECT_EQ(share(after(*game, {{actionRaise, 20000}}), actionFold, 0), 1);
    // In the tree the strategy answers: the small blind folds.
    opponent.look(deck, 1, 0, {}, holdings, seen);
    EXPECT_EQ(share(after(*game, {}), actionFold, 0), 1);
    // Behind a raise that was called nothing is owed, and the strategy is asked no more.
    const State flop = after(*game, {{actionRaise, 300}, call});
    opponent.look(deck, 0, 1, std::vector<uint8_t>{8, 17, 30}, holdings, seen);
    EXPECT_EQ(opponent.nodeOf(flop), TreeOpponent::noNode);
    EXPECT_EQ(share(flop, actionCall, 1), 1);
}

} // namespace
} // namespace tamarin::test
