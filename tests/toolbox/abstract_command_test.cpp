#include "clustering/fake_abstraction.h"
#include "clustering/sparse_abstraction.h"
#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

std::string usageError(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "abstract");
    const ToolboxRun ran = callTamarin(arguments);
    EXPECT_EQ(ran.status, exitUsage);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), 1) << ran.err;
    return ran.err;
}

} // namespace

TEST(AbstractCommand, SaysWhatIsWrong) {
    EXPECT_NE(usageError({"169-200-200"}).find("'169-200-200' is no card abstraction"),
              std::string::npos);
    EXPECT_NE(usageError({"1-1-1-1", "--method", "guess"}).find("no method 'guess'"),
              std::string::npos);
    EXPECT_NE(usageError({"1-1-1-1", "--name", "../x"}).find("is no name"), std::string::npos);
    EXPECT_NE(usageError({"1-1-1-1", "--clusters", "9"}).find("--clusters"), std::string::npos);
    EXPECT_NE(usageError({}).find("COUNTS"), std::string::npos);
}

TEST(AbstractCommand, RefusesNamesOfOtherThings) {
    const TempDirectory directory;
    const auto refusal = [](const std::string& name) {
        return usageError({"1-1-1-1", "--name", name});
    };
    for (const char* table :
         {"flop_2p", "river_3p_c", "utility_turn_2p_1", "holdem_river_3p_2", "tpt", "tpt.indexes"})
        EXPECT_NE(refusal(table).find("'" + std::string(table) +
                                      "' is no name for a card abstraction: a table below lookup/ "
                                      "is called that"),
                  std::string::npos);
    EXPECT_NE(refusal("manifest.json").find("the manifest"), std::string::npos);
    EXPECT_NE(refusal("kuhn.limit.3p.game").find("games end in .game"), std::string::npos);
    for (const char* free : {"flop_4p", "flop_2p_", "tpt2", "game", "x.games"})
        EXPECT_EQ(callTamarin({"abstract", "1-1-1-1", "--name", free, "--dir", directory.path(),
                               "--dry-run"})
                      .status,
                  exitDone)
            << free;
}

TEST(AbstractCommand, ADryRunWritesNothing) {
    const TempDirectory directory;
    const std::vector<std::string> arguments{"abstract", "169-30-40-50", "--dir", directory.path(),
                                             "--dry-run"};
    const ToolboxRun text = callTamarin(arguments);
    EXPECT_EQ(text.status, exitDone) << text.err;
    EXPECT_NE(text.out.find("lookup/169-30-40-50/turn: 27.9 MB\n"), std::string::npos) << text.out;
    std::vector<std::string> withJson = arguments;
    withJson.insert(withJson.end(), {"--json", "--method", "percentile"});
    const ToolboxRun ran = callTamarin(withJson);
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.json()["name"], "169-30-40-50-percentile");
    EXPECT_EQ(ran.json()["state"], "missing");
    EXPECT_EQ(ran.json()["files"][3]["bytes"], 246312508);
    EXPECT_EQ(directory.names(), std::set<std::string>{});
}

TEST(AbstractCommand, WhatIsThereAndDoesNotFitIsRefused) {
    const TempDirectory directory;
    ASSERT_TRUE(writeFake(directory.path(), "x").ok()); // of a few hands
    const std::vector<std::string> arguments{"abstract", "169-3-4-5", "--name",
                                             "x",        "--dir",     directory.path()};
    ToolboxRun ran = callTamarin(arguments);
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_NE(ran.err.find("hands on the flop, not 1286792; --force makes it anew"),
              std::string::npos)
        << ran.err;
    std::vector<std::string> verifying = arguments;
    verifying.emplace_back("--verify");
    ran = callTamarin(verifying);
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_NE(ran.err.find("hands on the flop"), std::string::npos) << ran.err;
    verifying[1] = "169-3-4-6";
    ran = callTamarin(verifying);
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_NE(ran.err.find("the number of buckets is 169-3-4-5 there and 169-3-4-6 here"),
              std::string::npos)
        << ran.err;
    verifying.emplace_back("--force");
    EXPECT_EQ(callTamarin(verifying).status, exitUsage);
}

class AbstractionsVerified : public PlayingDirectory {};

TEST_F(AbstractionsVerified, AreGoodOrWrong) {
    const auto verified = [] { return callTamarin({"verify", "--json", "--quiet"}).json(); };
    const auto before = verified();
    EXPECT_EQ(before["abstractions"].size(), 0U);
    writeSparseAbstraction("mine");
    const auto good = verified();
    ASSERT_EQ(good["abstractions"].size(), 1U);
    EXPECT_EQ(good["abstractions"][0],
              nlohmann::json({{"name", "mine"}, {"good", true}, {"result", "good"}}));
    EXPECT_EQ(good["wrong"], before["wrong"]);
    ASSERT_TRUE(writeFake(".", "few").ok()); // of a few hands, so that it is none
    const ToolboxRun ran = callTamarin({"verify", "--json", "--quiet"});
    EXPECT_EQ(ran.status, exitFailed);
    const auto after = ran.json();
    ASSERT_EQ(after["abstractions"].size(), 2U);
    EXPECT_EQ(after["abstractions"][0]["name"], "few");
    EXPECT_EQ(after["abstractions"][0]["good"], false);
    EXPECT_EQ(after["abstractions"][1], good["abstractions"][0]);
    EXPECT_EQ(after["wrong"].get<int>(), before["wrong"].get<int>() + 1);
}

} // namespace tamarin::test
