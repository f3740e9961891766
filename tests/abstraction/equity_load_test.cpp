#include "abstraction/EquityTables.h"
#include "abstraction/refused_moves.h"
#include "abstraction/sparse_tables.h"
#include "eval/hand_table.h"
#include "eval/seven_card_table.h"
#include "support/rng.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
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
    // Both of the round's files are written, not the missing one alone.
    EXPECT_EQ(readWhole<double>(equityPath(2, 0)), copyOf(tables.getEquityTable(2, 0), 169));
    // What was there came from its file; the turn's and the river's tables have no contents, so a
    // range asks the file.
    EXPECT_EQ(tables.getEquityTable(2, 1)[1], 0.75);
    EXPECT_EQ(tables.clusterToEquity(100, 2, 2), 0.75);
}

TEST_F(EquityLoad, EachTableComesFromItsOwnFile) {
    writeSmallEquities();
    SmallTables tables;
    const Said said = saidDuring([&] { tables.load(); });
    EXPECT_EQ(said.output,
              "pre-flop size: 169\nflop size: 1009\nturn size: 1006\nriver size: 1003\n"
              "Equity tables loaded from file!\nCalculating max and min equities\n");
    EXPECT_EQ(said.errors, "");
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const std::vector<double> right = smallEquities(players, round);
            EXPECT_EQ(copyOf(tables.getEquityTable(players, round), right.size()), right);
            const auto [least, greatest] = std::ranges::minmax(right);
            EXPECT_EQ(tables.clusterToEquity(0, players, round), least);
            EXPECT_DOUBLE_EQ(tables.clusterToEquity(100, players, round), greatest);
        }
}

// Does something the moment a round's sampling begins, and keeps what is printed.
class OnSampling : public std::stringbuf {
public:
    explicit OnSampling(std::function<void(int round)> action)
        : action_(std::move(action)), before_(std::cout.rdbuf(this)) {}
    ~OnSampling() override { std::cout.rdbuf(before_); }

protected:
    int sync() override {
        for (int round = 0; round < holdemRounds; ++round) {
            bool& begun = begun_[static_cast<size_t>(round)];
            if (!begun &&
                str().find("Indexing " + std::string(roundNames[static_cast<size_t>(round)])) !=
                    std::string::npos) {
                begun = true;
                action_(round);
            }
        }
        return 0;
    }

private:
    std::function<void(int)> action_;
    std::streambuf* before_;
    std::array<bool, holdemRounds> begun_{};
};

// The first hands draw by draw, and all the lines.
TEST_F(EquityLoad, SamplesBothTablesOfARoundThatLacksOne) {
    using Evaluate = double (*)(unsigned char*, unsigned int, int*);
    constexpr std::array<Evaluate, holdemRounds> evaluators{evaluateHand2, evaluateHand5,
                                                            evaluateHand6, evaluateHand7};
    writeSmallEquities();
    for (int round = 0; round < holdemRounds; ++round)
        std::filesystem::remove(equityPath(round % 2 == 0 ? 2 : 3, round));
    SmallTables tables;
    std::string output;
    {
        OnSampling seeds([](int round) { global_urng().seed(static_cast<unsigned>(31 + round)); });
        tables.load();
        output = seeds.str();
    }
    EXPECT_NE(output.find("Generating equity lookup tables...\n"
                          "Loading twoplustwo table... done!\n"
                          "Indexing pre-flop hands...\n0% done\n5.91716% done\n"),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("94.6746% done\n100% done!\nSaving tables to files...\ndone!\n"
                          "Indexing flop hands...\n0% done\n99.108% done\n100% done!\n"
                          "100% done!\nSaving tables to files...\ndone!\n"
                          "Indexing turn hands...\n0% done\n99.4036% done\n100% done!\n"
                          "100% done!\nSaving tables to files...\ndone!\n"
                          "Indexing river hands...\n0% done\n99.7009% done\n100% done!\n"
                          "100% done!\nSaving tables to files...\ndone!\n"),
              std::string::npos)
        << output;
    const SevenCardTable sevenCards = SevenCardTable::generate();
    int* const table = const_cast<int*>(sevenCards.data()); // only read
    for (int round = 0; round < holdemRounds; ++round) {
        const auto r = static_cast<size_t>(round);
        std::vector<double> sampled[2];
        for (int players = 2; players <= 3; ++players) {
            sampled[players - 2] = readWhole<double>(equityPath(players, round));
            ASSERT_EQ(sampled[players - 2].size(), smallSizes[r]);
            EXPECT_EQ(copyOf(tables.getEquityTable(players, round), smallSizes[r]),
                      sampled[players - 2]);
        }
        global_urng().seed(static_cast<unsigned>(31 + round));
        for (size_t i = 0; i < 20; ++i) {
            unsigned char hand[7];
            ASSERT_TRUE(hand_unindex(tables.indexer(round), round == 0 ? 0 : 1, i, hand));
            EXPECT_EQ(sampled[0][i], evaluators[r](hand, 2, table)) << round << ' ' << i;
            EXPECT_EQ(sampled[1][i], evaluators[r](hand, 3, table)) << round << ' ' << i;
        }
    }
}

TEST_F(EquityLoad, LeavesTurnAndRiverEmptyWhereAnotherRoundIsSampled) {
    writeSmallEquities();
    std::filesystem::remove(equityPath(2, 0));
    SmallTables tables;
    saidDuring([&] { tables.load(); });
    for (int players = 2; players <= 3; ++players)
        for (int round = 1; round < holdemRounds; ++round) {
            const std::vector<double> right = smallEquities(players, round);
            const auto table = copyOf(tables.getEquityTable(players, round), right.size());
            EXPECT_EQ(table == right, round == 1) << players << ' ' << round;
            EXPECT_EQ(readWhole<double>(equityPath(players, round)), right);
        }
}

// The pointer was once freed when a range was asked for.
TEST_F(EquityLoad, ATableThatWasHandedOutStaysUntilFree) {
    writeSmallEquities();
    std::filesystem::remove(equityPath(2, 0));
    SmallTables tables;
    saidDuring([&] { tables.load(); });
    double* const handedOut = tables.getEquityTable(3, 2);
    for (size_t i = 0; i < smallSizes[2]; ++i)
        handedOut[i] = 0.5;
    const std::vector<double> right = smallEquities(3, 2);
    EXPECT_EQ(tables.clusterToEquity(0, 3, 2), *std::ranges::min_element(right));
    EXPECT_EQ(copyOf(tables.getEquityTable(3, 2), right.size()), right);
    EXPECT_EQ(copyOf(handedOut, smallSizes[2]), std::vector<double>(smallSizes[2], 0.5));
    tables.free();
}

// It was once loaded after all.
TEST_F(EquityLoad, FileOfTheWrongSizeIsNotUsedWhereItCannotBeMoved) {
    writeSmallEquities();
    const std::string path = equityPath(2, 1);
    std::filesystem::resize_file(path, 80);
    const RefusedMoves refused;
    SmallTables tables;
    const Said said = saidDuring([&] { tables.load(); });
    EXPECT_EQ(said.errors.find("ERROR: lookup/flop_2p has 80 bytes, not 8072: rebuilding it\n"
                               "WARNING: lookup/flop_2p"),
              0U)
        << said.errors;
    EXPECT_NE(said.output.find("Indexing flop hands...\n"), std::string::npos) << said.output;
    EXPECT_EQ(std::filesystem::file_size(path), 8072U);
    const auto table = copyOf(tables.getEquityTable(2, 1), smallSizes[1]);
    EXPECT_EQ(readWhole<double>(path), table);
    EXPECT_NE(table[0], smallEquities(2, 1)[0]);
}

// An index that shrinks under way, which nothing but memory gone bad does.
void loadWithAShrinkingIndexer(int round) {
    writeSmallEquities();
    for (int players = 2; players <= 3; ++players)
        std::filesystem::remove(equityPath(players, round));
    SmallTables tables;
    const OnSampling shrinks(
        [&](int begun) { tables.indexer(begun)->round_size[begun == 0 ? 0 : 1] = 5; });
    tables.load();
}

using EquityLoadDeathTest = EquityLoad;
TEST_F(EquityLoadDeathTest, AHandThatCannotBeUnindexedEndsTheProgram) {
    ASSERT_TRUE(SevenCardTable::generate().save(sevenCardTablePath).ok());
    const std::string place =
        "EquityTables\\.cpp:[0-9]+: void EquityTables::load\\(\\): Assertion `";
    EXPECT_DEATH(loadWithAShrinkingIndexer(0),
                 place + "hand_unindex\\(&preflop_indexer,0,index,hand\\)'");
    EXPECT_DEATH(loadWithAShrinkingIndexer(1),
                 place + "hand_unindex\\(&flop_indexer,1,index,hand\\)'");
    EXPECT_DEATH(loadWithAShrinkingIndexer(2),
                 place + "hand_unindex\\(&turn_indexer,1,index,hand\\)'");
    EXPECT_DEATH(loadWithAShrinkingIndexer(3),
                 place + "hand_unindex\\(&river_indexer,1,index,hand\\)'");
}

TEST_F(EquityLoad, NothingIsDerivedFromADamagedTable) {
    writeSmallEquities();
    std::vector<double> damaged = smallEquities(2, 0);
    damaged[3] = std::numeric_limits<double>::quiet_NaN();
    writeWhole(equityPath(2, 0), damaged);
    SmallTables tables;
    saidDuring([&] { tables.load(); });
    const std::string expected = "lookup/preflop_2p holds equity nan at hand 3 (byte 24), not "
                                 "0..1: nothing is made from it; "
                                 "'tamarin tables' makes the file anew";
    EXPECT_EQ(refusalOf([&] { tables.clusterToEquity(0, 2, 0); }), expected);
    saidDuring([&] { EXPECT_EQ(refusalOf([&] { tables.loadCluster(); }), expected); });
    EXPECT_FALSE(std::filesystem::exists(clusterPath(2, 0)));
    // The other tables are as good as ever.
    EXPECT_GT(tables.clusterToEquity(100, 3, 0), 0.7);

    auto* const set = new double[roundSizes[0]]();
    tables.setEquityTable(3, 0, set);
    EXPECT_EQ(
        refusalOf([&] { tables.equityToCluster(0.5, 3, 0); }),
        "the table set for lookup/preflop_3p holds nothing but equity 0: nothing is made from "
        "it; 'tamarin tables' makes the file anew");
}

TEST_F(EquityLoad, NothingIsDerivedFromAFileThatCannotBeRead) {
    writeSmallEquities();
    std::filesystem::remove(equityPath(3, 1));
    std::filesystem::create_directory(equityPath(3, 1));
    SmallTables tables;
    const Said said = saidDuring([&] { tables.load(); });
    EXPECT_EQ(
        said.errors.find("WARNING: could not read lookup/flop_3p: Is a directory: the table is "
                         "all zeros\n"),
        0U)
        << said.errors;
    EXPECT_EQ(tables.getEquityTable(3, 1)[7], 0);
    const std::string refusal = refusalOf([&] { tables.clusterToEquity(0, 3, 1); });
    EXPECT_EQ(refusal.find("lookup/flop_3p"), 0U) << refusal;
    EXPECT_NE(refusal.find(": nothing is made from it"), std::string::npos) << refusal;
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
} // namespace tamarin::test
