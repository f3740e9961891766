#include "report/convergence_page.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

size_t countOf(const std::string& text, const std::string& what) {
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

TEST(ConvergencePage, DrawsACurveForEachTraining) {
    const ConvergenceCurve one{"a<b",
                               ConvergenceMeasure::nashConv,
                               {{1, 1, 100, {}}, {10, 10, 1, {}}, {100, 100, 10, {}}}};
    const ConvergenceCurve other{
        "other", ConvergenceMeasure::nashConv, {{1, 10, 10, {}}, {5, 100, 100, {}}}};
    const ConvergenceCurve real{
        "real", ConvergenceMeasure::exploitability, {{7, 60, 400, 25.0}, {9, 600, 300, 20.0}}};
    const std::string page = convergencePage({one, other, real});
    EXPECT_EQ(page.rfind("<!doctype html>", 0), 0U);
    EXPECT_EQ(countOf(page, "<svg"), 2U);
    EXPECT_EQ(countOf(page, "<polyline"), 3U);
    EXPECT_EQ(countOf(page, "<line class=interval"), 2U);
    EXPECT_EQ(countOf(page, "a<b"), 0U);
    EXPECT_EQ(countOf(page, "a&lt;b"), 2U);
    // Both axes are logarithmic: from the left to the right, and from the top to the bottom.
    EXPECT_NE(page.find("points=\"72.0,12.0 460.0,292.0 848.0,152.0 \""), std::string::npos)
        << page;
    EXPECT_NE(page.find("points=\"460.0,152.0 848.0,12.0 \""), std::string::npos);
    EXPECT_NE(page.find("<text x=460.0 y=312 text-anchor=middle>10 s</text>"), std::string::npos);
    EXPECT_LT(page.find("exploitability, mbb/hand"), page.find("NashConv, chips/hand"));
    EXPECT_NE(page.find("<td>9<td>10 min 00 s<td>300 &plusmn; 20</tr>"), std::string::npos) << page;
}

// From a millisecond to a month, both ends included; a training of two minutes has its own alone.
TEST(ConvergencePage, MarksTheTimesThatItSpans) {
    const auto marksOf = [](double from, double to) {
        const ConvergenceCurve curve{
            "c", ConvergenceMeasure::nashConv, {{1, from, 2, {}}, {2, to, 1, {}}}};
        const std::string page = convergencePage({curve});
        const std::string before = "y=312 text-anchor=middle>";
        std::string marks;
        for (size_t at = page.find(before); at != std::string::npos;
             at = page.find(before, at + 1)) {
            const size_t begin = at + before.size();
            marks += page.substr(begin, page.find('<', begin) - begin) + ",";
        }
        return marks;
    };
    EXPECT_EQ(
        marksOf(1e-3, 2592000),
        "1 ms,10 ms,0.1 s,0.5 s,1 s,2 s,5 s,10 s,30 s,1 min,2 min,5 min,10 min,30 min,1 h,2 h,"
        "5 h,10 h,1 day,2 days,5 days,10 days,30 days,");
    EXPECT_EQ(marksOf(2, 120), "2 s,5 s,10 s,30 s,1 min,2 min,");
    EXPECT_EQ(marksOf(2.5, 119), "5 s,10 s,30 s,1 min,");
}

TEST(ConvergencePage, WhatIsNothingIsNotDrawn) {
    const ConvergenceCurve zero{"z", ConvergenceMeasure::nashConv, {{1, 1, 0, {}}}};
    const std::string page = convergencePage({zero});
    EXPECT_EQ(countOf(page, "<svg"), 0U);
    EXPECT_NE(page.find("nothing to draw"), std::string::npos);
    const ConvergenceCurve single{"s", ConvergenceMeasure::averageRegret, {{1, 1, 2, {}}}};
    EXPECT_NE(convergencePage({single}).find("points=\"460.0,152.0 \""), std::string::npos);
}

} // namespace
} // namespace tamarin::test
