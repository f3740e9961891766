#include "abstraction/EquityTables.h"
#include "abstraction/sparse_tables.h"

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

class HoldemTables : public PlayingDirectory {
protected:
    // All twenty files but the pre-flop ones.
    static void writeLaterRounds() {
        for (int players = 2; players <= 3; ++players)
            for (int round = 1; round < holdemRounds; ++round)
                for (int seat = 0; seat < players; ++seat)
                    writeSparse<uint8_t>(holdemPath(players, round, seat),
                                         roundSizes[static_cast<size_t>(round)], {6, 7});
    }
};

TEST_F(HoldemTables, AreComputedFromUtilityAndEquity) {
    writeLaterRounds();
    // Equities 0..1 (2p) and 1..0 (3p) over the index; utilities -1..1 for seat 0, all the same
    // but for two entries for seat 1.
    std::vector<double> rising(roundSizes[0]);
    std::vector<double> falling(roundSizes[0]);
    std::vector<double> utility(roundSizes[0]);
    for (size_t i = 0; i < rising.size(); ++i) {
        rising[i] = double(i) / 168;
        falling[i] = 1 - rising[i];
        utility[i] = 2 * rising[i] - 1;
    }
    std::vector<double> flat(roundSizes[0], 0.1);
    flat[3] = 1;
    flat[4] = -1;
    writeSparse(equityPath(2, 0), roundSizes[0], rising);
    writeSparse(equityPath(3, 0), roundSizes[0], falling);
    writeSparse(utilityPath(2, 0, 0), roundSizes[0], utility);
    writeSparse(utilityPath(2, 0, 1), roundSizes[0], flat);

    EquityTables tables;
    ::testing::internal::CaptureStdout();
    tables.loadHoldemTables();
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(output.find("File lookup/holdem_preflop_2p_0 is missing!\n"
                          "Computing hsut for 2 players and round 0\n"
                          "File lookup/holdem_preflop_2p_1 is missing!\n"),
              0U)
        << output;
    EXPECT_NE(output.find("Loading table lookup/holdem_flop_2p_0!\n"
                          "Loading table lookup/holdem_flop_2p_1!\n"
                          "Loading table lookup/holdem_turn_2p_0!\n"),
              std::string::npos);

    const auto bucket = [&](int players, int seat, size_t index) {
        unsigned char cards[2];
        EXPECT_TRUE(hand_unindex(&tables.preflop_indexer, 0, index, cards));
        return tables.holdemTableIndex(players, 0, seat, cards);
    };
    EXPECT_EQ(bucket(2, 0, 0), 0U);
    EXPECT_EQ(bucket(2, 0, 168), 9U);
    EXPECT_EQ(bucket(2, 0, 20), 0U);
    EXPECT_EQ(bucket(2, 0, 21), 1U); // an eighth of the equity range goes up
    EXPECT_EQ(bucket(2, 0, 83), 2U);
    EXPECT_EQ(bucket(2, 0, 84), 7U); // half of the utility range goes up
    EXPECT_EQ(bucket(3, 0, 0), 4U);
    EXPECT_EQ(bucket(2, 1, 168), 9U); // 0.1 is nearer to 1 than to -1
    EXPECT_EQ(bucket(2, 1, 4), 0U);
    for (size_t i = 0; i < roundSizes[0]; ++i)
        EXPECT_EQ(bucket(3, 1, i), bucket(3, 2, i));
    EXPECT_EQ(std::filesystem::file_size("lookup/holdem_preflop_3p_2"), 169U);
}

TEST_F(HoldemTables, ComeFromTheirFilesInOrder) {
    writeLaterRounds();
    for (int players = 2; players <= 3; ++players)
        for (int seat = 0; seat < players; ++seat)
            writeSparse<uint8_t>(holdemPath(players, 0, seat), roundSizes[0], {1, 2, 3});
    EquityTables tables;
    ::testing::internal::CaptureStdout();
    tables.loadHoldemTables();
    std::string expected;
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat)
                expected += "Loading table " + holdemPath(players, round, seat) + "!\n";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(tables.getHoldemTable(3, 3, 2)[1], 7);
    EXPECT_EQ(tables.getHoldemTable(2, 0, 2), nullptr);
}

TEST_F(HoldemTables, CutFileIsSetAsideAndMadeAgain) {
    writeLaterRounds();
    for (int players = 2; players <= 3; ++players)
        for (int seat = 0; seat < players; ++seat)
            writeSparse<uint8_t>(holdemPath(players, 0, seat), roundSizes[0], {1, 2, 3});
    std::filesystem::resize_file("lookup/holdem_preflop_2p_1", 168);
    for (int players = 2; players <= 3; ++players)
        writeSparse<double>(equityPath(players, 0), roundSizes[0], {0.5});
    for (int seat = 0; seat < 2; ++seat)
        writeSparse<double>(utilityPath(2, 0, seat), roundSizes[0], {0.5});
    EquityTables tables;
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    tables.loadHoldemTables();
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/holdem_preflop_2p_1 has 168 bytes, not 169: rebuilding it\n");
    EXPECT_EQ(tables.getHoldemTable(2, 0, 1)[0], 9);
    EXPECT_EQ(tables.getHoldemTable(2, 0, 1)[1], 0);
    EXPECT_EQ(std::filesystem::file_size("lookup/holdem_preflop_2p_1.bad"), 168U);
}

TEST_F(HoldemTables, ReleasingThemIsHarmlessBeforeTheObjectEnds) {
    writeLaterRounds();
    for (int players = 2; players <= 3; ++players)
        for (int seat = 0; seat < players; ++seat)
            writeSparse<uint8_t>(holdemPath(players, 0, seat), roundSizes[0]);
    EquityTables tables;
    ::testing::internal::CaptureStdout();
    tables.loadHoldemTables();
    ::testing::internal::GetCapturedStdout();
    tables.freeHoldemTables();
    tables.freeUtility();
}

} // namespace
} // namespace tamarin::testing
