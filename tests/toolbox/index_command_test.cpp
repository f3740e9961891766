#include "toolbox/run_toolbox.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

std::string answer(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "index");
    const ToolboxRun ran = callTamarin(arguments);
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.err, "");
    return ran.out;
}

void expectUsageError(std::vector<std::string> arguments, const std::string& what) {
    arguments.insert(arguments.begin(), "index");
    const ToolboxRun ran = callTamarin(arguments);
    EXPECT_EQ(ran.status, exitUsage);
    EXPECT_EQ(ran.out, "");
    EXPECT_NE(ran.err.find(what), std::string::npos) << ran.err;
    EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), 1) << ran.err;
}

} // namespace

TEST(IndexCommand, NumbersHoleCards) {
    EXPECT_EQ(answer({"2c2d"}), "0\n");
    EXPECT_EQ(answer({"AsAh"}), "90\n");
    EXPECT_EQ(answer({"2h", "3h"}), "91\n");
    EXPECT_EQ(answer({"KsAs"}), "168\n");
}

TEST(IndexCommand, GivesAHandBack) {
    EXPECT_EQ(answer({"--unindex", "0", "168"}), "KcAc\n");
    EXPECT_EQ(answer({"--unindex", "preflop", "90"}), "AcAd\n");
    EXPECT_EQ(answer({"--unindex", "flop", "1286791"}), "KcAc TcJcQc\n");
}

TEST(IndexCommand, IsItsOwnInverseInEveryStructure) {
    const std::string rounds[] = {"0", "1", "2", "3"};
    const std::string indices[] = {"100", "612345", "7654321", "98765432"};
    for (size_t r = 0; r < 4; ++r) {
        const std::string hand = answer({"--unindex", rounds[r], indices[r]});
        EXPECT_EQ(answer({hand.substr(0, hand.size() - 1)}), indices[r] + "\n");
        const std::string dealt = answer({"--rounds", "2,3,1,1", "--unindex", rounds[r], "77"});
        EXPECT_EQ(answer({"--rounds", "2,3,1,1", dealt.substr(0, dealt.size() - 1)}), "77\n");
    }
}

TEST(IndexCommand, PrintsSizes) {
    EXPECT_EQ(answer({"--sizes"}), "169\n1286792\n13960050\n123156254\n");
    EXPECT_EQ(answer({"--sizes", "--rounds", "2,3,1,1"}), "169\n1286792\n55190538\n2428287420\n");
    EXPECT_EQ(nlohmann::json::parse(answer({"--sizes", "--rounds", "2", "--json"})),
              nlohmann::json({169}));
}

TEST(IndexCommand, SpeaksJson) {
    const auto json = nlohmann::json::parse(answer({"--json", "AsKd", "Qs8h3d"}));
    EXPECT_EQ(json["rounds"], nlohmann::json({2, 3}));
    EXPECT_EQ(json["round"], 1);
    EXPECT_EQ(json["size"], 1286792);
    EXPECT_EQ(json["cards"], "AsKd Qs8h3d");
    const std::string canonical = json["canonical"];
    EXPECT_EQ(answer({canonical}), std::to_string(json["index"].get<uint64_t>()) + "\n");
    EXPECT_EQ(nlohmann::json::parse(answer({"--json", "--unindex", "0", "90"}))["cards"], "AcAd");
}

TEST(IndexCommand, TakesRoundsByNameAndNumber) {
    for (const char* round : {"preflop", "pre-flop", "0"})
        EXPECT_EQ(answer({"--unindex", round, "90"}), "AcAd\n") << round;
    EXPECT_EQ(answer({"--unindex", "turn", "77"}), answer({"--unindex", "2", "77"}));
}

TEST(IndexCommand, SaysWhatIsWrong) {
    expectUsageError({}, "give either CARDS");
    expectUsageError({"AsKd", "--sizes"}, "give either CARDS");
    expectUsageError({"AsXd"}, "cannot read the card \"Xd\"");
    expectUsageError({"AsAs"}, "the card As stands twice");
    expectUsageError({"AsKdQs"}, "3 cards are no hand of hold'em");
    expectUsageError({"--rounds", "2,3,1,1", "AsKdQs"}, "3 cards do not end any of the rounds");
    expectUsageError({"--rounds", "2,x", "AsKd"}, "cannot read --rounds \"2,x\"");
    expectUsageError({"--rounds", "2,", "AsKd"}, "cannot read --rounds \"2,\"");
    expectUsageError({"--rounds", "300", "AsKd"}, "cannot read --rounds \"300\"");
    expectUsageError({"--rounds", "50,3", "AsKd"}, "rounds of 50,3 cards cannot be indexed");
    expectUsageError({"--rounds", "3,3,3,3", "AsKdQd"}, "rounds of 3,3,3,3 cards cannot");
    expectUsageError({"--unindex", "0", "169"}, "round 0 has 169 hands, 0 to 168");
    expectUsageError({"--unindex", "0", "-1"}, "cannot read the index \"-1\"");
    expectUsageError({"--unindex", "4", "0"}, "there is no round \"4\"");
    expectUsageError({"--rounds", "2,3", "--unindex", "2", "0"}, "there is no round \"2\"");
    expectUsageError({"--unindex", "0"}, "--unindex");
}

TEST(IndexCommand, HelpHasAnExample) {
    const ToolboxRun ran = callTamarin({"index", "--help"});
    EXPECT_EQ(ran.status, exitDone);
    EXPECT_NE(ran.out.find("tamarin index AsKd Qs8h3d"), std::string::npos);
}

} // namespace tamarin::test
