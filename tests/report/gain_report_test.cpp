#include "report/gain_report.h"

#include "report/gain_sample.h"

namespace tamarin::test {
namespace {

TEST(GainReport, NamesDecisionsByWhatWasDoneBefore) {
    const GainReport report = GainSample().report(true);
    ASSERT_EQ(report.first.size(), 8U);
    const auto is = [&](size_t i, const char* where, const char* before, const char* action) {
        EXPECT_EQ(report.first[i].where, where) << i;
        EXPECT_EQ(report.first[i].before, before) << i;
        EXPECT_EQ(report.first[i].action, action) << i;
    };
    is(0, "seat 0 after call", "c", "check"); // the big blind owes nothing
    is(1, "seat 0 after call", "c", "raise");
    is(2, "seat 0 after raise", "r", "fold");
    is(3, "seat 0 after raise", "r", "call");
    is(4, "seat 0 after raise", "r", "raise");
    is(5, "seat 1 first to act", "", "fold");
    is(6, "seat 1 first to act", "", "call");
    is(7, "seat 1 first to act", "", "raise");
}

TEST(GainReport, PutsHandsIntoTheGridOfTheDeck) {
    const GainReport report = GainSample().report(true);
    ASSERT_EQ(report.hands.size(), 9U);
    EXPECT_EQ(report.side, 3U);
    const auto is = [&](size_t i, const char* name, size_t row, size_t column) {
        EXPECT_EQ(report.hands[i].name, name) << i;
        EXPECT_EQ(report.hands[i].row, row) << i;
        EXPECT_EQ(report.hands[i].column, column) << i;
    };
    is(0, "AKo", 1, 0); // 39 chips, dealt 12 times in 66
    is(1, "AA", 0, 0);  // 54, 6
    is(2, "AQo", 2, 0); // 15, 12
    is(3, "AKs", 0, 1); // 26, 4
    is(4, "AQs", 0, 2); // 6, 4
    is(5, "KK", 1, 1);  // -1, 6
    is(8, "KQo", 2, 1); // -6, 12
}

TEST(GainReport, OfASampleIsATableOfIntervals) {
    EXPECT_EQ(gainsAsText(GainSample().report(true)),
              "where the 400.0 +- 100.0 are made: parts of the second figure (95 %)\n"
              "round          mbb/hand  part\n"
              "pre-flop  300.0 +- 50.0  75 %\n"
              "flop      100.0 +- 25.0  25 %\n"
              "first decision, best response      mbb/hand  part   hands  strategy's\n"
              "seat 0 after call: check       -15.0 +- 5.0  -4 %   0.0 %       1.0 %\n"
              "seat 0 after call: raise        -5.0 +- 5.0  -1 %   5.0 %       5.0 %\n"
              "seat 0 after raise: fold         5.0 +- 5.0   1 %  10.0 %       9.0 %\n"
              "seat 0 after raise: call        15.0 +- 5.0   4 %  15.0 %      13.0 %\n"
              "seat 0 after raise: raise       25.0 +- 5.0   6 %  20.0 %      17.0 %\n"
              "seat 1 first to act: fold       35.0 +- 5.0   9 %  25.0 %      21.0 %\n"
              "seat 1 first to act: call       45.0 +- 5.0  11 %  30.0 %      25.0 %\n"
              "seat 1 first to act: raise      55.0 +- 5.0  14 %  35.0 %      29.0 %\n"
              "hand  mbb/hand  part       when dealt\n"
              "AKo     354.55  89 %  1950.0 +- 187.5\n"
              "AA      245.45  61 %  2700.0 +- 212.5\n"
              "AQo     136.36  34 %   750.0 +- 137.5\n"
              "AKs      78.79  20 %  1300.0 +- 162.5\n"
              "AQs      18.18   5 %   300.0 +- 112.5\n");
}

TEST(GainReport, OfAllFlopsIsExact) {
    const std::string text = gainsAsText(GainSample().report(false));
    EXPECT_EQ(text.substr(0, text.find("first decision")), "where the 400.00 are made\n"
                                                           "round     mbb/hand  part\n"
                                                           "pre-flop    300.00  75 %\n"
                                                           "flop        100.00  25 %\n");
    EXPECT_EQ(text.find("+-"), std::string::npos);
}

TEST(GainReport, SaysThatNothingIsKnownOfTheRounds) {
    GainSample sample;
    sample.parts.rounds.clear();
    const std::string text = gainsAsText(sample.report(true));
    EXPECT_NE(text.find("\nby round nothing is known: some of these flops were finished by an "
                        "earlier version, which did not look; with another --finished folder they "
                        "are worked out anew\nfirst decision"),
              std::string::npos)
        << text;
    EXPECT_FALSE(gainsAsJson(sample.report(true)).contains("rounds"));
}

// Against a strategy that loses nothing.
TEST(GainReport, OfNothingThereAreNoParts) {
    GainSample sample;
    sample.parts.whole = {{-1e-9, 0}, {0, -1e-9}};
    const GainReport report = sample.report(false);
    EXPECT_EQ(report.partOf(1e-9), "-");
    EXPECT_EQ(report.text(report.whole.both), "0.00");
}

TEST(GainReport, AsJsonHasEverythingInChips) {
    const auto json = gainsAsJson(GainSample().report(true));
    EXPECT_EQ(json["gains"], 8);
    EXPECT_EQ(json["interval95"], 2);
    EXPECT_EQ(json["seats"], (nlohmann::json{3, 5}));
    EXPECT_EQ(json["of"], "crossed");
    ASSERT_EQ(json["rounds"].size(), 2U);
    EXPECT_EQ(json["rounds"][1]["round"], "flop");
    EXPECT_EQ(json["rounds"][1]["gains"], 2);
    EXPECT_EQ(json["rounds"][1]["interval95"], 0.5);
    EXPECT_EQ(json["rounds"][1]["seats"], (nlohmann::json{1.75, 0.25}));
    ASSERT_EQ(json["firstDecisions"].size(), 8U);
    const auto& first = json["firstDecisions"][4];
    EXPECT_EQ(first["seat"], 0);
    EXPECT_EQ(first["before"], "r");
    EXPECT_EQ(first["action"], "raise");
    EXPECT_EQ(first["gain"], 0.2 * 4 - 0.3);
    EXPECT_EQ(first["hands"], 0.2);
    EXPECT_EQ(first["strategyHands"], 0.17);
    ASSERT_EQ(json["hands"].size(), 9U);
    EXPECT_EQ(json["hands"][1]["hand"], "AA");
    EXPECT_EQ(json["hands"][1]["gains"], 54);
    EXPECT_EQ(json["hands"][1]["interval95"], 4.25);
    EXPECT_EQ(json["hands"][1]["dealt"], 6 / 66.0);
    const auto exact = gainsAsJson(GainSample().report(false));
    EXPECT_EQ(exact["of"], "gains");
    EXPECT_FALSE(exact["rounds"][1].contains("interval95"));
}

} // namespace
} // namespace tamarin::test
