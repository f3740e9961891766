#include "abstraction/EquityTables.h"
#include "abstraction/sparse_tables.h"
#include "eval/seven_card_table.h"
#include "support/rng.h"

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

using EquityLoad = PlayingDirectory;

const char* const sizeLines = "pre-flop size: 169\nflop size: 1286792\nturn size: 13960050\n"
                              "river size: 123156254\n";

std::string loadOutput(EquityTables& tables) {
    ::testing::internal::CaptureStdout();
    tables.load();
    return ::testing::internal::GetCapturedStdout();
}

TEST_F(EquityLoad, ReadsAllEightFiles) {
    writeSparseEquities({0.25, 0.75, 0.5});
    EquityTables tables;
    EXPECT_EQ(loadOutput(tables),
              std::string(sizeLines) +
                  "Equity tables loaded from file!\nCalculating max and min equities\n");
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const double* const table = tables.getEquityTable(players, round);
            ASSERT_NE(table, nullptr);
            EXPECT_EQ(table[1], 0.75);
            EXPECT_EQ(table[roundSizes[static_cast<size_t>(round)] - 1], 0.0);
        }
}

TEST_F(EquityLoad, RangeIsTheTablesLeastAndGreatest) {
    writeSparseEquities({0.25, 0.75, 0.5});
    EquityTables tables;
    loadOutput(tables);
    EXPECT_EQ(tables.clusterToEquity(0, 2, 0), 0.0);
    EXPECT_EQ(tables.clusterToEquity(100, 2, 0), 0.75);
    EXPECT_EQ(tables.clusterToEquity(100, 3, 1), 0.75);
}

TEST_F(EquityLoad, FileOfTheWrongSizeIsSetAsideAndRebuilt) {
    writeSparseEquities({0.25, 0.75});
    std::filesystem::resize_file("lookup/preflop_3p", 100);
    EquityTables tables;
    ::testing::internal::CaptureStderr();
    const std::string output = loadOutput(tables);
    const std::string errors = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(errors.find("ERROR: lookup/preflop_3p has 100 bytes, not 1352: rebuilding it\n"),
              std::string::npos);
    EXPECT_EQ(std::filesystem::file_size("lookup/preflop_3p.bad"), 100U);
    EXPECT_EQ(std::filesystem::file_size("lookup/preflop_3p"), 1352U);
    EXPECT_NE(output.find("Generating equity lookup tables...\nLoading twoplustwo table... done!\n"
                          "Indexing pre-flop hands...\n0% done\n5.91716% done\n"),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("94.6746% done\n100% done!\nSaving tables to files...\ndone!\n"),
              std::string::npos)
        << output;
    EXPECT_EQ(output.find("Indexing flop"), std::string::npos);

    // Sampled within the error of 1,000 deals (five deviations) of aces' exact equity.
    const RoundIndexer indexer(0);
    const uint8_t aces[] = {48, 49};
    EXPECT_NEAR(tables.getEquityTable(2, 0)[hand_index_last(indexer.get(), aces)], 0.8493, 0.057);
    // What was there came from its file; the turn's and the river's tables have no contents, so a
    // range asks the file.
    EXPECT_EQ(tables.getEquityTable(2, 1)[1], 0.75);
    EXPECT_EQ(tables.clusterToEquity(100, 2, 2), 0.75);
}

TEST_F(EquityLoad, NothingIsDerivedFromATableThatIsNotThere) {
    EquityTables tables;
    EXPECT_THROW(tables.clusterToEquity(0, 2, 1), std::runtime_error);
    ::testing::internal::CaptureStdout();
    EXPECT_THROW(tables.loadCluster(), std::runtime_error);
    EXPECT_THROW(tables.loadHoldemTables(), std::runtime_error);
    ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(std::filesystem::is_empty("lookup"));
}

} // namespace
} // namespace tamarin::testing
