#include "abstraction/sparse_tables.h"
#include "solver/auxiliary_fixture.h"

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

using UtilityTables = PlayingDirectory;

TEST_F(UtilityTables, ComeFromTheirFiles) {
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat)
            writeSparse<double>(utilityPath(2, round, seat), roundSizes[static_cast<size_t>(round)],
                                {0.5, -1.5});
    EquityTables tables;
    ::testing::internal::CaptureStdout();
    tables.loadUtility();
    std::string expected;
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat)
            expected += "Loading table " + utilityPath(2, round, seat) + "!\n";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected);
    EXPECT_TRUE(CFR::logProgress);
    CFR::logProgress = false;
    EXPECT_EQ(tables.getUtilityTable(2, 3, 1)[1], -1.5);
    EXPECT_EQ(tables.getUtilityTable(3, 0, 0), nullptr);
}

TEST_F(UtilityTables, MissingGameEndsTheProgram) {
    EquityTables tables;
    EXPECT_EXIT(tables.loadUtility(), ::testing::ExitedWithCode(1),
                "ERROR: could not open game kuhn.preflop.2p.game\n");
}

} // namespace
} // namespace tamarin::testing
