#include "report/holdem_chart.h"

#include "game/games.h"
#include "report/count_of.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Everybody calls with bucket 0, which is nearly all; AKs, AKo and AA have buckets of their own.
PreflopDecision afterARaise() {
    PreflopDecision decision{"cr", 1, 2, {true, true, true}, {}, {}};
    for (auto& shares : decision.strategy)
        shares = {0.0, 1.0, 0.0};
    decision.strategy[3] = {0.25, 0.15, 0.6};
    decision.strategy[4] = {0.9, 0.1, 0.0};
    decision.strategy[5] = {0.0, 0.06, 0.94};
    decision.bucket[0][1] = 3;
    decision.bucket[1][0] = 4;
    decision.bucket[0][0] = 5;
    return decision;
}

PreflopDecision firstToAct() {
    PreflopDecision decision{"", 0, 2, {true, true, false}, {}, {}};
    for (auto& shares : decision.strategy)
        shares = {0.5, 0.5, 0.0};
    return decision;
}

std::string line(const std::string& text, const std::string& start) {
    const size_t at = text.find('\n' + start);
    return at == std::string::npos ? "" : text.substr(at + 1, text.find('\n', at + 1) - at - 1);
}

} // namespace

TEST(HoldemChart, DescribesADecision) {
    EXPECT_EQ(describeDecision(firstToAct()), "seat 0 first to act");
    EXPECT_EQ(describeDecision(afterARaise()), "seat 1 after call, raise");
}

TEST(HoldemChart, NamesThePlacesOfTheGrid) {
    EXPECT_EQ(startingHandAt(0, 0), "AA");
    EXPECT_EQ(startingHandAt(0, 1), "AKs");
    EXPECT_EQ(startingHandAt(1, 0), "AKo");
    EXPECT_EQ(startingHandAt(12, 12), "22");
    EXPECT_EQ(startingHandAt(3, 12), "J2s");
}

TEST(HoldemChart, IsATableOfBucketsAndAGridAsText) {
    const std::string text = chartAsText(afterARaise());
    EXPECT_TRUE(text.starts_with("seat 1 after call, raise\n\nbucket  hands      fold    call   "
                                 "raise\n     0  98.3%      0.0%  100.0%    0.0%\n"))
        << text;
    EXPECT_EQ(line(text, "     3"), "     3   0.3%     25.0%   15.0%   60.0%"); // 4 of 1,326
    EXPECT_EQ(line(text, "     4"), "     4   0.9%     90.0%   10.0%    0.0%"); // 12
    EXPECT_EQ(line(text, "     5"), "     5   0.5%      0.0%    6.0%   94.0%"); // 6
    EXPECT_TRUE(line(text, " A").starts_with(" A  r94  r60 c100 c100")) << line(text, " A");
    EXPECT_TRUE(line(text, " K").starts_with(" K  f90 c100")) << line(text, " K");
    EXPECT_EQ(countOf(chartAsText(firstToAct()), "raise"), 0U) << "nobody may";
}

TEST(HoldemChart, IsTheSameAsJson) {
    const auto json = chartAsJson(afterARaise());
    EXPECT_EQ(json["sequence"], "cr");
    EXPECT_EQ(json["seat"], 1);
    EXPECT_EQ(json["playersActing"], 2);
    ASSERT_EQ(json["buckets"].size(), 10U);
    EXPECT_EQ(json["buckets"][3]["bucket"], 3);
    EXPECT_DOUBLE_EQ(json["buckets"][3]["share"], 4.0 / 1326.0);
    EXPECT_EQ(json["buckets"][3]["strategy"]["fold"], 0.25);
    EXPECT_EQ(json["buckets"][3]["strategy"]["raise"], 0.6);
    EXPECT_EQ(json["bucketOfHand"].size(), 169U);
    EXPECT_EQ(json["bucketOfHand"]["AKs"], 3);
    EXPECT_EQ(json["bucketOfHand"]["AKo"], 4);
    EXPECT_FALSE(chartAsJson(firstToAct())["buckets"][0]["strategy"].contains("raise"));
}

TEST(HoldemChart, IsAPageOfBarsAndColouredGrids) {
    HoldemGame game;
    game.name = "two & two";
    const std::string page = chartPage(game, {firstToAct(), afterARaise()}, "run/<strategy>");
    EXPECT_EQ(countOf(page, "<h1>two &amp; two</h1>\n<p>First decisions before the flop, from "
                            "run/&lt;strategy&gt;."),
              1U);
    EXPECT_EQ(countOf(page, "<h2>seat 1 after call, raise</h2>\n<table class=sets>\n"), 1U);
    EXPECT_EQ(countOf(page, "<tr><td>3<td><div class=bar>"
                            "<i class=fold style=\"width:25.00%\">25%</i>"
                            "<i class=call style=\"width:15.00%\">15%</i>"
                            "<i class=raise style=\"width:60.00%\">60%</i>"
                            "</div><td>0.3% of hands\n"),
              1U);
    // What is hardly there has no words, and what is not there no bar.
    EXPECT_EQ(countOf(page, "<tr><td>5<td><div class=bar>"
                            "<i class=call style=\"width:6.00%\"></i>"
                            "<i class=raise style=\"width:94.00%\">94%</i></div>"),
              1U);
    EXPECT_EQ(countOf(page, "<td style=\"background:"), 2 * 169U);
    EXPECT_EQ(countOf(page, "<td style=\"background:linear-gradient(90deg,var(--fold) 25.0%,"
                            "var(--call) 25.0% 40.0%,var(--raise) 40.0%)\" title=\"fold 25.0%, "
                            "call 15.0%, raise 60.0%\">AKs"),
              1U);
    EXPECT_LT(page.find(">AA<"), page.find(">AKs<"));
    EXPECT_LT(page.find(">KK<"), page.find(">22\n"));
}

} // namespace tamarin::test
