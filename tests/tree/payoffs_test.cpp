#include "tree/payoffs.h"

#include "solver/games.h"
#include "tree/deck.h"

#include <bit>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Plays every line of betting for one deal and compares each ending.
void compare(const Game& game, const CompiledTree& tree, const double* table, size_t stride,
             int32_t child, const State& state) {
    if (child < 0) {
        for (uint8_t p = 0; p < game.numPlayers; ++p) {
            const double expected = valueOfState(&game, &state, p);
            ASSERT_EQ(std::bit_cast<uint64_t>(table[static_cast<size_t>(~child) * stride + p]),
                      std::bit_cast<uint64_t>(expected));
        }
        return;
    }
    for (int a = 0; a < numAbstractedActions; ++a) {
        const int32_t next = tree.nodes()[static_cast<size_t>(child)].child[a];
        if (next == CompiledTree::noChild)
            continue;
        const Action action{static_cast<ActionType>(a), 0};
        State after = state;
        doAction(&game, &action, &after);
        compare(game, tree, table, stride, next, after);
    }
}

TEST(Payoffs, AreThoseOfTheRulesForEveryDealAndLine) {
    for (const auto& make : {kuhn3, leduc2, four, twoCards}) {
        const GamePtr game = make();
        const CompiledTree tree(*game);
        Payoffs payoffs(*game, tree);
        for (DealWalk walk(*game); walk.next();) {
            State state{};
            initState(game.get(), 0, &state);
            placeCards(*game, walk.cards(), &state);
            compare(*game, tree, payoffs.table(payoffs.outcomeOf(state)), payoffs.stride(), 0,
                    state);
        }
    }
}

TEST(Payoffs, ThereAreFewOutcomes) {
    const auto outcomes = [](const GamePtr& game) {
        const CompiledTree tree(*game);
        Payoffs payoffs(*game, tree);
        State state{};
        for (DealWalk walk(*game); walk.next();) {
            placeCards(*game, walk.cards(), &state);
            payoffs.outcomeOf(state);
        }
        return payoffs.numOutcomes();
    };
    EXPECT_EQ(outcomes(kuhn3()), 6U);    // orders of three cards that never tie
    EXPECT_EQ(outcomes(leduc2()), 3U);   // win, lose, tie
    EXPECT_EQ(outcomes(boards3()), 12U); // all weak orders of three but the three-way tie
}

} // namespace
} // namespace tamarin::test
