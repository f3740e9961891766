#include "holdem/buckets.h"

#include "abstraction/sparse_tables.h"
#include "game/games.h"
#include "holdem/sets.h"
#include "solver/cfr.h"
#include "solver/hashed_buckets.h"
#include "strategy/mapped_strategy.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class HoldemBucketTables : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        for (int players = 2; players <= 3; ++players)
            for (int round = 0; round < holdemRounds; ++round)
                for (int seat = 0; seat < players; ++seat)
                    writeWhole(holdemPath(players, round, seat),
                               smallBytes(players, round, seat, 9));
    }
    static void damage(int players, int round, int seat) {
        std::vector<uint8_t> table = smallBytes(players, round, seat, 9);
        table[5] = 255;
        writeWhole(holdemPath(players, round, seat), table);
    }
    static std::string refusalFor(int players) {
        SmallTables tables;
        saidDuring([&] { tables.loadHoldemTables(); });
        return refusalOf([&] { const TableBuckets buckets(tables, players); });
    }
};

const char* const refused = "lookup/holdem_river_2p_1 holds bucket 255 at hand 5 (byte 5), not "
                            "0..9: nothing is made from it; 'tamarin tables' makes the file anew";

TEST_F(HoldemBucketTables, AreThoseOfTheTables) {
    SmallTables tables;
    saidDuring([&] { tables.loadHoldemTables(); });
    const TableBuckets buckets(tables);
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat) {
                uint8_t cards[7];
                ASSERT_TRUE(hand_unindex(tables.indexer(round), round == 0 ? 0 : 1, 77, cards));
                EXPECT_EQ(buckets.bucket(players, round, seat, cards),
                          smallBytes(players, round, seat, 9)[77]);
            }
}

// A bucket beyond the last was once a place beyond the strategy's end.
TEST_F(HoldemBucketTables, DamagedOnesAreRefused) {
    EXPECT_EQ(refusalFor(3), "not refused");
    damage(2, 3, 1);
    EXPECT_EQ(refusalFor(2), refused);
    EXPECT_EQ(refusalFor(3), refused);
}

TEST_F(HoldemBucketTables, GamesForTwoDoNotMindTheTablesForThree) {
    damage(3, 0, 2);
    EXPECT_EQ(refusalFor(2), "not refused");
    EXPECT_NE(refusalFor(3), "not refused");
}

TEST_F(HoldemBucketTables, NeitherFormTrainsOnDamagedOnes) {
    damage(2, 3, 1);
    SmallTables tables;
    saidDuring([&] { tables.loadHoldemTables(); });
    const GamePtr game = tamarin::test::loadGameFile("holdem.limit.2p.reverse_blinds.game");
    for (const auto form : {&CFR::trainHoldem, &CFR::trainHoldemPlain}) {
        CFR solver(game.get());
        solver.setEquityTables(&tables);
        saidDuring([&] { EXPECT_EQ(refusalOf([&] { (solver.*form)(1); }), refused); });
    }
}

TEST_F(HoldemBucketTables, GamesForThreeNeedAll) {
    damage(3, 1, 2);
    const GamePtr game = tamarin::test::loadGameFile("holdem.limit.3p.game");
    SmallTables tables;
    saidDuring([&] { tables.loadHoldemTables(); });
    CFR solver(game.get());
    solver.setEquityTables(&tables);
    saidDuring([&] {
        EXPECT_EQ(refusalOf([&] { solver.trainHoldem(1); }).find("lookup/holdem_flop_3p_2 "), 0U);
    });
}

// In play nobody looks through the tables first. A bucket that cannot be is a key that no strategy
// holds, wherever its nodes lie, and the agents then play by rule.
TEST(ABucketThatCannotBe, IsAKeyThatNoStrategyHolds) {
    const GamePtr game = tamarin::test::loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const tamarin::test::HashedBuckets buckets;
    CFR solver(game.get());
    solver.setHoldemBuckets(&buckets);
    saidDuring([&] { solver.trainHoldem(1); });
    solver.useCardAbstraction = true;
    solver.useHoldemTables = true;
    State state{};
    initState(game.get(), 0, &state);
    const int seat = currentPlayer(game.get(), &state);
    uint64_t& bucket = solver.holdemBucket[0][2][seat];
    bucket = 9;
    EXPECT_NE(solver.findNode(&state), nullptr);
    for (uint64_t wrong = 10; wrong < 256; ++wrong) {
        bucket = wrong;
        EXPECT_THROW(solver.findNode(&state), std::out_of_range) << wrong;
    }

    const std::string path = ::testing::TempDir() + "buckets." + std::to_string(getpid());
    ASSERT_TRUE(solver.save(path));
    const int maps = game->numPlayers * game->numRounds;
    const auto mapped = MappedStrategy::open(path, maps);
    ASSERT_TRUE(mapped.ok());
    const HoldemSets sets(*game);
    const int map = seat * game->numRounds;
    CFRNode node;
    for (int b = 0; b < 256; ++b) {
        const std::string key = std::to_string(seat) + ":0:" + std::to_string(b) + ':';
        EXPECT_EQ(mapped->find(map, key, node), b < 10) << key;
        EXPECT_EQ(sets.find(map, key, node), b < 10) << key;
    }
    std::filesystem::remove(path);
}

} // namespace
} // namespace tamarin::test
