// EquityTables::loadForPlay.
#include "abstraction/EquityTables.h"
#include "abstraction/sparse_tables.h"

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using PlayTables = PlayingDirectory;

// The files of players 2 to most.
void writeFor(int most) {
    for (int players = 2; players <= most; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const size_t size = roundSizes[static_cast<size_t>(round)];
            writeSparse<double>(equityPath(players, round), size, {0.5, 0.1 * players});
            for (int seat = 0; seat < players; ++seat)
                writeSparse<uint8_t>(holdemPath(players, round, seat), size,
                                     {1, static_cast<uint8_t>(players + seat)});
        }
}

std::string outputOf(EquityTables& tables, int players) {
    ::testing::internal::CaptureStdout();
    tables.loadForPlay(players);
    return ::testing::internal::GetCapturedStdout();
}

std::string linesFor(int most) {
    std::string lines =
        "pre-flop size: 169\nflop size: 1286792\nturn size: 13960050\nriver size: 123156254\n"
        "Equity tables loaded from file!\nCalculating max and min equities\n";
    for (int players = 2; players <= most; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat)
                lines += "Loading table " + holdemPath(players, round, seat) + "!\n";
    return lines;
}

std::set<std::string> filesThere() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("lookup"))
        names.insert(entry.path().string());
    return names;
}

// With every file there it says what load() and loadHoldemTables() say.
TEST_F(PlayTables, AreLoadedWithTheLinesOfAlways) {
    writeFor(3);
    for (const int players : {2, 3}) {
        EquityTables tables;
        EXPECT_EQ(outputOf(tables, players), linesFor(3));
        EXPECT_EQ(tables.getEquityTable(3, 3)[1], 0.1 * 3);
        EXPECT_EQ(tables.getHoldemTable(3, 3, 2)[1], 5);
    }
    EquityTables tables;
    ::testing::internal::CaptureStdout();
    tables.load();
    tables.loadHoldemTables();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), linesFor(3));
}

TEST_F(PlayTables, OfThreePlayersAreLeftAloneWhereTwoPlay) {
    writeFor(2);
    writeSparse<uint8_t>(holdemPath(3, 1, 0), 5); // of the wrong size, and nobody's concern
    const auto before = filesThere();
    EquityTables tables;
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(outputOf(tables, 2), linesFor(2));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(filesThere(), before);
    for (int round = 0; round < holdemRounds; ++round) {
        EXPECT_EQ(tables.getEquityTable(2, round)[1], 0.1 * 2);
        EXPECT_EQ(tables.getHoldemTable(2, round, 0)[1], 2);
        EXPECT_EQ(tables.getHoldemTable(2, round, 1)[1], 3);
        EXPECT_EQ(tables.getEquityTable(3, round), nullptr);
        EXPECT_EQ(tables.getHoldemTable(3, round, 0), nullptr);
    }
}

// Nothing is computed, and nothing stands for a table that play reads.
TEST_F(PlayTables, ThatAreNeededMustBeThere) {
    writeFor(2);
    const auto errorOf = [](int players) -> std::string {
        EquityTables tables;
        ::testing::internal::CaptureStdout();
        std::string error;
        try {
            tables.loadForPlay(players);
        } catch (const std::runtime_error& thrown) {
            error = thrown.what();
        }
        ::testing::internal::GetCapturedStdout();
        return error;
    };
    EXPECT_EQ(errorOf(3), "lookup/preflop_3p is missing: make it with 'tamarin tables'");
    std::filesystem::remove(holdemPath(2, 3, 1));
    EXPECT_EQ(errorOf(2), "lookup/holdem_river_2p_1 is missing: make it with 'tamarin tables'");
}

// Zeros once stood for it, and every hand was played as the weakest.
TEST_F(PlayTables, ThatAreNeededMustBeReadable) {
    writeFor(3);
    for (const std::string& path : {holdemPath(3, 1, 2), equityPath(3, 2)}) {
        std::filesystem::remove(path);
        std::filesystem::create_directory(path);
        SCOPED_TRACE(path);
        EquityTables three;
        saidDuring([&] {
            const std::string refusal = refusalOf([&] { three.loadForPlay(3); });
            EXPECT_EQ(refusal.find(path), 0U) << refusal;
        });
        EquityTables two;
        saidDuring([&] { EXPECT_EQ(refusalOf([&] { two.loadForPlay(2); }), "not refused"); });
    }
}

} // namespace
} // namespace tamarin::test
