#include "abstraction/EquityTables.h"
#include "abstraction/sparse_tables.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
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

// ---- Small rounds, every table with contents of its own.

void writeSmallHoldem() {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat)
                writeWhole(holdemPath(players, round, seat), smallBytes(players, round, seat, 9));
}

template <class Action>
void forEachHoldemTable(const Action& action) {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat)
                action(players, round, seat);
}

TEST_F(HoldemTables, EachComesFromItsOwnFile) {
    writeSmallHoldem();
    SmallTables tables;
    EXPECT_EQ(saidDuring([&] { tables.loadHoldemTables(); }).errors, "");
    EXPECT_EQ(refusalOf([&] { tables.requireHoldemTables(); }), "not refused");
    forEachHoldemTable([&](int players, int round, int seat) {
        const std::vector<uint8_t> right = smallBytes(players, round, seat, 9);
        EXPECT_EQ(copyOf(tables.getHoldemTable(players, round, seat), right.size()), right);
        for (const size_t index : {size_t{0}, size_t{100}, right.size() - 1}) {
            unsigned char cards[7];
            ASSERT_TRUE(hand_unindex(tables.indexer(round), round == 0 ? 0 : 1, index, cards));
            EXPECT_EQ(tables.holdemTableIndex(players, round, seat, cards), right[index]);
        }
    });
}

// Two halves of the utility's range and five places in the equity's; the utility is the first
// seat's or the second's of two, the equity that of the same number of players.
TEST_F(HoldemTables, EachIsMadeFromItsOwnSources) {
    writeSmallEquities();
    writeSmallUtilities();
    SmallTables tables;
    const Said said = saidDuring([&] { tables.loadHoldemTables(); });
    std::string expected;
    forEachHoldemTable([&](int players, int round, int seat) {
        expected += "File " + holdemPath(players, round, seat) +
                    " is missing!\nComputing hsut for " + std::to_string(players) +
                    " players and round " + std::to_string(round) + "\n";
        const std::vector<double> utility = smallUtilities(round, seat == 0 ? 0 : 1);
        const std::vector<double> equity = smallEquities(players, round);
        const auto [leastUtility, mostUtility] = std::ranges::minmax(utility);
        const auto [leastEquity, mostEquity] = std::ranges::minmax(equity);
        std::vector<uint8_t> right;
        for (size_t i = 0; i < equity.size(); ++i)
            right.push_back(static_cast<uint8_t>(
                5 * std::round((utility[i] - leastUtility) / (mostUtility - leastUtility)) +
                std::round((equity[i] - leastEquity) / (mostEquity - leastEquity) * 4)));
        EXPECT_EQ(copyOf(tables.getHoldemTable(players, round, seat), right.size()), right)
            << players << ' ' << round << ' ' << seat;
        EXPECT_EQ(readWhole<uint8_t>(holdemPath(players, round, seat)), right);
    });
    EXPECT_EQ(said.output, expected);
    EXPECT_EQ(refusalOf([&] { tables.requireHoldemTables(); }), "not refused");
}

TEST_F(HoldemTables, AreNotMadeFromDamagedSources) {
    writeSmallEquities();
    writeSmallUtilities();
    std::vector<double> utility = smallUtilities(2, 1);
    utility[9] = -std::numeric_limits<double>::infinity();
    writeWhole(utilityPath(2, 2, 1), utility);
    {
        SmallTables tables;
        saidDuring([&] {
            EXPECT_EQ(
                refusalOf([&] { tables.loadHoldemTables(); }),
                "lookup/utility_turn_2p_1 holds utility -inf at hand 9 (byte 72), not a finite "
                "number: nothing is made from it; 'tamarin tables' makes the file anew");
        });
        EXPECT_TRUE(std::filesystem::exists(holdemPath(2, 2, 0)));
        EXPECT_FALSE(std::filesystem::exists(holdemPath(2, 2, 1)));
    }
    writeSmallUtilities();
    std::vector<double> equity = smallEquities(2, 2);
    equity[0] = 1.25;
    writeWhole(equityPath(2, 2), equity);
    SmallTables tables;
    saidDuring([&] {
        EXPECT_EQ(refusalOf([&] { tables.loadHoldemTables(); }),
                  "lookup/turn_2p holds equity 1.25 at hand 0 (byte 0), not 0..1: nothing is made "
                  "from it; 'tamarin tables' makes the file anew");
    });
    EXPECT_FALSE(std::filesystem::exists(holdemPath(2, 2, 1)));
}

TEST_F(HoldemTables, DamagedOnesAreNotForTraining) {
    const std::string advice = ": nothing is made from it; 'tamarin tables' makes the file anew";
    const auto refused = [](int players) {
        SmallTables tables;
        saidDuring([&] { tables.loadHoldemTables(); });
        return refusalOf([&] { tables.requireHoldemTables(players); });
    };
    forEachHoldemTable([&](int players, int round, int seat) {
        writeSmallHoldem();
        std::vector<uint8_t> damaged = smallBytes(players, round, seat, 9);
        damaged.back() = 10;
        writeWhole(holdemPath(players, round, seat), damaged);
        const std::string last = std::to_string(damaged.size() - 1);
        EXPECT_EQ(refused(3), holdemPath(players, round, seat) + " holds bucket 10 at hand " +
                                  last + " (byte " + last + "), not 0..9" + advice);
        EXPECT_EQ(refused(2) == "not refused", players == 3);
    });
    writeSmallHoldem();
    writeWhole(holdemPath(2, 1, 0), std::vector<uint8_t>(smallSizes[1], 0));
    EXPECT_EQ(refused(2), "lookup/holdem_flop_2p_0 holds nothing but bucket 0" + advice);
    std::filesystem::remove(holdemPath(2, 1, 0));
    std::filesystem::create_directory(holdemPath(2, 1, 0));
    EXPECT_EQ(refused(2).find("lookup/holdem_flop_2p_0"), 0U) << refused(2);
    // The directory itself, and not the zeros that stand for it.
    EXPECT_EQ(refused(2).find("holds nothing"), std::string::npos) << refused(2);
}

TEST_F(HoldemTables, ForTrainingComeFromTheirFilesWhenTheyAreNotLoaded) {
    SmallTables tables;
    EXPECT_EQ(refusalOf([&] { tables.requireHoldemTables(); }),
              "lookup/holdem_preflop_2p_0 is missing: make it with 'tamarin tables', or call "
              "loadHoldemTables()");
    writeSmallHoldem();
    EXPECT_EQ(refusalOf([&] { tables.requireHoldemTables(); }), "not refused");
    EXPECT_EQ(copyOf(tables.getHoldemTable(3, 2, 1), smallSizes[2]), smallBytes(3, 2, 1, 9));
}

// Play looks up and does not look through: what lies there is what it gets.
TEST_F(HoldemTables, ABucketThatCannotBeIsHandedOutAsItIs) {
    writeSmallHoldem();
    writeWhole(holdemPath(2, 0, 1), std::vector<uint8_t>(smallSizes[0], 255));
    SmallTables tables;
    EXPECT_EQ(saidDuring([&] { tables.loadHoldemTables(); }).errors, "");
    unsigned char aces[] = {48, 49};
    EXPECT_EQ(tables.holdemTableIndex(2, 0, 1, aces), 255U);
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
} // namespace tamarin::test
