#include "report/analysis_page.h"

#include "report/count_of.h"
#include "report/small_analysis.h"

namespace tamarin::test {
namespace {

TEST(AnalysisPage, HasACurveAndTablesForEachPlayer) {
    const SmallAnalysis match;
    const std::string page = analysisPage(match.report);
    EXPECT_TRUE(page.starts_with("<!doctype html>"));
    EXPECT_NE(page.find("<title>Match some.log</title>"), std::string::npos);
    EXPECT_EQ(countOf(page, "<svg"), 2U);
    EXPECT_EQ(countOf(page, "<polyline class=free"), 2U);
    EXPECT_NE(page.find("<h2>me: -40 chips</h2>"), std::string::npos);
    EXPECT_NE(page.find("<h2>b&lt;t: +40 chips</h2>"), std::string::npos); // a name is no markup
    EXPECT_EQ(page.find("b<t"), std::string::npos);
    EXPECT_NE(page.find("<tr><td>as played<td>2<td>-1000.0 +- 3176.6</tr>"), std::string::npos);
    EXPECT_NE(page.find("<tr><td>A3s<td>1<td>-1000.0</tr>"), std::string::npos);
}

TEST(AnalysisPage, OfOneHandHasNoCurve) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    MatchAnalysis analysis(*game);
    LoggedHand hand{};
    ASSERT_GT(readState("STATE:0:f:Ts8d|Ad7s", game.get(), &hand.state), 0);
    hand.chips = {5, -5};
    hand.names = {"a", "b"};
    ASSERT_TRUE(analysis.add(hand).ok());
    const std::string page = analysisPage({"one.log", "some.game", game.get(), &analysis});
    EXPECT_EQ(countOf(page, "<svg"), 0U);
    EXPECT_EQ(countOf(page, "too few hands for a curve"), 2U);
}

} // namespace
} // namespace tamarin::test
