// What verify and show do with blueprints that have a menu, or three seats.
#include "clustering/sparse_abstraction.h"
#include "game/games.h"
#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class MenuBlueprintCommands : public PlayingDirectory {
protected:
    static constexpr const char* noLimit = "strategies/holdem.nolimit.2p/blueprint";
    static constexpr const char* three = "strategies/three/blueprint";

    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("few");
        std::ofstream("pot.menu") << "bets = 1 A, A\n";
        std::ofstream("own.menu") << "bets = A\nopponents = 1\n";
        std::ofstream("three.game")
            << "GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 4\nblind = 5 10 0\n"
               "raiseSize = 10 10 20 20\nfirstPlayer = 3 1 1 1\nmaxRaises = 1 1 0 0\n"
               "numSuits = 4\nnumRanks = 13\nnumHoleCards = 2\nnumBoardCards = 0 3 1 1\n"
               "END GAMEDEF\n";
    }
    static void train(std::vector<std::string> what) {
        what.insert(what.begin(), "train");
        what.insert(what.end(), {"--cards", "few", "--iterations", "64", "--quiet"});
        const ToolboxRun ran = callTamarin(what);
        ASSERT_EQ(ran.status, 0) << ran.err;
    }
    static void trainNoLimit() {
        train({"holdem.nolimit.2p.reverse_blinds.game", "--menu", "pot.menu"});
    }
    static nlohmann::json verified(const std::string& path, int status) {
        const ToolboxRun ran = callTamarin({"verify", "--json", "--quiet"});
        EXPECT_EQ(ran.status, status) << ran.err;
        const auto json = ran.json();
        for (const auto& file : json["strategies"])
            if (std::string(file["file"]).ends_with(path))
                return file;
        return {};
    }
};

TEST_F(MenuBlueprintCommands, VerifySaysWhetherTheyAreSound) {
    trainNoLimit();
    train({"three.game"});
    EXPECT_EQ(verified(noLimit, 0)["result"],
              "good, as the manifest says; sound, holdem.nolimit.2p.reverse_blinds.game over few, "
              "64 iterations with seed 1");
    EXPECT_EQ(verified(three, 0)["result"],
              "good, as the manifest says; sound, three.game over few, 64 iterations with seed 1");
    std::fstream file(noLimit, std::ios::binary | std::ios::in | std::ios::out);
    file.seekg(-1, std::ios::end);
    const auto byte = static_cast<char>(file.get() ^ 1);
    file.seekp(-1, std::ios::end);
    file.put(byte);
    file.close();
    const auto damaged = verified(noLimit, 1);
    EXPECT_EQ(damaged["good"], false);
    EXPECT_EQ(damaged["result"], "damaged, block 1 of 1 does not fit its checksum");
    EXPECT_EQ(verified(three, 1)["good"], true);
}

TEST_F(MenuBlueprintCommands, ShowWalksATreeWithSizes) {
    trainNoLimit();
    const ToolboxRun ran = callTamarin({"show", noLimit});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_TRUE(ran.out.starts_with(std::string(noLimit) +
                                    ": holdem.nolimit.2p.reverse_blinds.game over few, 64 "
                                    "iterations with seed 1, "))
        << ran.out;
    EXPECT_NE(ran.out.find("\nbets = 1 A, A\n\nseat 1 before the flop, first to act\n"),
              std::string::npos)
        << ran.out;
    EXPECT_NE(ran.out.find("  raise 300, 1 pot "), std::string::npos) << ran.out;
    const auto json = callTamarin({"show", "holdem.nolimit.2p.reverse_blinds.game", "--actions",
                                   "r300c/c", "--board", "AsKd7c", "--json"})
                          .json();
    EXPECT_EQ(json["menu"], "bets = 1 A, A\n");
    EXPECT_FALSE(json.contains("seat"));
    EXPECT_EQ(json["decision"]["actions"], "r300c/c");
    EXPECT_EQ(json["decision"]["seat"], 1);
    EXPECT_EQ(json["decision"]["hands"].size(), 1176U);
    EXPECT_EQ(json["decision"]["sizes"]["raise 900"]["pots"], 1.0);
    const ToolboxRun other = callTamarin({"show", noLimit, "--actions", "r250"});
    EXPECT_EQ(other.status, 2);
    EXPECT_NE(other.err.find("none that the blueprint has there: f, c, r300, r20000"),
              std::string::npos)
        << other.err;
}

TEST_F(MenuBlueprintCommands, ShowKnowsSeatsOfTheirOwnAndThreeSeats) {
    train({"holdem.nolimit.2p.reverse_blinds.game", "--menu", "own.menu", "--seat", "1"});
    EXPECT_EQ(callTamarin({"show", noLimit, "--json"}).json()["seat"], 1);
    EXPECT_NE(callTamarin({"show", noLimit}).out.find("\nopponents = 1\nfor seat 1\n"),
              std::string::npos);
    train({"three.game"});
    const auto json =
        callTamarin({"show", three, "--actions", "fcc/r", "--board", "AsKd7c", "--json"}).json();
    EXPECT_FALSE(json.contains("menu"));
    EXPECT_EQ(json["decision"]["seat"], 1);
    EXPECT_EQ(json["decision"]["strategy"].size(), 2U) << "one raise a round";
    EXPECT_FALSE(json["decision"].contains("sizes"));
    EXPECT_EQ(callTamarin({"show", three, "--actions", "rr"}).status, 2);
}

} // namespace
} // namespace tamarin::test
