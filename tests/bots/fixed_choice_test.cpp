#include "bots/fixed_choice.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

Action raiseIn(const char* gameName, const char* text) {
    const GamePtr game = test::loadGameFile(gameName);
    MatchState state{};
    EXPECT_GT(readMatchState(text, game.get(), &state), 0);
    return alwaysRaise(game.get(), &state.state);
}

} // namespace

TEST(AlwaysCall, Calls) {
    EXPECT_EQ(alwaysCall().type, actionCall);
    EXPECT_EQ(alwaysCall().size, 0);
}

TEST(AlwaysRaise, RaisesAsOftenAsTheRulesAllow) {
    EXPECT_EQ(raiseIn("kuhn.limit.3p.game", "MATCHSTATE:0:0::Ks||").type, actionRaise);
    EXPECT_EQ(raiseIn("kuhn.limit.3p.game", "MATCHSTATE:1:0:r:|Ks|").type, actionCall);
}

TEST(AlwaysRaise, RaisesByTheLeastAmount) {
    const char* game = "holdem.nolimit.2p.reverse_blinds.game";
    EXPECT_EQ(raiseIn(game, "MATCHSTATE:1:0::|AsKs").size, 200);
    EXPECT_EQ(raiseIn(game, "MATCHSTATE:0:0:r300:AsKs|").size, 500);
    EXPECT_EQ(raiseIn(game, "MATCHSTATE:0:0:r20000:AsKs|").type, actionCall);
}

} // namespace tamarin::test
