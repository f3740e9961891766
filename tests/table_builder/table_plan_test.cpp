#include "table_builder/later_rounds.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Plan = PlayingDirectory;

std::set<std::string> made(const TablePlan& plan) {
    std::set<std::string> paths;
    for (const PlannedTable& table : plan.tables)
        if (table.make)
            paths.insert(table.file->path);
    return paths;
}

TEST(AllTables, AreFortySix) {
    std::set<std::string> paths;
    uint64_t bytes = 0;
    for (const TableFile& file : allTables()) {
        paths.insert(file.path);
        bytes += file.bytes;
    }
    EXPECT_EQ(paths.size(), 46U);
    // Doubles for equities and two seats' utilities, bytes for clusters and five seats' buckets.
    uint64_t hands = 0;
    for (const size_t size : roundSizes)
        hands += size;
    EXPECT_EQ(bytes, 129951336 + 36875 * 4 + hands * (8 * (2 + 2) + 2 + 5));
}

TEST_F(Plan, OfAnEmptyDirectoryIsEverything) {
    const TablePlan plan = planTables(".", {}, false);
    EXPECT_EQ(made(plan).size(), 46U);
    EXPECT_GT(plan.memory, uint64_t{1} << 30);
    EXPECT_LT(plan.memory, uint64_t{6} << 30);
    EXPECT_LT(plan.disk, uint64_t{8'000'000'000});
}

TEST_F(Plan, TakesInWhatIsNeeded) {
    writeLaterRounds();
    const TablePlan plan = planTables(".", {TableGroup::holdem}, false);
    EXPECT_EQ(made(plan),
              (std::set<std::string>{"lookup/preflop_2p_c", "lookup/utility_preflop_2p_0",
                                     "lookup/utility_preflop_2p_1", "lookup/holdem_preflop_2p_0",
                                     "lookup/holdem_preflop_2p_1", "lookup/holdem_preflop_3p_0",
                                     "lookup/holdem_preflop_3p_1", "lookup/holdem_preflop_3p_2"}));
}

TEST_F(Plan, LeavesOutTheSourcesOfWhatIsThere) {
    for (const TableFile& file : allTables())
        if (file.group == TableGroup::holdem)
            writeSparse<uint8_t>(file.path, file.bytes);
    EXPECT_TRUE(planTables(".", {TableGroup::holdem}, false).nothingToDo());
    EXPECT_EQ(made(planTables(".", {TableGroup::holdem}, true)).size(), 46U - 2 - 4)
        << "all but the seven-card table, its ranks and the three-player clusters";
}

TEST(AllTables, ThatPlayReadsAreThoseOfAsManyPlayers) {
    std::set<std::string> two;
    std::set<std::string> three;
    for (const TableFile& file : allTables()) {
        if (playReads(file, 2))
            two.insert(file.path);
        if (playReads(file, 3))
            three.insert(file.path);
    }
    EXPECT_EQ(two, (std::set<std::string>{"lookup/preflop_2p", "lookup/flop_2p", "lookup/turn_2p",
                                          "lookup/river_2p", "lookup/holdem_preflop_2p_0",
                                          "lookup/holdem_preflop_2p_1", "lookup/holdem_flop_2p_0",
                                          "lookup/holdem_flop_2p_1", "lookup/holdem_turn_2p_0",
                                          "lookup/holdem_turn_2p_1", "lookup/holdem_river_2p_0",
                                          "lookup/holdem_river_2p_1"}));
    EXPECT_EQ(three.size(), 12U + 4 + 12);
    for (const std::string& path : two)
        EXPECT_EQ(three.count(path), 1U) << path;
    EXPECT_EQ(three.count("lookup/holdem_river_3p_2"), 1U);
    EXPECT_EQ(three.count("lookup/river_3p"), 1U);
}

// What else is missing stays so, and what a missing file is made from is made with it.
TEST_F(Plan, ForPlayLeavesOutWhatPlayDoesNotRead) {
    for (const TableFile& file : allTables())
        if (playReads(file, 2))
            writeSparse<uint8_t>(file.path, file.bytes);
    EXPECT_TRUE(planTablesForPlay(".", 2).nothingToDo());
    EXPECT_FALSE(planTablesForPlay(".", 3).nothingToDo());
    EXPECT_EQ(planTablesForPlay(".", 2).tables.size(), 12U);

    writeLaterRounds();
    EXPECT_EQ(made(planTablesForPlay(".", 2)), std::set<std::string>());
    std::filesystem::remove("lookup/holdem_preflop_2p_1");
    EXPECT_EQ(made(planTablesForPlay(".", 2)),
              (std::set<std::string>{"lookup/preflop_2p_c", "lookup/utility_preflop_2p_1",
                                     "lookup/holdem_preflop_2p_1"}));
}

TEST_F(Plan, SeesAWrongSize) {
    writeLaterRounds();
    std::filesystem::resize_file("lookup/turn_3p_c", 5);
    for (const PlannedTable& table : planTables(".", {TableGroup::clusters}, false).tables)
        if (table.file->path == "lookup/turn_3p_c") {
            EXPECT_EQ(table.state, TableState::wrongSize);
            EXPECT_EQ(table.bytesThere, 5U);
            EXPECT_TRUE(table.make);
        }
    EXPECT_EQ(std::filesystem::file_size("lookup/turn_3p_c"), 5U);
}

TEST_F(Plan, CountsADamagedTableAmongThoseToMake) {
    for (const TableFile& file : allTables())
        writeSparse<uint8_t>(file.path, file.bytes);
    const auto at = [](const std::string& path) {
        return &*std::find_if(allTables().begin(), allTables().end(),
                              [&](const TableFile& file) { return file.path == path; });
    };
    std::filesystem::remove("lookup/turn_3p");
    const DamagedTables damaged{{at("lookup/holdem_turn_3p_2"), "holds nonsense"},
                                {at("lookup/turn_3p"), "is not there to be damaged"}};
    const TablePlan plan = planTables(".", {TableGroup::holdem}, false, damaged);
    EXPECT_EQ(made(plan), (std::set<std::string>{"lookup/turn_3p", "lookup/holdem_turn_3p_2"}));
    for (const PlannedTable& table : plan.tables) {
        if (table.file->path == "lookup/holdem_turn_3p_2") {
            EXPECT_EQ(table.state, TableState::damaged);
            EXPECT_EQ(table.problem, "lookup/holdem_turn_3p_2 holds nonsense");
        }
        if (table.file->path == "lookup/turn_3p") {
            EXPECT_EQ(table.state, TableState::missing);
        }
    }
}

} // namespace
} // namespace tamarin::test
