#include "tables/later_rounds.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin::testing {
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
    EXPECT_EQ(made(planTables(".", {TableGroup::holdem}, true)).size(), 46U - 1 - 4)
        << "all but the ranks and the three-player clusters";
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

} // namespace
} // namespace tamarin::testing
