#include "toolbox/blueprint_training.h"

#include "clustering/sparse_abstraction.h"
#include "response/measured.h"
#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

// A playing directory with a card abstraction of a few buckets and hold'em with little betting.
class BlueprintTraining : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("few");
        std::ofstream("small.game") << shortGame(4, 13, "1 1 0 0", "10 10 20 20", "0 3 1 1");
        std::ofstream("short.game") << shortGame(4, 5, "1 1", "10 10", "0 3");
    }
    static ToolboxRun train(std::vector<std::string> more) {
        more.insert(more.begin(), {"train", "small.game", "--cards", "few"});
        return callTamarin(more);
    }
    static std::string usageError(const std::vector<std::string>& more) {
        const ToolboxRun ran = train(more);
        EXPECT_EQ(ran.status, 2);
        return ran.err;
    }
    const std::string blueprint = "strategies/small/blueprint";
};

TEST_F(BlueprintTraining, WritesWhatItSays) {
    const ToolboxRun ran = train({"--iterations", "12", "--quiet", "--json"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.err, "");
    const auto json = ran.json();
    EXPECT_EQ(json["iteration"], 12);
    EXPECT_EQ(json["cards"], "few");
    EXPECT_EQ(json["blueprint"], blueprint);
    EXPECT_EQ(json["bytes"], fs::file_size(blueprint));
    EXPECT_GT(json["averageRegret"], 0.0);
    EXPECT_TRUE(fs::exists(blueprint + ".checkpoint"));
    EXPECT_NE(contentsOf("strategies/small/manifest.json").find("--cards few with seed 1"),
              std::string::npos);
}

TEST_F(BlueprintTraining, LiesBesideTheStrategyOfPlayer) {
    const ToolboxRun ran = callTamarin({"train", "holdem.limit.2p.reverse_blinds.game", "--cards",
                                        "few", "--iterations", "1", "--quiet"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_TRUE(fs::exists("strategies/holdem.limit.2p/blueprint"));
}

TEST_F(BlueprintTraining, ResumedItIsAsInOneGo) {
    ASSERT_EQ(train({"--iterations", "9", "--quiet", "--out", "whole"}).status, 0);
    ASSERT_EQ(train({"--iterations", "4", "--quiet", "--out", "parts"}).status, 0);
    EXPECT_NE(contentsOf("whole/blueprint"), contentsOf("parts/blueprint"));
    const ToolboxRun unasked = train({"--iterations", "9", "--out", "parts"});
    EXPECT_EQ(unasked.status, 1);
    EXPECT_NE(unasked.err.find("--resume goes on from it"), std::string::npos) << unasked.err;
    const ToolboxRun resumed =
        train({"--iterations", "9", "--resume", "--quiet", "--out", "parts", "--threads", "2"});
    ASSERT_EQ(resumed.status, 0) << resumed.err;
    EXPECT_EQ(contentsOf("whole/blueprint"), contentsOf("parts/blueprint"));
    EXPECT_EQ(contentsOf("whole/blueprint.checkpoint"), contentsOf("parts/blueprint.checkpoint"));
    const ToolboxRun other =
        train({"--iterations", "9", "--resume", "--seed", "2", "--out", "parts"});
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.err.find("seed is 1 there and 2 here"), std::string::npos) << other.err;
    EXPECT_EQ(train({"--resume", "--out", "nothing"}).status, 1);
    ASSERT_EQ(train({"--iterations", "4", "--fresh", "--quiet", "--out", "parts"}).status, 0);
    EXPECT_NE(contentsOf("whole/blueprint"), contentsOf("parts/blueprint"));
}

TEST_F(BlueprintTraining, DryRunLeavesNothing) {
    const ToolboxRun ran = train({"--dry-run"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_NE(ran.out.find("decision nodes"), std::string::npos) << ran.out;
    EXPECT_NE(ran.out.find(" boards/s with "), std::string::npos) << ran.out;
    EXPECT_FALSE(fs::exists("strategies"));
}

TEST_F(BlueprintTraining, RefusesWhatDoesNotFit) {
    EXPECT_NE(usageError({"--algorithm", "dcfr"}).find("--algorithm"), std::string::npos);
    EXPECT_NE(usageError({"--until-nashconv", "1"}).find("--until-nashconv"), std::string::npos);
    EXPECT_NE(usageError({"--sampled-deals", "1"}).find("--sampled-deals"), std::string::npos);
    EXPECT_NE(usageError({"--iterations", "2000000000000"}).find("--iterations"),
              std::string::npos);
    const ToolboxRun noHoldem = callTamarin({"train", "short.game", "--cards", "few"});
    EXPECT_EQ(noHoldem.status, 2);
    EXPECT_NE(noHoldem.err.find("card abstractions are of hold'em"), std::string::npos);
    const ToolboxRun missing = callTamarin({"train", "small.game", "--cards", "5-5-5-5"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("'tamarin abstract --help' says how to make one"),
              std::string::npos);
    EXPECT_NE(usageError({"--menu", "some.menu"}).find("no choice of sizes"), std::string::npos);
}

// What the log says is what the measure of the finished blueprint says, but for its 8 bits.
TEST_F(BlueprintTraining, ItsMeasuresAreInTheLog) {
    const ToolboxRun ran = train({"--iterations", "3", "--measure", "2"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_NE(ran.err.find("Measuring in the real game: 2 flops"), std::string::npos) << ran.err;
    const ToolboxRun curves = callTamarin({"convergence", "strategies/small", "--json"});
    ASSERT_EQ(curves.json()["curves"].size(), 2U);
    const auto logged = curves.json()["curves"][1];
    EXPECT_EQ(logged["measure"], "exploitability");
    ASSERT_EQ(logged["points"].size(), 1U); // a minute is not over
    EXPECT_EQ(logged["points"][0]["iteration"], 3);
    const ToolboxRun exact = callTamarin(
        {"exploit", "small.game", "--real", "--blueprint", blueprint, "--flops", "2", "--json"});
    ASSERT_EQ(exact.status, 0) << exact.err;
    const std::string log = contentsOf("strategies/small/convergence.jsonl");
    const auto line = nlohmann::json::parse(log.substr(log.rfind('\n', log.size() - 2) + 1));
    const auto same = [&](const char* member, const char* figure) {
        const double gains = exact.json()[figure]["gains"].get<double>();
        EXPECT_NEAR(line[member].get<double>(), gains * 1000 / 10 / 2, 1.0) << figure;
        EXPECT_GT(std::abs(gains), 0.1);
    };
    same("exploitability", "crossed");
    same("afterFlop", "afterFlop");
    same("biased", "biased");
    EXPECT_EQ(line["flops"], 2);
    EXPECT_EQ(line["exploitability"], logged["points"][0]["value"]);
    EXPECT_EQ(line["interval95"], logged["points"][0]["interval95"]);

    EXPECT_EQ(usageError({"--measure", "3"}),
              "tamarin: --measure: flops are drawn in pairs; give an even number; try 'tamarin "
              "train --help'\n");
    const ToolboxRun without = callTamarin({"train", "kuhn.limit.3p.game", "--measure", "2"});
    EXPECT_EQ(without.status, 2);
    EXPECT_NE(without.err.find("only training over a card abstraction"), std::string::npos);
}

TEST_F(BlueprintTraining, BlueprintsAreMeasuredInTheRealGame) {
    ASSERT_EQ(train({"--iterations", "3", "--quiet"}).status, 0);
    const std::vector<std::string> measure{"exploit", "small.game", "--real", "--blueprint",
                                           blueprint, "--flop",     "2c7dKh", "--quiet"};
    const ToolboxRun ran = callTamarin(measure);
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_NE(ran.out.find(blueprint + " (few, 3 steps) in the real game, one named flop"),
              std::string::npos)
        << ran.out;
    EXPECT_TRUE(fs::exists(blueprint + ".flops"));
    fs::resize_file(blueprint, fs::file_size(blueprint) - 1);
    const ToolboxRun cut = callTamarin(measure);
    EXPECT_EQ(cut.status, 1);
    EXPECT_NE(cut.err.find(blueprint + ": damaged or cut short"), std::string::npos) << cut.err;
}

} // namespace
} // namespace tamarin::test
