#include "toolbox/run_toolbox.h"

namespace tamarin::test {

TEST(RankCommand, NamesAHand) {
    const ToolboxRun run = callTamarin({"rank", "AsKsQsJsTs2c3d"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "AsKsQsJsTs2c3d: Straight flush, ace high (royal flush); category 9, value "
                       "36874, rank 7462 of 7462\n");
    EXPECT_EQ(run.err, "");
}

TEST(RankCommand, SingleCardsAreOneHand) {
    const ToolboxRun run = callTamarin({"rank", "Kh", "Kd", "Kc", "3s", "3c"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.rfind("KhKdKc3s3c: Full house, kings over threes;", 0), 0U) << run.out;
}

TEST(RankCommand, ListsHandsAsJson) {
    const ToolboxRun run = callTamarin({"rank", "7h5d4c3s2c", "2h2d3c4s5c6c", "--json"});
    EXPECT_EQ(run.status, 0);
    const auto list = run.json();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]["value"], 4097);
    EXPECT_EQ(list[0]["rank"], 1);
    EXPECT_EQ(list[0]["categoryName"], "High card");
    EXPECT_EQ(list[1]["categoryName"], "Straight");
}

TEST(RankCommand, SaysWhatIsWrong) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"rank"},
                                                                       {"rank", "AsKsQsJs"},
                                                                       {"rank", "AsKsQsJsTs2c3d4h"},
                                                                       {"rank", "AsAsQsJsTs"},
                                                                       {"rank", "1sKsQsJsTs"}}) {
        const ToolboxRun run = callTamarin(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
}

} // namespace tamarin::test
