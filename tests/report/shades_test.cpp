#include "report/shades.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Shades, GoFromLightToDark) {
    EXPECT_EQ(shade(blues, 0).text(), "#edf3f9");
    EXPECT_EQ(shade(blues, 1).text(), "#103260");
    EXPECT_EQ(shade(blues, -3).text(), shade(blues, 0).text());
    EXPECT_EQ(shade(blues, 7).text(), shade(blues, 1).text());
    EXPECT_EQ(shade(oranges, 0.5).text(), "#e69863"); // halfway between the middle two
    double before = 256;
    for (int step = 0; step <= 20; ++step) {
        const Colour colour = shade(oranges, step / 20.0);
        EXPECT_LT(colour.green, before);
        before = colour.green;
    }
}

TEST(Shades, AreWrittenOnInWhatReads) {
    EXPECT_STREQ(shade(blues, 0).ink(), "#1d2329");
    EXPECT_STREQ(shade(blues, 1).ink(), "#fff");
}

TEST(Shades, BarsAreAsLongAsTheirShare) {
    EXPECT_EQ(barOf(0.125), "<u style=\"width:12.50%\"></u>");
}

TEST(Shades, AGridHasThirteenRowsInOrder) {
    std::array<std::string, 169> fields;
    for (size_t i = 0; i < fields.size(); ++i)
        fields[i] = gridField(shade(blues, 1), "h" + std::to_string(i), "below", "resting");
    const std::string grid = gridOf(fields);
    EXPECT_NE(grid.find("<table class=grid>\n<tr><td style=\"background:#103260;color:#fff\" "
                        "title=\"h0: resting\"><b>h0</b>below<td"),
              std::string::npos)
        << grid.substr(0, 200);
    EXPECT_NE(grid.find("<b>h12</b>below</tr>\n<tr><td"), std::string::npos);
    EXPECT_NE(grid.find("<b>h168</b>below</tr>\n</table>\n"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
