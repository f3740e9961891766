#include "report/gain_page.h"

#include "report/count_of.h"
#include "report/gain_sample.h"

namespace tamarin::test {
namespace {

TEST(GainPage, HasTheTablesAndTheGridOfTheDeck) {
    const std::string page = gainPage(GainSample().report(true));
    EXPECT_EQ(countOf(page, "<h1>twelve &lt;cards&gt;: where the strategy loses</h1>"), 1U);
    EXPECT_EQ(countOf(page, "<p>strat &amp; egy in the real game, all 12 flops: "), 1U);
    EXPECT_EQ(countOf(page, "adds up to <b>400.0 +- 100.0</b>"), 1U);
    EXPECT_EQ(countOf(page, "<tr><td>pre-flop<td>300.0 +- 50.0<td>75 %<td>150.0<td>450.0</tr>\n"),
              1U)
        << page;
    EXPECT_EQ(countOf(page, "<tr><td>flop<td>100.0 +- 25.0<td>25 %<td>175.0<td>25.0</tr>\n"), 1U);
    EXPECT_EQ(countOf(page, "<tr><td>seat 0 after raise<td>call<td>15.0 +- 5.0<td>4 %<td>15.0 %"
                            "<td>13.0 %</tr>\n"),
              1U);
    EXPECT_EQ(countOf(page, "<td style=\"background:#"), 9U);
    EXPECT_EQ(countOf(page, "<tr><td>AKo<td>354.55<td>89 %<td>18.2 %<td>1950.0 +- 187.5</tr>\n"),
              1U);
    // The darkest is the hand with which most is gained when it is dealt; losses are the lightest.
    EXPECT_EQ(countOf(page, "<table class=grid>\n<tr><td style=\"background:#6e2c0e;color:#fff\" "
                            "title=\"AA: 2700.0 +- 212.5 when dealt, 61 % of the whole\"><b>AA</b>"
                            "2700<td"),
              1U);
    EXPECT_EQ(countOf(page, "background:#fcf0e2"), 4U);
    // Self-contained: nothing is fetched and nothing runs.
    for (const char* outside : {"http", "<script", "src=", "@import", "url("})
        EXPECT_EQ(countOf(page, outside), 0U) << outside;
}

TEST(GainPage, SaysOfASampleThatItIsOne) {
    const GainSample sample;
    EXPECT_EQ(countOf(gainPage(sample.report(true)), "an estimate from a sample of flops"), 1U);
    EXPECT_EQ(countOf(gainPage(sample.report(true)), "those that the sample flatters"), 1U);
    const std::string exact = gainPage(sample.report(false));
    EXPECT_EQ(countOf(exact, "sample"), 0U);
    EXPECT_EQ(countOf(exact, "+-"), 0U);
    EXPECT_EQ(countOf(exact, "What this does not say"), 1U);
}

TEST(GainPage, SaysThatNothingIsKnownOfTheRounds) {
    GainSample sample;
    sample.parts.rounds.clear();
    const std::string page = gainPage(sample.report(true));
    EXPECT_EQ(countOf(page, "<p>by round nothing is known: "), 1U);
    EXPECT_EQ(countOf(page, "<tr><td>flop"), 0U);
}

// With one suit there are no pairs, and nothing is offsuit.
TEST(GainPage, LeavesHandsOutThatTheDeckLacks) {
    const GainSample sample(shortGame(1, 9, "1 1", "10 10", "0 3"));
    const std::string page = gainPage(sample.report(false));
    EXPECT_EQ(countOf(page, "<td style=\"background:#"), 36U);
    EXPECT_EQ(countOf(page, "<b>76s</b>"), 1U);
    EXPECT_EQ(countOf(page, "<b>AA</b>"), 0U);
}

} // namespace
} // namespace tamarin::test
