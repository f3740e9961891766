#include "driver/holdem_hands.h"

#include "abstraction/round_indexers.h"
#include "driver/holdem_directory.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Two hands whose entries together are another number in every table, so that no two tables can be
// exchanged.
TEST(TableHands, GiveEveryTablesOwnEntry) {
    const HoldemDirectory directory;
    // Two hole cards and the board.
    const std::vector<uint8_t> hands[2] = {{48, 45, 3, 10, 21, 30, 42}, {0, 5, 11, 23, 29, 38, 50}};
    const auto indexOf = [&](int hand, int round) {
        return hand_index_last(RoundIndexer(round).get(), hands[hand].data());
    };
    const auto equityOf = [](int players, int round) { return 0.01 * (10 * players + round); };
    int number = 0;
    for (int round = 0; round < holdemRounds; ++round)
        for (int players = 2; players <= 3; ++players) {
            HoldemDirectory::writeEntry(equityPath(players, round), indexOf(0, round),
                                        equityOf(players, round));
            for (int seat = 0; seat < players; ++seat, ++number) {
                const std::string path = holdemPath(players, round, seat);
                HoldemDirectory::writeEntry(path, indexOf(0, round),
                                            static_cast<uint8_t>(number / 10));
                HoldemDirectory::writeEntry(path, indexOf(1, round),
                                            static_cast<uint8_t>(number % 10));
            }
        }
    ASSERT_EQ(number, 20);
    testing::internal::CaptureStdout();
    auto tables = std::make_unique<EquityTables>();
    tables->loadForPlay(3);
    testing::internal::GetCapturedStdout();
    const TableHands loaded(std::move(tables));
    number = 0;
    for (int round = 0; round < holdemRounds; ++round)
        for (int players = 2; players <= 3; ++players) {
            EXPECT_EQ(loaded.equity(players, round, hands[0].data()), equityOf(players, round));
            for (int seat = 0; seat < players; ++seat, ++number)
                EXPECT_EQ(10 * loaded.bucket(players, round, seat, hands[0].data()) +
                              loaded.bucket(players, round, seat, hands[1].data()),
                          number)
                    << players << " players, round " << round << ", seat " << seat;
        }
}

} // namespace
} // namespace tamarin::test
