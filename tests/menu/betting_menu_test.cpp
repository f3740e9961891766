#include "menu/betting_menu.h"

#include "game/games.h"
#include "support/temp_directory.h"

#include <fstream>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

std::string canonical(const std::string& text) {
    const auto menu = BettingMenu::parse(text, "m");
    return menu ? menu->text() : menu.error();
}

TEST(BettingMenu, WritesWhatItReads) {
    EXPECT_EQ(canonical("bets = 1 A\n"), "bets = 1 A\n");
    EXPECT_EQ(canonical("# a menu\n\n  bets=1/2  1\t2 A,1 A , 1 A,A # and so on\r\n"),
              "bets = 1/2 1 2 A, 1 A, 1 A, A\n");
    EXPECT_EQ(canonical("bets = 1 A, 1 A, 1 A"), "bets = 1 A\n");
    EXPECT_EQ(canonical("bets preflop = 3b, A, none\nbets turn = 0.5 A\nopponents river = min 3"),
              "bets = 3b, A, none\nbets turn = 1/2 A\nopponents river = min 3\n");
    EXPECT_EQ(canonical("opponents = min, none\nbets = A\nopponents flop = none"),
              "bets = A\nopponents = min, none\nopponents flop = none\n");
    EXPECT_EQ(canonical("bets flop = 1"), "bets = none\nbets flop = 1\n");
    EXPECT_EQ(canonical("bets = 1\nbets river = 1"), "bets = 1\n");
}

TEST(BettingMenu, EqualMenusHaveEqualHashes) {
    const auto hash = [](const char* text) { return BettingMenu::parse(text, "m")->hash(); };
    EXPECT_EQ(hash("bets = 0.5 A"), hash("bets = 1/2 A # the same\nbets turn = 1/2 A"));
    EXPECT_NE(hash("bets = 0.5 A"), hash("bets = 1/2"));
    EXPECT_NE(hash("bets = 1 A"), hash("bets = 1\nopponents = A"));
}

TEST(BettingMenu, SaysWhatIsWrongAndWhere) {
    EXPECT_EQ(canonical(""), "m: no bets; a line such as \"bets = 1 A\" says which there are");
    EXPECT_EQ(canonical("opponents = 1\n"),
              "m: no bets; a line such as \"bets = 1 A\" says which there are");
    EXPECT_EQ(canonical("bets = 1\nflop"),
              "m:2: \"flop\" has no \"=\"; a line is such as \"bets = 1 A\"");
    EXPECT_EQ(canonical("sizes = 1"),
              "m:1: \"sizes\" is unknown; lines begin with bets or opponents");
    EXPECT_EQ(canonical("bets third = 1"),
              "m:1: there is no round \"third\"; it is preflop, flop, turn or river");
    EXPECT_EQ(canonical("bets flop turn = 1"),
              "m:1: there is no round \"flop\"; it is preflop, flop, turn or river");
    EXPECT_EQ(canonical("bets = 1\n\nbets preflop = 2"),
              "m:3: a second line for bets of preflop; put all lists into one");
    EXPECT_EQ(canonical("bets = 1,"), "m:1: a list is empty; write its sizes, or none");
    EXPECT_EQ(canonical("bets ="), "m:1: a list is empty; write its sizes, or none");
    EXPECT_EQ(canonical("bets = 1 x\x01y"),
              "m:1: there is no size \"x?y\"; sizes are pots (1/2, 0.75, 2; at most 1000), big "
              "blinds (3b), min and A");
    EXPECT_EQ(canonical("bets = 1/2 0.5"),
              "m:1: the size 0.5 stands twice in a list; leave one out");
    EXPECT_EQ(canonical("bets = 1 2 3 4 5 6 7 8 9"),
              "m:1: more than 8 sizes in a list; leave some out");
    EXPECT_EQ(canonical("bets = 1 2 3 4 5 6 7 8\nopponents = 1 2 3 4 5 6 7"),
              "m:2: more than 6 sizes in a list; leave some out");
    EXPECT_EQ(canonical("bets = 1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1"),
              "m:1: more than 16 lists; the last one goes on for all raises after it");
    EXPECT_EQ(canonical("bets = " + std::string(70'000, ' ') + '1'),
              "m: 70008 bytes are no bet menu; it has a few lines");
}

TEST(BettingMenu, ReadsFiles) {
    const test::TempDirectory directory;
    const std::string path = directory.file("a.menu");
    std::ofstream(path) << "bets = 1 A\nbets = 2\n";
    const auto menu = BettingMenu::read(path);
    ASSERT_FALSE(menu.ok());
    EXPECT_TRUE(menu.error().starts_with(path + ":2: a second line")) << menu.error();
    EXPECT_FALSE(BettingMenu::read(directory.file("none")).ok());
    for (const char* name : {"tiny", "middle", "wide"})
        EXPECT_TRUE(BettingMenu::read(test::inTree("menus/" + std::string(name) + ".menu")).ok());
}

// Raises as text, "300 20000".
std::string raisesAfter(const BettingMenu& menu, const std::vector<int32_t>& totals, bool besides) {
    const GamePtr game = test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    State state{};
    initState(game.get(), 0, &state);
    for (const int32_t total : totals) {
        Action action{total == 0 ? actionCall : actionRaise, total};
        EXPECT_TRUE(isValidAction(game.get(), &state, 0, &action));
        doAction(game.get(), &action, &state);
    }
    std::string text;
    for (const int32_t raise : menu.raises(*game, state, besides))
        text += (text.empty() ? "" : " ") + std::to_string(raise);
    return text;
}

TEST(BettingMenu, OffersWhatItsListsSay) {
    const auto menu = BettingMenu::parse("bets = 1/2 1 A, 3 A, A\n"
                                         "bets flop = 2b 1, none\n"
                                         "opponents = min, 100\n"
                                         "opponents turn = none\n",
                                         "m");
    ASSERT_TRUE(menu.ok()) << menu.error();
    EXPECT_TRUE(menu->hasBesides());
    EXPECT_EQ(raisesAfter(*menu, {}, false), "200 300 20000");
    EXPECT_EQ(raisesAfter(*menu, {}, true), "200 300 20000"); // min is half the pot here
    EXPECT_EQ(raisesAfter(*menu, {300}, false), "2100 20000");
    EXPECT_EQ(raisesAfter(*menu, {300}, true), "2100 20000"); // beyond the stack it is all-in
    EXPECT_EQ(raisesAfter(*menu, {300, 2100}, false), "20000");
    EXPECT_EQ(raisesAfter(*menu, {300, 2100, 20000}, false), "");
    EXPECT_EQ(raisesAfter(*menu, {300, 0}, false), "500 900");
    EXPECT_EQ(raisesAfter(*menu, {300, 0}, true), "400 500 900");
    EXPECT_EQ(raisesAfter(*menu, {300, 0, 900}, false), "");
    EXPECT_EQ(raisesAfter(*menu, {300, 0, 900}, true), "20000");
    EXPECT_EQ(raisesAfter(*menu, {300, 0, 0, 0}, true), "500 900"); // turn: bets as on the flop
    EXPECT_FALSE(BettingMenu::parse("bets = 1\nopponents = none", "m")->hasBesides());
}

} // namespace
} // namespace tamarin
