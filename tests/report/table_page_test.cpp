#include "report/table_page.h"

#include "abstraction/sparse_tables.h"
#include "report/count_of.h"
#include "support/file.h"
#include "toolbox/run_toolbox.h"

#include <limits>

namespace tamarin::test {
namespace {

using TablePage = PlayingDirectory;

TEST_F(TablePage, ColoursStartingHandsByEquityAndByBucket) {
    std::vector<double> equities(roundSizes[0], 0.4);
    equities[3] = 0.9;
    equities[4] = 0.1;
    writeSparse(equityPath(2, 0), roundSizes[0], equities);
    writeSparse<uint8_t>(holdemPath(2, 0, 0), roundSizes[0], {9, 7, 2});
    writeSparse<uint8_t>(holdemPath(3, 0, 0), roundSizes[0], {9, 7, 2}); // of another game
    const ToolboxRun run = callTamarin({"show", "lookup/preflop_2p", "--html", "page.html"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "wrote page.html\n");
    const auto page = readWholeFile("page.html");
    ASSERT_TRUE(page.ok());
    EXPECT_EQ(countOf(*page, "<table class=grid>"), 2U);
    EXPECT_EQ(countOf(*page, "<td style=\"background:#"), 2 * 169U);
    EXPECT_EQ(countOf(*page, "<h2>hold'em buckets of seat 0 of 2, pre-flop</h2>"), 1U);
    const std::string& greatest = startingHands()[3].name;
    EXPECT_NE(page->find("#103260;color:#fff\" title=\"" + greatest + ": 0.900000\"><b>" +
                         greatest + "</b>0.900"),
              std::string::npos);
    EXPECT_EQ(countOf(*page,
                      "<p>lookup/preflop_2p: 169 entries, 1352 bytes</p>\n<table class=range>"
                      "\n<tr><td>least<td>0.100000<td>"),
              1U);
    EXPECT_EQ(
        countOf(*page, "<p class=legend><span><i style=\"background:#edf3f9\"></i>0.100</span>"),
        1U);
    EXPECT_EQ(countOf(*page, "<i style=\"background:#103260\"></i>0.900</span></p>"), 1U);
    EXPECT_EQ(countOf(*page, "<tr><td>0.3800 to 0.4200<td>167<td class=soft>98.8%"), 1U);
    // Self-contained: nothing is fetched and nothing runs.
    for (const char* outside : {"http", "<script", "src=", "@import", "url("})
        EXPECT_EQ(countOf(*page, outside), 0U) << outside;
}

TEST_F(TablePage, OfALaterRoundIsAHistogram) {
    writeSparse<uint8_t>(clusterPath(2, 1), roundSizes[1], {100, 7});
    const auto view = viewTable(*tableNamed("flop_2p_c"), clusterPath(2, 1));
    ASSERT_TRUE(view.ok());
    const std::string page = tablePage(*view);
    EXPECT_EQ(countOf(page, "class=grid"), 0U);
    EXPECT_EQ(countOf(page, "<u style"), 101U);
    EXPECT_NE(page.find("<tr><td>7<td>1<td"), std::string::npos);
}

TEST_F(TablePage, OfNoNumbersStillIsAPage) {
    writeSparse(equityPath(2, 0), roundSizes[0],
                std::vector<double>(roundSizes[0], std::numeric_limits<double>::quiet_NaN()));
    const auto view = viewTable(*tableNamed("preflop_2p"), equityPath(2, 0));
    ASSERT_TRUE(view.ok());
    EXPECT_NE(tablePage(*view).find("169 of them no numbers"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
