#include "abstraction/sparse_tables.h"
#include "solver/auxiliary_fixture.h"
#include "support/rng.h"
#include "support/tree_paths.h"

#include <algorithm>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using UtilityTables = PlayingDirectory;

TEST_F(UtilityTables, EachComesFromItsOwnFile) {
    writeSmallUtilities();
    SmallTables tables;
    const Said said = saidDuring([&] { tables.loadUtility(); });
    EXPECT_EQ(said.errors, "");
    EXPECT_TRUE(CFR::logProgress);
    CFR::logProgress = false;
    std::string expected;
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat) {
            expected += "Loading table " + utilityPath(2, round, seat) + "!\n";
            const std::vector<double> right = smallUtilities(round, seat);
            EXPECT_EQ(copyOf(tables.getUtilityTable(2, round, seat), right.size()), right);
        }
    EXPECT_EQ(said.output, expected);
    EXPECT_EQ(tables.getUtilityTable(3, 0, 0), nullptr);
}

void copyGame(int round) {
    const std::string name = auxiliaryGameName(2, round);
    std::filesystem::copy_file(test::inTree("games/" + name), name,
                               std::filesystem::copy_options::overwrite_existing);
}

TEST_F(UtilityTables, TakeAHundredThousandIterations) {
    EXPECT_EQ(EquityTables().utilityIterations, 100'000U);
}

// The pre-flop ones are computed, from the directory's game and clusters.
TEST_F(UtilityTables, LieInTheDirectoryGiven) {
    std::filesystem::remove("lookup");
    std::filesystem::create_directories("one/lookup");
    const auto inOne = [](const std::string& name) { return inDirectory("one/", name); };
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat)
            writeWhole(inOne(utilityPath(2, round, seat)), smallUtilities(round, seat));
    std::filesystem::remove(inOne(utilityPath(2, 0, 1)));
    writeWhole(inOne(clusterPath(2, 0)), smallBytes(2, 0, 0, 100));
    writeWhole(inOne(equityPath(2, 0)), smallEquities(2, 0));
    std::filesystem::copy_file(test::inTree("games/" + auxiliaryGameName(2, 0)),
                               inOne(auxiliaryGameName(2, 0)));
    std::ostringstream messages;
    SmallTables tables("one", messages);
    tables.utilityIterations = 20;
    const Said said = saidDuring([&] { tables.loadUtility(); });
    CFR::logProgress = false;
    EXPECT_EQ(said.errors, "");
    EXPECT_EQ(said.output.find("Load"), std::string::npos) << said.output; // the solver's alone
    std::string expected = "Creating indexers... done!\n";
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat) {
            const std::string path = "one/" + utilityPath(2, round, seat);
            if (round == 0 && seat == 1)
                expected += "File " + path +
                            " is missing!\nComputing ne for 2 players and round 0\n"
                            "Loading game one/kuhn.preflop.2p.game!\n";
            else
                expected += "Loading table " + path + "!\n";
            const auto table =
                copyOf(tables.getUtilityTable(2, round, seat), tables.getRoundSize(round));
            EXPECT_EQ(table == smallUtilities(round, seat), round != 0);
            EXPECT_EQ(readWhole<double>(path), table);
        }
    EXPECT_EQ(messages.str(), expected);
    EXPECT_FALSE(std::filesystem::exists("lookup"));
}

// The round's game solved and sampled step by step here, from the same draws. Only one seat's file
// is missing; both are made.
class ComputedUtility : public UtilityTables, public ::testing::WithParamInterface<int> {};
TEST_P(ComputedUtility, IsThatOfTheRoundsSolvedGame) {
    const int round = GetParam();
    constexpr unsigned long long iterations = 20;
    for (int r = 0; r < holdemRounds; ++r)
        copyGame(r);
    writeSmallUtilities();
    std::filesystem::remove(utilityPath(2, round, 1));
    QuickTables quick(2, round);
    for (int r = 1; r < holdemRounds; ++r)
        quick.tables.indexer(r)->round_size[1] = smallSizes[static_cast<size_t>(r)];
    const size_t size = smallSizes[static_cast<size_t>(round)];

    std::vector<std::vector<double>> right(2, std::vector<double>(size));
    double* at[] = {right[0].data(), right[1].data()};
    const GamePtr game = auxiliaryGameOf(2, round);
    CFR::logProgress = true;
    global_urng().seed(3);
    const std::string solving =
        saidDuring([&] {
            CFR solver(game.get());
            solver.setEquityTables(&quick.tables);
            solver.trainIS(iterations, quick.tables.indexer(round), round == 0 ? 0 : 1, round);
            solver.fillUtility(at, size, round);
        }).output;
    CFR::logProgress = false;
    const auto drawAfter = global_urng()();
    EXPECT_NE(right[0], right[1]);

    quick.tables.utilityIterations = iterations;
    global_urng().seed(3);
    const Said said = saidDuring([&] { quick.tables.loadUtility(); });
    EXPECT_TRUE(CFR::logProgress);
    CFR::logProgress = false;
    EXPECT_EQ(global_urng()(), drawAfter);
    EXPECT_EQ(said.errors, "");
    std::string expected;
    for (int r = 0; r < holdemRounds; ++r) {
        expected += "Loading table " + utilityPath(2, r, 0) + "!\n";
        expected += r == round ? "File " + utilityPath(2, r, 1) +
                                     " is missing!\nComputing ne for 2 players and round " +
                                     std::to_string(r) + "\nLoading game " +
                                     auxiliaryGameName(2, r) + "!\n" + solving
                               : "Loading table " + utilityPath(2, r, 1) + "!\n";
    }
    // The time that a tenth took is left out.
    const auto timeless = [](const std::string& text) {
        return std::regex_replace(text, std::regex("\\(elapsed.*\\)"), "");
    };
    EXPECT_EQ(timeless(said.output), timeless(expected));
    for (int seat = 0; seat < 2; ++seat) {
        const auto s = static_cast<size_t>(seat);
        EXPECT_EQ(copyOf(quick.tables.getUtilityTable(2, round, seat), size), right[s]);
        EXPECT_EQ(readWhole<double>(utilityPath(2, round, seat)), right[s]);
    }
    for (int seat = 0; seat < 3; ++seat)
        EXPECT_FALSE(std::filesystem::exists(utilityPath(3, round, seat)));
}
INSTANTIATE_TEST_SUITE_P(Rounds, ComputedUtility, ::testing::Range(0, holdemRounds));

// Without loadCluster() it once ended in a null table.
TEST_F(UtilityTables, TakeTheirClustersFromTheFile) {
    copyGame(0);
    writeSmallEquities();
    writeSmallUtilities();
    const auto computed = [](EquityTables& tables) {
        for (int seat = 0; seat < 2; ++seat)
            std::filesystem::remove(utilityPath(2, 0, seat));
        tables.utilityIterations = 20;
        global_urng().seed(8);
        std::string refusal;
        saidDuring([&] { refusal = refusalOf([&] { tables.loadUtility(); }); });
        CFR::logProgress = false;
        return refusal;
    };
    {
        SmallTables tables;
        EXPECT_EQ(computed(tables),
                  "lookup/preflop_2p_c is missing: make it with 'tamarin tables', "
                  "or call loadCluster()");
    }
    writeWhole(clusterPath(2, 0), std::vector<uint8_t>(smallSizes[0], 200));
    {
        SmallTables tables;
        EXPECT_EQ(
            computed(tables),
            "lookup/preflop_2p_c holds cluster 200 at hand 0 (byte 0), not 0..100: nothing is "
            "made from it; 'tamarin tables' makes the file anew");
        EXPECT_FALSE(std::filesystem::exists(utilityPath(2, 0, 0)));
    }
    std::vector<uint8_t> clusters = smallBytes(2, 0, 0, 100);
    writeWhole(clusterPath(2, 0), clusters);
    SmallTables fromFile;
    EXPECT_EQ(computed(fromFile), "not refused");
    const auto made = readWhole<double>(utilityPath(2, 0, 1));
    SmallTables set;
    set.setClusterTable(2, 0, clusters.data());
    EXPECT_EQ(computed(set), "not refused");
    EXPECT_EQ(readWhole<double>(utilityPath(2, 0, 1)), made);
    EXPECT_GT(std::ranges::max(made), 0);
}

TEST_F(UtilityTables, DamagedFilesAreMadeAnew) {
    copyGame(0);
    writeSmallEquities();
    writeSmallUtilities();
    writeWhole(clusterPath(2, 0), smallBytes(2, 0, 0, 100));
    writeWhole(utilityPath(2, 0, 1), std::vector<double>(smallSizes[0]));
    SmallTables tables;
    tables.utilityIterations = 20;
    const Said said = saidDuring([&] { tables.loadUtility(); });
    CFR::logProgress = false;
    EXPECT_EQ(said.errors,
              "ERROR: lookup/utility_preflop_2p_1 holds nothing but utility 0: rebuilding it\n");
    EXPECT_TRUE(std::filesystem::exists(utilityPath(2, 0, 1) + ".bad"));
    EXPECT_GT(std::ranges::max(readWhole<double>(utilityPath(2, 0, 1))), 0);
}

// A table of zeros in place of a file that could not be read was once as good as any.
TEST_F(UtilityTables, ThatCannotBeReadMakeNoHoldemTables) {
    writeSmallEquities();
    writeSmallUtilities();
    std::filesystem::remove(utilityPath(2, 0, 1));
    std::filesystem::create_directory(utilityPath(2, 0, 1));
    SmallTables tables;
    const Said said = saidDuring([&] {
        tables.loadUtility();
        CFR::logProgress = false;
        const std::string refusal = refusalOf([&] { tables.loadHoldemTables(); });
        EXPECT_EQ(refusal.find("lookup/utility_preflop_2p_1"), 0U) << refusal;
    });
    EXPECT_EQ(
        said.errors.find("WARNING: could not read lookup/utility_preflop_2p_1: Is a directory"), 0U)
        << said.errors;
    EXPECT_FALSE(std::filesystem::exists(holdemPath(2, 0, 1)));
}

TEST_F(UtilityTables, MissingGameEndsTheProgram) {
    EquityTables tables;
    EXPECT_EXIT(tables.loadUtility(), ::testing::ExitedWithCode(1),
                "ERROR: could not open game kuhn.preflop.2p.game\n");
}

} // namespace
} // namespace tamarin::test
