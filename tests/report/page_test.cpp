#include "report/page.h"

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(Page, HasTheTitleTheOwnRulesAfterTheSharedOnesAndTheBody) {
    const std::string page = pageOf("flop & turn", ".own{margin:0}", "<p>text</p>\n");
    EXPECT_TRUE(page.starts_with("<!doctype html>\n")) << "by which a page is known for ours";
    EXPECT_TRUE(page.ends_with("<h1>flop &amp; turn</h1>\n<p>text</p>\n</main></body></html>\n"));
    EXPECT_NE(page.find("<title>flop &amp; turn</title>"), std::string::npos);
    const size_t shared = page.find("body{margin:0");
    const size_t own = page.find(".own{margin:0}</style>");
    ASSERT_NE(shared, std::string::npos);
    ASSERT_NE(own, std::string::npos);
    EXPECT_LT(shared, own);
}

TEST(Page, FetchesNothingAndRunsNoScript) {
    const std::string page = pageOf("title", actionStyle, "");
    for (const char* const outside : {"<script", "<link", "@import", "url(", "http"})
        EXPECT_EQ(page.find(outside), std::string::npos) << outside;
}

TEST(Page, EscapesWhatHtmlWouldTakeForItsOwn) {
    EXPECT_EQ(escapedForPage("<a href=\"x\">&</a> it's"),
              "&lt;a href=&quot;x&quot;&gt;&amp;&lt;/a&gt; it's");
}

} // namespace tamarin::test
