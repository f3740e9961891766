#include "toolbox/sampled_training.h"

#include "clustering/sparse_abstraction.h"
#include "game/games.h"
#include "sampling/menu_blueprint.h"
#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

// A playing directory with a card abstraction of a few buckets, menus, and limit hold'em for three
// with little betting.
class SampledTraining : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("few");
        std::ofstream("pot.menu") << "bets = 1 A, A\n";
        std::ofstream("own.menu") << "bets = A\nopponents = 1\n";
        std::ofstream("bad.menu") << "bets = 1\nbets = 2p\n";
        std::ofstream("three.game")
            << "GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 4\nblind = 5 10 0\n"
               "raiseSize = 10 10 20 20\nfirstPlayer = 3 1 1 1\nmaxRaises = 1 1 0 0\n"
               "numSuits = 4\nnumRanks = 13\nnumHoleCards = 2\nnumBoardCards = 0 3 1 1\n"
               "END GAMEDEF\n";
    }
    static ToolboxRun train(std::vector<std::string> more, const std::string& menu = "pot.menu") {
        more.insert(more.begin(), {"train", "holdem.nolimit.2p.reverse_blinds.game", "--cards",
                                   "few", "--menu", menu});
        return callTamarin(more);
    }
};

TEST_F(SampledTraining, WritesWhatItSays) {
    const ToolboxRun ran = train({"--iterations", "100", "--quiet", "--json"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.err, "");
    const auto json = ran.json();
    EXPECT_EQ(json["iteration"], 128); // whole batches
    EXPECT_EQ(json["cards"], "few");
    EXPECT_EQ(json["menu"], "bets = 1 A, A\n");
    const std::string path = json["blueprint"];
    EXPECT_EQ(json["bytes"], fs::file_size(path));
    EXPECT_GT(json["averageRegret"], 0.0);
    EXPECT_TRUE(fs::exists(path + ".checkpoint"));
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const auto file = MenuBlueprint::open(path, *game);
    ASSERT_TRUE(file.ok()) << file.error();
    EXPECT_EQ(file->tree().nodes().size(), json["decisionNodes"]);
    EXPECT_EQ(file->origin().training.steps, 128U);
    const auto abstraction = CardAbstraction::open(".", "few");
    ASSERT_TRUE(abstraction.ok());
    EXPECT_TRUE(file->madeOver(abstraction->description()).ok());
}

TEST_F(SampledTraining, ResumedItIsAsInOneGo) {
    ASSERT_EQ(train({"--iterations", "192", "--quiet", "--out", "whole"}).status, 0);
    ASSERT_EQ(train({"--iterations", "64", "--quiet", "--out", "parts"}).status, 0);
    EXPECT_NE(contentsOf("whole/blueprint"), contentsOf("parts/blueprint"));
    EXPECT_NE(train({"--iterations", "192", "--out", "parts"}).err.find("--resume goes on from it"),
              std::string::npos);
    const ToolboxRun resumed =
        train({"--iterations", "192", "--resume", "--quiet", "--out", "parts", "--threads", "2"});
    ASSERT_EQ(resumed.status, 0) << resumed.err;
    EXPECT_EQ(contentsOf("whole/blueprint"), contentsOf("parts/blueprint"));
    EXPECT_EQ(contentsOf("whole/blueprint.checkpoint"), contentsOf("parts/blueprint.checkpoint"));
    std::ofstream("pot.menu") << "bets = 1 A\n";
    const ToolboxRun other = train({"--iterations", "256", "--resume", "--out", "parts"});
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.err.find("menu is "), std::string::npos) << other.err;
}

TEST_F(SampledTraining, LimitForThreeNeedsNoMenu) {
    const ToolboxRun ran =
        callTamarin({"train", "three.game", "--cards", "few", "--iterations", "64", "--quiet"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    const GamePtr game = gameFromText(contentsOf("three.game"));
    const auto file = MenuBlueprint::open("strategies/three/blueprint", *game);
    ASSERT_TRUE(file.ok()) << file.error();
    EXPECT_EQ(file->origin().menu, "");
    const ToolboxRun menu =
        callTamarin({"train", "three.game", "--cards", "few", "--menu", "pot.menu"});
    EXPECT_EQ(menu.status, 2);
    EXPECT_NE(callTamarin({"train", "three.game", "--cards", "few", "--measure", "2"})
                  .err.find("--measure: only limit games for two"),
              std::string::npos);
}

TEST_F(SampledTraining, SizesOfOpponentsNeedASeat) {
    EXPECT_NE(train({"--iterations", "64"}, "own.menu").err.find("--seat says whose"),
              std::string::npos);
    EXPECT_NE(train({"--iterations", "64", "--seat", "0"}).err.find("leave --seat out"),
              std::string::npos);
    EXPECT_NE(train({"--seat", "2"}, "own.menu").err.find("seats are 0 to 1"), std::string::npos);
    const ToolboxRun ran =
        train({"--iterations", "64", "--seat", "1", "--out", "one", "--quiet"}, "own.menu");
    ASSERT_EQ(ran.status, 0) << ran.err;
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const auto file = MenuBlueprint::open("one/blueprint", *game);
    ASSERT_TRUE(file.ok()) << file.error();
    EXPECT_EQ(file->origin().ownSeat, 1);
}

TEST_F(SampledTraining, DryRunLeavesNothing) {
    const ToolboxRun ran = train({"--dry-run"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_NE(ran.out.find("decision nodes"), std::string::npos) << ran.out;
    EXPECT_NE(ran.out.find(" deals/s, each walked once a seat"), std::string::npos) << ran.out;
    EXPECT_FALSE(fs::exists("strategies"));
}

TEST_F(SampledTraining, RefusesWhatDoesNotFit) {
    const auto usage = [](std::vector<std::string> more) {
        const ToolboxRun ran = train(std::move(more));
        EXPECT_EQ(ran.status, 2);
        return ran.err;
    };
    EXPECT_NE(usage({"--algorithm", "dcfr"}).find("--algorithm"), std::string::npos);
    EXPECT_NE(usage({"--until-nashconv", "1"}).find("--until-nashconv"), std::string::npos);
    EXPECT_NE(usage({"--sampled-deals", "1"}).find("--sampled-deals"), std::string::npos);
    const ToolboxRun none =
        callTamarin({"train", "holdem.nolimit.2p.reverse_blinds.game", "--cards", "few"});
    EXPECT_EQ(none.status, 2);
    EXPECT_NE(none.err.find("needs a bet menu, such as menus/tiny.menu"), std::string::npos);
    const ToolboxRun noCards =
        callTamarin({"train", "holdem.nolimit.2p.reverse_blinds.game", "--menu", "pot.menu"});
    EXPECT_EQ(noCards.status, 2);
    const ToolboxRun bad = train({}, "bad.menu");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("bad.menu:2: a second line"), std::string::npos) << bad.err;
    EXPECT_EQ(train({}, "missing.menu").status, 1);
}

} // namespace
} // namespace tamarin::test
