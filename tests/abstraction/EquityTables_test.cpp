#include "abstraction/EquityTables.h"

#include "abstraction/sparse_tables.h"
#include "support/tree_paths.h"

#include <algorithm>
#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

static_assert(std::has_virtual_destructor_v<EquityTables>);

TEST(EquityTablesObject, SaysThatItCreatesIndexers) {
    ::testing::internal::CaptureStdout();
    EquityTables tables;
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Creating indexers... done!\n");
}

TEST(EquityTablesObject, KnowsItsRounds) {
    EquityTables tables;
    for (int round = 0; round < holdemRounds; ++round)
        EXPECT_EQ(tables.getRoundSize(round), roundSizes[static_cast<size_t>(round)]);
    EXPECT_EQ(tables.getRoundSize(4), 0U);
    EXPECT_EQ(tables.getRoundSize(-1), 0U);
}

TEST(EquityTablesObject, StartsWithoutTables) {
    EquityTables tables;
    for (int players = 0; players <= 4; ++players)
        for (int round = -1; round <= 4; ++round) {
            EXPECT_EQ(tables.getEquityTable(players, round), nullptr);
            EXPECT_EQ(tables.getClusterTable(players, round), nullptr);
            EXPECT_EQ(tables.getHoldemTable(players, round, 0), nullptr);
            EXPECT_EQ(tables.getUtilityTable(players, round, 0), nullptr);
        }
}

TEST(EquityTablesObject, SettersKeepThePointerAndIgnoreOtherPairs) {
    EquityTables tables;
    auto* const equities = new double[roundSizes[0]]();
    unsigned char clusters[1] = {};
    tables.setEquityTable(3, 0, equities);
    tables.setClusterTable(2, 1, clusters);
    tables.setEquityTable(4, 0, nullptr);
    tables.setEquityTable(2, 4, nullptr);
    tables.setClusterTable(1, 0, nullptr);
    EXPECT_EQ(tables.getEquityTable(3, 0), equities);
    EXPECT_EQ(tables.getClusterTable(2, 1), clusters);
    tables.free(); // releases equities
    EXPECT_EQ(tables.getEquityTable(3, 0), nullptr);
    EXPECT_EQ(tables.getClusterTable(2, 1), clusters);
}

// Two playing directories below the working one, which has no tables of its own. Those of a
// directory are the small ones turned by so many hands.
class InTwoDirectories : public PlayingDirectory,
                         public ::testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        std::filesystem::remove("lookup");
        for (const char* const name : {"one", "two"})
            std::filesystem::create_directories(std::string(name) + "/lookup");
    }
    void TearDown() override {
        EXPECT_FALSE(std::filesystem::exists("lookup"));
        PlayingDirectory::TearDown();
    }

    template <class T>
    static std::vector<T> turned(std::vector<T> table, int by) {
        std::rotate(table.begin(), table.begin() + by, table.end());
        return table;
    }
    static void writeAll(const std::string& directory, int by) {
        const auto write = [&](const std::string& name, const auto& table) {
            writeWhole(inDirectory(directory, name), turned(table, by));
        };
        for (int round = 0; round < holdemRounds; ++round) {
            for (int players = 2; players <= 3; ++players) {
                write(equityPath(players, round), smallEquities(players, round));
                write(clusterPath(players, round), smallBytes(players, round, 8, 100));
                for (int seat = 0; seat < players; ++seat)
                    write(holdemPath(players, round, seat), smallBytes(players, round, seat, 9));
            }
            for (int seat = 0; seat < 2; ++seat)
                write(utilityPath(2, round, seat), smallUtilities(round, seat));
        }
    }
    static void expectAll(EquityTables& tables, int by) {
        for (int players = 2; players <= 3; ++players)
            for (int round = 0; round < holdemRounds; ++round) {
                const size_t size = tables.getRoundSize(round);
                EXPECT_EQ(copyOf(tables.getEquityTable(players, round), size),
                          turned(smallEquities(players, round), by));
                EXPECT_EQ(copyOf(tables.getClusterTable(players, round), size),
                          turned(smallBytes(players, round, 8, 100), by));
                for (int seat = 0; seat < players; ++seat)
                    EXPECT_EQ(copyOf(tables.getHoldemTable(players, round, seat), size),
                              turned(smallBytes(players, round, seat, 9), by));
            }
    }
    // With the slash or without; what is said of files has one slash either way.
    static std::string given(const char* name) { return std::string(name) + GetParam(); }
};
INSTANTIATE_TEST_SUITE_P(Slash, InTwoDirectories, ::testing::Values("", "/"));

TEST_P(InTwoDirectories, EachHasItsOwnTablesAndMessages) {
    writeAll("one", 3);
    writeAll("two", 5);
    const Said said = saidDuring([] {
        std::ostringstream saidOne;
        std::ostringstream saidTwo;
        SmallTables one(given("one"), saidOne);
        SmallTables two(given("two"), saidTwo);
        EXPECT_EQ(saidOne.str(), "Creating indexers... done!\n");
        one.load();
        two.load();
        two.loadCluster();
        one.loadCluster();
        one.loadHoldemTables();
        two.loadHoldemTables();
        expectAll(one, 3);
        expectAll(two, 5);
        std::string expected = "Creating indexers... done!\n";
        const std::string sizes =
            "pre-flop size: 169\nflop size: 1009\nturn size: 1006\nriver size: 1003\n";
        expected += sizes + "Equity tables loaded from file!\nCalculating max and min equities\n" +
                    sizes + "loading clusters...\nCluster tables loaded from file!\n";
        std::string expectedTwo = expected;
        for (int players = 2; players <= 3; ++players)
            for (int round = 0; round < holdemRounds; ++round)
                for (int seat = 0; seat < players; ++seat) {
                    const std::string line = holdemPath(players, round, seat) + "!\n";
                    expected += "Loading table one/" + line;
                    expectedTwo += "Loading table two/" + line;
                }
        EXPECT_EQ(saidOne.str(), expected);
        EXPECT_EQ(saidTwo.str(), expectedTwo);
    });
    EXPECT_EQ(said.output, "");
    EXPECT_EQ(said.errors, "");
}

TEST_P(InTwoDirectories, PlayTakesItsOwn) {
    writeAll("one", 3);
    writeAll("two", 5);
    std::ostringstream messages;
    const Said said = saidDuring([&] {
        SmallTables one(given("one"), messages);
        SmallTables two(given("two"), messages);
        two.loadForPlay(3);
        one.loadForPlay(3);
        one.loadCluster();
        two.loadCluster();
        expectAll(one, 3);
        expectAll(two, 5);
    });
    EXPECT_EQ(said.output + said.errors, "");
    EXPECT_NE(messages.str().find("Loading table two/lookup/holdem_river_3p_2!\n"),
              std::string::npos);
}

TEST_P(InTwoDirectories, WhatIsMissingIsMadeThere) {
    const auto inTwo = [](const std::string& name) { return inDirectory("two", name); };
    writeAll("two", 5);
    for (int players = 2; players <= 3; ++players) {
        std::filesystem::remove(inTwo(equityPath(players, 0)));
        std::filesystem::remove(inTwo(clusterPath(players, 1)));
        std::filesystem::remove(inTwo(holdemPath(players, 2, 1)));
    }
    std::ostringstream messages;
    SmallTables two(given("two"), messages);
    const Said said = saidDuring([&] {
        two.load();
        for (int players = 2; players <= 3; ++players)
            EXPECT_EQ(copyOf(two.getEquityTable(players, 1), smallSizes[1]),
                      turned(smallEquities(players, 1), 5));
        two.loadCluster();
        two.loadHoldemTables();
    });
    EXPECT_EQ(said.output, "");
    EXPECT_EQ(said.errors.find("WARNING: two/lookup/tpt: could not open: "), 0U) << said.errors;
    for (const char* const text :
         {"Loading twoplustwo table... done!\nIndexing pre-flop hands...\n0% done\n",
          "94.6746% done\n100% done!\nSaving tables to files...\ndone!\n",
          "generating flop clusters 3p\n",
          "File two/lookup/holdem_turn_3p_1 is missing!\nComputing hsut for 3 players"})
        EXPECT_NE(messages.str().find(text), std::string::npos) << text << messages.str();
    for (int players = 2; players <= 3; ++players) {
        EXPECT_EQ(readWhole<double>(inTwo(equityPath(players, 0))),
                  copyOf(two.getEquityTable(players, 0), 169));
        EXPECT_EQ(readWhole<uint8_t>(inTwo(clusterPath(players, 1))),
                  copyOf(two.getClusterTable(players, 1), smallSizes[1]));
        const auto utilities = turned(smallUtilities(2, 1), 5);
        const auto equities = turned(smallEquities(players, 2), 5);
        std::vector<uint8_t> right(smallSizes[2]);
        holdemBucketsOf(utilities, rangeOf(utilities), equities, rangeOf(equities), right.data());
        EXPECT_EQ(readWhole<uint8_t>(inTwo(holdemPath(players, 2, 1))), right);
    }
    EXPECT_TRUE(std::filesystem::is_empty("one/lookup"));
}

TEST_P(InTwoDirectories, ErrorsNameTheWholePath) {
    writeAll("one", 3);
    std::ostringstream messages;
    SmallTables one(given("one"), messages);
    SmallTables two(given("two"), messages);
    const Said said = saidDuring([&] {
        EXPECT_EQ(refusalOf([&] { two.loadForPlay(2); }),
                  "two/lookup/preflop_2p is missing: make it with 'tamarin tables'");
        EXPECT_EQ(refusalOf([&] { two.requireHoldemTables(); }),
                  "two/lookup/holdem_preflop_2p_0 is missing: make it with 'tamarin tables', or "
                  "call loadHoldemTables()");
        EXPECT_EQ(refusalOf([&] { two.clusterToEquity(1, 3, 2); }),
                  "two/lookup/turn_3p is missing: make it with 'tamarin tables', or call load()");
        EXPECT_EQ(refusalOf([&] { two.loadHoldemTables(); }),
                  "two/lookup/utility_preflop_2p_0 is missing: make it with 'tamarin tables', or "
                  "call loadUtility()");
        EXPECT_EQ(refusalOf([&] { one.requireHoldemTables(); }), "not refused");
        writeWhole("one/lookup/holdem_flop_3p_2", std::vector<uint8_t>(smallSizes[1], 200));
        SmallTables again(given("one"), messages);
        EXPECT_EQ(refusalOf([&] { again.requireHoldemTables(); }),
                  "one/lookup/holdem_flop_3p_2 holds bucket 200 at hand 0 (byte 0), not 0..9: "
                  "nothing is made from it; 'tamarin tables' makes the file anew");
        EXPECT_EQ(refusalOf([&] { again.requireHoldemTables(2); }), "not refused");
        std::filesystem::resize_file("one/lookup/flop_2p_c", 5);
        again.loadCluster();
    });
    EXPECT_EQ(said.errors, "ERROR: one/lookup/flop_2p_c has 5 bytes, not 1009: rebuilding it\n");
    EXPECT_TRUE(std::filesystem::exists("one/lookup/flop_2p_c.bad"));
}

TEST(LoadGameDeathTest, EndsTheProgramWithoutAGame) {
    EXPECT_EXIT(loadGame("no/such.game"), ::testing::ExitedWithCode(1),
                "ERROR: could not open game no/such.game\n");
    EXPECT_EXIT(loadGame("/dev/null"), ::testing::ExitedWithCode(1),
                "ERROR: could not read game /dev/null\n");
}

TEST(LoadGame, ReadsADefinition) {
    const GamePtr game(loadGame(test::inTree("games/kuhn.limit.3p.game").c_str()));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->numPlayers, 3);
}

} // namespace
} // namespace tamarin::test
