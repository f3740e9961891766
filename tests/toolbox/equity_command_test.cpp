#include "toolbox/run_toolbox.h"

namespace tamarin::test {

namespace {

void expectRefused(const std::vector<std::string>& arguments, int status, const std::string& says) {
    const ToolboxRun run = callTamarin(arguments);
    EXPECT_EQ(run.status, status) << run.out << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find(says), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

} // namespace

TEST(EquityCommand, AcesAgainstOneRandomHand) {
    const ToolboxRun run = callTamarin({"equity", "AsAh"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "AsAh against 1 random hand\n"
                       "  win 84.932 %  tie 0.544 %  loss 14.524 %  pot equity 85.204 %\n"
                       "  exact: 2,097,572,400 deals counted\n");
}

TEST(EquityCommand, JsonOnABoard) {
    const ToolboxRun run =
        callTamarin({"equity", "AsKd", "Qs8h3d", "--vs", "QQ", "--players", "3", "--json"});
    EXPECT_EQ(run.status, 0);
    const auto json = run.json();
    EXPECT_EQ(json["method"], "exact");
    EXPECT_EQ(json["randomOpponents"], 1);
    EXPECT_EQ(json["deals"], 3 * 990 * 903); // three pairs of queens, turns and rivers, hands
    EXPECT_NEAR(json["win"].get<double>() + json["tie"].get<double>() + json["loss"].get<double>(),
                1, 1e-12);
    EXPECT_FALSE(json.contains("seed"));
}

TEST(EquityCommand, SeedRepeatsASample) {
    const std::vector<std::string> arguments{"equity",  "TT+,AKs", "--players", "6",
                                             "--deals", "20000",   "--seed",    "9"};
    const ToolboxRun run = callTamarin(arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("sampled: 20,480 deals, seed 9; pot equity within"), std::string::npos)
        << run.out;
    EXPECT_EQ(run.out, callTamarin(arguments).out);
    auto other = arguments;
    other.back() = "10";
    EXPECT_NE(run.out, callTamarin(other).out);
    other = arguments;
    other.insert(other.end(), {"--threads", "1"});
    EXPECT_EQ(run.out, callTamarin(other).out);
}

TEST(EquityCommand, RangesOfThreePlayersAreCounted) {
    const ToolboxRun run = callTamarin({"equity", "TT+,AKs", "--vs", "QQ", "--vs", "AKo,A5s-A2s"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "TT+,AKs against QQ and AKo,A5s-A2s\n"
                       "  win 32.244 %  tie 3.938 %  loss 63.817 %  pot equity 34.149 %\n"
                       "  exact: 5,362,389,648 deals counted\n");
    EXPECT_EQ(callTamarin({"equity", "random", "Qs8h3d", "--players", "3", "--threads", "3"}).out,
              "random against 2 random hands on Qs8h3d\n"
              "  win 32.280 %  tie 2.151 %  loss 65.569 %  pot equity 33.333 %\n"
              "  exact: 1,136,464,726,320 deals counted\n");
}

TEST(EquityCommand, SaysWhenCountingWouldTakeLonger) {
    const std::vector<std::string> wide{
        "equity", "QhJh,T9s,A8o+,KTs,9c8c", "--vs", "22+,AsKd,A9o+,KTs", "--vs", "33+,AhKd,QTs+"};
    const ToolboxRun run = callTamarin(wide);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("sampled: 1,000,448 deals, seed 1;"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("--exact counts every deal, in about "), std::string::npos) << run.out;
    auto asJson = wide;
    asJson.push_back("--json");
    EXPECT_GT(callTamarin(asJson).json()["exactSeconds"].get<double>(), 10);
    // Nothing is said where it was not asked for, or cannot be.
    asJson.insert(asJson.end(), {"--deals", "1024"});
    EXPECT_FALSE(callTamarin(asJson).json().contains("exactSeconds"));
    EXPECT_FALSE(
        callTamarin({"equity", "AA", "--players", "6", "--json"}).json().contains("exactSeconds"));
}

TEST(EquityCommand, SaysWhatIsWrong) {
    expectRefused({"equity"}, 2, "HAND");
    expectRefused({"equity", "AXs"}, 2, "no rank");
    expectRefused({"equity", "AsKd", "Qs8"}, 2, "cannot read the card");
    expectRefused({"equity", "AsKd", "Qs8h"}, 1, "2 cards");
    expectRefused({"equity", "AsKd", "AsQs8h"}, 1, "nobody can hold");
    expectRefused({"equity", "AsKd", "--vs", "AsQh"}, 1, "cannot be held together");
    expectRefused({"equity", "AsKd", "--players", "11"}, 2, "--players");
    expectRefused({"equity", "AA", "--vs", "KK", "--vs", "QQ", "--players", "2"}, 2, "fewer");
    expectRefused({"equity", "AA", "--players", "4", "--exact"}, 1, "two random");
    expectRefused({"equity", "AA", "--exact", "--deals", "5"}, 2, "--deals");
}

TEST(EquityCommand, HelpHasExamples) {
    const ToolboxRun run = callTamarin({"equity", "--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("tamarin equity AsKd"), std::string::npos);
}

} // namespace tamarin::test
