#include "report/abstraction_page.h"

#include "clustering/sparse_abstraction.h"
#include "report/count_of.h"
#include "support/file.h"
#include "table_builder/table_summary.h"
#include "toolbox/run_toolbox.h"

namespace tamarin::test {
namespace {

class AbstractionPages : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("mine");
    }
};

TEST_F(AbstractionPages, HaveTheGridTheSizesAndEveryBucket) {
    writeSparse(equityPath(2, 0), roundSizes[0], std::vector<double>(roundSizes[0], 0.25));
    const ToolboxRun run =
        callTamarin({"show", "lookup/mine", "--round", "preflop", "--html", "page.html"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "wrote page.html\n");
    const auto page = readWholeFile("page.html");
    ASSERT_TRUE(page.ok());
    EXPECT_EQ(countOf(*page, "<h1>lookup/mine: card abstraction</h1>"), 1U);
    EXPECT_EQ(countOf(*page, "<tr><td>pre-flop<td>20<td>0<td>8<td>8<td>9<td>0.2500<td>0.0000"
                             "<td>0.0000</tr>"),
              1U);
    EXPECT_EQ(countOf(*page, "<table class=grid>"), 1U);
    EXPECT_EQ(countOf(*page, "<td style=\"background:#"), 169U);
    const std::string& darkest = startingHands()[39].name; // of bucket 19
    EXPECT_EQ(countOf(*page, "#103260;color:#fff\" title=\"" + darkest + ": bucket 19\"><b>" +
                                 darkest + "</b>19"),
              1U);
    EXPECT_EQ(countOf(*page, "<tr><td>8 to 8 hands<td>11<td><u style=\"width:100.00%\"></u></tr>"),
              1U);
    EXPECT_EQ(countOf(*page, "the 20 buckets: hands"), 1U);
    EXPECT_EQ(countOf(*page, "<td>0.2500<td class=soft>0.0000<td><u style=\"width:25.00%\">"), 20U);
    // Self-contained: nothing is fetched and nothing runs.
    for (const char* outside : {"http", "<script", "src=", "@import", "url("})
        EXPECT_EQ(countOf(*page, outside), 0U) << outside;
}

TEST_F(AbstractionPages, OfABucketHaveItsHands) {
    AbstractionQuestion question;
    question.name = "mine";
    question.round = 1;
    question.bucket = 2;
    const auto view = viewAbstraction(question);
    ASSERT_TRUE(view.ok()) << view.error();
    const std::string page = abstractionPage(*view);
    EXPECT_EQ(countOf(page, "<h1>lookup/mine: flop bucket 2 of 7</h1>"), 1U);
    EXPECT_EQ(countOf(page, "<tr><td>hands, distinct up to suits<td>3</tr>"), 1U);
    EXPECT_EQ(countOf(page, "<p>No equities: lookup/flop_2p"), 1U);
    for (const uint64_t hand : {1U, 3U, 4U})
        EXPECT_EQ(countOf(page, "<tr><td>" + handAt(1, hand) + "<td>-</tr>"), 1U) << hand;
    EXPECT_EQ(countOf(page, "<h2>3 of its hands, spread evenly over its hand indices</h2>"), 1U);
    EXPECT_EQ(countOf(page, "class=grid"), 0U);
}

// One of 2,000 is read, one of more is only long.
TEST_F(AbstractionPages, LeaveTheListOfVeryManyBucketsOut) {
    AbstractionView view;
    view.path = "lookup/<big>";
    view.rounds.push_back({1, std::vector<BucketSummary>(2001, {2, 3, 0, 0}), 6003, "none", {}});
    std::string page = abstractionPage(view);
    EXPECT_EQ(countOf(page, "Of 2,001 buckets only --json lists every one."), 1U);
    EXPECT_EQ(countOf(page, "<details>"), 0U);
    EXPECT_EQ(countOf(page, "<big>"), 0U);
    view.rounds[0].buckets.pop_back();
    page = abstractionPage(view);
    EXPECT_EQ(countOf(page, "<details>"), 1U);
    EXPECT_EQ(countOf(page, "<tr><td>1999<td>2<td"), 1U);
}

} // namespace
} // namespace tamarin::test
