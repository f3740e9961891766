#include "local_response/bet_menu.h"

#include "game/games.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::vector<int32_t> sizes(BetMenu menu, const Game& game, const std::vector<Action>& actions) {
    State state{};
    initState(&game, 0, &state);
    for (const Action& action : actions)
        doAction(&game, &action, &state);
    std::vector<int32_t> sizes;
    for (Action& bet : betsOf(menu, game, state)) {
        EXPECT_TRUE(isValidAction(&game, &state, 0, &bet)) << bet.size;
        sizes.push_back(bet.size);
    }
    return sizes;
}

using Sizes = std::vector<int32_t>;

class BetMenus : public testing::Test {
protected:
    GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
};

TEST_F(BetMenus, HaveNames) {
    for (const BetMenu menu : {BetMenu::foldCall, BetMenu::raise, BetMenu::pot, BetMenu::wide})
        EXPECT_EQ(betMenuNamed(nameOf(menu)), menu);
    EXPECT_EQ(betMenuNamed("wide"), BetMenu::wide);
    EXPECT_FALSE(betMenuNamed("all"));
}

TEST_F(BetMenus, BetThePotAfterACallAndAllIn) {
    EXPECT_EQ(sizes(BetMenu::pot, *game, {}), (Sizes{300, 20000}));
    EXPECT_EQ(sizes(BetMenu::pot, *game, {{actionRaise, 300}}), (Sizes{900, 20000}));
    EXPECT_EQ(sizes(BetMenu::pot, *game, {{actionCall, 0}, {actionCall, 0}}), (Sizes{300, 20000}));
    // More than a stack is a stack, and who is asked for all of it may raise no more.
    EXPECT_EQ(sizes(BetMenu::pot, *game, {{actionRaise, 7000}}), (Sizes{20000}));
    EXPECT_EQ(sizes(BetMenu::pot, *game, {{actionRaise, 20000}}), Sizes{});
    EXPECT_EQ(sizes(BetMenu::foldCall, *game, {}), Sizes{});
}

// On the flop of a pot of 20,000 in a deep game: the smallest bet, 0.1 to 100 pots, all-in.
TEST_F(BetMenus, WideHas56Sizes) {
    game->stack[0] = game->stack[1] = 100'000'000;
    const std::vector<Action> flop{{actionRaise, 10000}, {actionCall, 0}};
    const Sizes wide = sizes(BetMenu::wide, *game, flop);
    ASSERT_EQ(wide.size(), 56U);
    EXPECT_EQ(wide[0], 10100);
    EXPECT_EQ(wide[1], 12000);
    EXPECT_EQ(wide[2], 12278); // 0.11392 pots
    EXPECT_EQ(wide[54], 2010000);
    EXPECT_EQ(wide[55], 100'000'000);
    for (size_t i = 2; i < 55; ++i)
        EXPECT_NEAR((wide[i] - 10000.0) / (wide[i - 1] - 10000.0), 1.13921, 1e-3);
}

// Bets below the smallest and above the stack go, and those that round to the same.
TEST_F(BetMenus, WideKeepsToTheRules) {
    const Sizes wide = sizes(BetMenu::wide, *game, {});
    EXPECT_EQ(wide.front(), 200);
    EXPECT_EQ(wide.back(), 20000);
    EXPECT_TRUE(std::ranges::is_sorted(wide));
    // 13 sizes are less than half a pot, the smallest bet; 100 pots are more than the stack.
    EXPECT_EQ(wide.size(), 56U - 14U);
}

TEST(BetMenusOfLimit, HaveTheOneRaise) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    EXPECT_EQ(sizes(BetMenu::raise, *game, {}), Sizes{0});
    EXPECT_EQ(sizes(BetMenu::foldCall, *game, {}), Sizes{});
    const std::vector<Action> raised(3, {actionRaise, 0});
    EXPECT_EQ(sizes(BetMenu::raise, *game, raised), Sizes{});
}

// The rules' list of a round's actions holds so many; two more must fit.
TEST_F(BetMenus, EndWhereARoundIsFull) {
    State state{};
    initState(game.get(), 0, &state);
    state.numActions[0] = MAX_NUM_ACTIONS - 2;
    EXPECT_FALSE(betsOf(BetMenu::pot, *game, state).empty());
    state.numActions[0] = MAX_NUM_ACTIONS - 1;
    EXPECT_TRUE(betsOf(BetMenu::pot, *game, state).empty());
}

} // namespace
} // namespace tamarin::test
