#include "report/strategy_page.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

NamedGame gameOf(const char* text, const std::string& name) {
    NamedGame game;
    game.name = name;
    game.rules = parseGame(text);
    game.small = std::move(*SmallGame::make(*game.rules));
    return game;
}

std::string uniformPage(const NamedGame& game) {
    const Profile profile = uniformProfile(*game.small);
    return strategyPage(game, profile, evaluateProfile(*game.small, profile), "uniform & all");
}

bool holds(const std::string& page, const std::string& part) {
    return page.find(part) != std::string::npos;
}

} // namespace

TEST(StrategyPage, WalksTheTreeInWordsOfTheTable) {
    const std::string page = uniformPage(gameOf(twoPlayerKuhn, "kuhn"));
    EXPECT_TRUE(holds(page, "<h1>kuhn</h1>\n<p>uniform &amp; all</p>\n")) << page;
    EXPECT_TRUE(holds(page, "<details class=s0 open><summary><b>seat 0</b>start<span "
                            "class=reach><span class=meter><u style=\"width:100.00%\"></u></span>"
                            "100.0% of hands</span></summary>\n"));
    // Nothing is owed: a check or a bet; then a call or a raise, of which one bet leaves none.
    EXPECT_TRUE(holds(page, "<b>seat 1</b>check<"));
    EXPECT_TRUE(holds(page, "<b>seat 1</b>bet<"));
    EXPECT_TRUE(holds(page, "<b>seat 0</b>check, bet<"));
    EXPECT_TRUE(holds(page, "<div class=end><b>check, bet, fold</b> "));
    EXPECT_TRUE(holds(page, "<div class=end><b>bet, call</b> "));
    EXPECT_FALSE(holds(page, "raise</b>"));
    EXPECT_FALSE(holds(page, "round "));
    // The first decision of each card: half and half, a third of the deals.
    EXPECT_TRUE(holds(page,
                      "<table class=sets>\n<tr><td>2<td><div class=bar>"
                      "<i class=call style=\"width:50.000%\" title=\"check 0.500000\">50.0%"
                      "</i><i class=raise style=\"width:50.000%\" title=\"bet 0.500000\">50.0%"
                      "</i></div><td>33.3%</tr>\n<tr><td>3"));
    // Check, bet, fold: an eighth of the hands, and the chip of the blind.
    EXPECT_TRUE(holds(page,
                      "<b>check, bet, fold</b> <span class=reach><span class=meter><u "
                      "style=\"width:12.50%\"></u></span>12.5% of hands</span> ends it, worth "
                      "-1.000, +1.000</div>\n"));
}

TEST(StrategyPage, NamesRoundsWhereThereAreSeveral) {
    const std::string page = uniformPage(gameOf(leduc, "leduc"));
    EXPECT_TRUE(holds(page, "<b>seat 0</b>round 1, start<"));
    EXPECT_TRUE(holds(page, "<b>seat 0</b>round 2, check, check<"));
    EXPECT_TRUE(holds(page, "<b>seat 0</b>round 1, bet, raise<"));
}

TEST(StrategyPage, LeavesOutWhatIsNeverPlayed) {
    const NamedGame game = gameOf(twoPlayerKuhn, "kuhn");
    Profile profile = uniformProfile(*game.small);
    for (auto& shares : profile)
        shares = {0.0, 1.0, 0.0};
    const std::string page =
        strategyPage(game, profile, evaluateProfile(*game.small, profile), "calls");
    EXPECT_TRUE(holds(page, "<tr><td>2<td><div class=bar><i class=call style=\"width:100.000%\" "
                            "title=\"check 1.000000\">100.0%</i></div><td>33.3%</tr>\n"));
    EXPECT_TRUE(holds(page, "<b>bet, call</b> <span class=reach><span class=meter><u "
                            "style=\"width:0.00%\"></u></span>0.0% of hands</span> ends it</div>"));
}

TEST(CardLabel, IsALetterOfTheGamesDeck) {
    const GamePtr four = parseGame(threePlayerKuhn);
    EXPECT_EQ(cardLabel(*four, 0), "J");
    EXPECT_EQ(cardLabel(*four, 3), "A");
    const GamePtr three = parseGame(twoPlayerKuhn);
    EXPECT_EQ(cardLabel(*three, 0), "2");
    EXPECT_EQ(cardLabel(*three, 2), "4");
}

} // namespace tamarin::test
