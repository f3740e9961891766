#include "report/analysis_report.h"

#include "report/small_analysis.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(AnalysisReport, TableHasAllWaysOfCounting) {
    const SmallAnalysis match;
    const std::string table = analysisAsTable(match.report);
    EXPECT_TRUE(table.starts_with("some.log: some.game, 4 hands in 2 duplicate blocks\n"
                                  "\nme: -40 chips\n"))
        << table;
    // Four hands of -20, -5, -10 and -5 chips: mean -10, deviation 7.07; a blind is 10 chips.
    EXPECT_NE(table.find("  as played                   -1000.0 +- 1125.2        707.1\n"),
              std::string::npos)
        << table;
    // Blocks of -12.5 and -7.5: two of them, 12.706 times 2.5; the deviation that of one hand.
    EXPECT_NE(table.find("  as played, by blocks        -1000.0 +- 3176.6        500.0\n"),
              std::string::npos)
        << table;
    EXPECT_NE(table.find("  luck-free "), std::string::npos);
    EXPECT_NE(table.find("  worth of the deals "), std::string::npos);
    EXPECT_NE(table.find("    seat 0                                   2  -1500.0 +- "),
              std::string::npos)
        << table;
}

TEST(AnalysisReport, JsonIsInChips) {
    const SmallAnalysis match;
    const auto json = analysisAsJson(match.report);
    EXPECT_EQ(json["hands"], 4);
    EXPECT_EQ(json["duplicateBlocks"], 2);
    const auto& me = json["players"][0];
    EXPECT_EQ(me["name"], "me");
    EXPECT_EQ(me["chips"], -40);
    EXPECT_EQ(me["byHand"]["asPlayed"]["mean"], -10);
    EXPECT_EQ(me["byHand"]["asPlayed"]["count"], 4);
    EXPECT_EQ(me["byBlock"]["luckFree"]["mean"], -1.75);
    EXPECT_EQ(me["byBlock"]["worthOfDeals"]["mean"], -1.5);
    EXPECT_EQ(me["cuts"]["reached"][0]["name"], "pre-flop");
    EXPECT_EQ(me["cuts"]["reached"][0]["count"], 3);
    EXPECT_TRUE(me["cuts"]["reached"][1]["plusMinus95"].is_null()); // one hand
}

} // namespace
} // namespace tamarin::test
