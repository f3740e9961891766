#include "strategy/mapped_strategy.h"

#include "solver/cfr.h"
#include "solver/games.h"
#include "support/temp_directory.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Look = MappedStrategy::Look;

// Three sections of two hundred records: a quick look steps by three and reads the keys 0, 1, 3, 4,
// 6, 7 and so on of each.
constexpr int sections = 3;
constexpr size_t recordsEach = 200;

std::string keyAt(size_t i) {
    return std::to_string(1000 + i);
}

StrategyRecord recordAt(size_t i) {
    StrategyRecord record{};
    std::memcpy(record.key, keyAt(i).data(), 4);
    record.regretSum[1] = static_cast<double>(i) + 0.25;
    record.strategySum[2] = static_cast<double>(i) + 0.5;
    return record;
}

class MappedStrategyFile : public ::testing::Test {
protected:
    MappedStrategyFile() {
        for (size_t i = 0; i < recordsEach; ++i)
            records.push_back(recordAt(i));
    }
    // All sections alike but the middle one, which has what records holds.
    void write() const {
        std::string bytes;
        for (int m = 0; m < sections; ++m) {
            const StrategyCount count = recordsEach;
            bytes.append(reinterpret_cast<const char*>(&count), sizeof count);
            for (size_t i = 0; i < recordsEach; ++i) {
                const StrategyRecord record = m == 1 ? records[i] : recordAt(i);
                bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
            }
        }
        test::putContents(path, bytes);
    }
    void damage(size_t i) { std::memset(records[i].key, '1', sizeof records[i].key); }
    Result<MappedStrategy> open(Look look) const {
        write();
        return MappedStrategy::open(path, sections, look);
    }
    static void expectAllFound(const MappedStrategy& strategy) {
        for (int m = 0; m < sections; ++m)
            for (size_t i = 0; i < recordsEach; ++i) {
                CFRNode node;
                ASSERT_TRUE(strategy.find(m, keyAt(i), node)) << m << ' ' << i;
                ASSERT_EQ(node.regretSum[1], static_cast<double>(i) + 0.25);
                ASSERT_EQ(node.strategySum[2], static_cast<double>(i) + 0.5);
            }
    }

    const test::TempDirectory directory;
    const std::string path = directory.file("strategy");
    std::vector<StrategyRecord> records;
};

TEST_F(MappedStrategyFile, IsFoundWholeAfterEitherLook) {
    for (const Look look : {Look::everyKey, Look::someKeys}) {
        const auto strategy = open(look);
        ASSERT_TRUE(strategy.ok()) << strategy.error();
        expectAllFound(*strategy);
    }
}

// Out of order at places that the quick look reads: it goes on to the full one.
TEST_F(MappedStrategyFile, IsPutInOrderAfterEitherLook) {
    for (const size_t at : {size_t{0}, size_t{1}, size_t{99}, size_t{195}}) {
        std::swap(records[at], records[at + 3]);
        for (const Look look : {Look::everyKey, Look::someKeys}) {
            const auto strategy = open(look);
            ASSERT_TRUE(strategy.ok()) << strategy.error();
            expectAllFound(*strategy);
        }
        std::swap(records[at], records[at + 3]);
    }
}

TEST_F(MappedStrategyFile, DamageThatAQuickLookSeesIsRefused) {
    for (const size_t at : {0U, 1U, 3U, 100U, 198U, 199U}) {
        const StrategyRecord good = records[at];
        damage(at);
        const auto strategy = open(Look::someKeys);
        ASSERT_FALSE(strategy.ok()) << at;
        EXPECT_EQ(strategy.error(),
                  path + ": section 1 has a key without an end, its record " + std::to_string(at));
        records[at] = good;
    }
}

TEST_F(MappedStrategyFile, AKeyThatAQuickLookSeesTwiceIsRefused) {
    for (const size_t at : {1U, 100U, 199U}) {
        records[at] = recordAt(at - 1);
        const auto strategy = open(Look::someKeys);
        ASSERT_FALSE(strategy.ok()) << at;
        EXPECT_EQ(strategy.error(), path + ": section 1 has the key " + keyAt(at - 1) + " twice");
        records[at] = recordAt(at);
    }
}

// Neither a crash nor another node's sums: a key that is damaged is not found.
TEST_F(MappedStrategyFile, DamageBetweenThePlacesOfAQuickLookHidesANodeAtMost) {
    damage(152); // 151 and 153 are read
    ASSERT_FALSE(open(Look::everyKey).ok());
    const auto strategy = open(Look::someKeys);
    ASSERT_TRUE(strategy.ok()) << strategy.error();
    CFRNode node;
    EXPECT_FALSE(strategy->find(1, keyAt(152), node));
    EXPECT_FALSE(strategy->find(1, std::string(59, '1'), node));
    EXPECT_FALSE(strategy->find(1, std::string(61, '1'), node));
    EXPECT_TRUE(strategy->find(0, keyAt(152), node));
    EXPECT_TRUE(strategy->find(1, keyAt(20), node));
    EXPECT_EQ(node.strategySum[2], 20.5);
}

// The solver reads a file through up to its limit, and starts at once on a larger one.
TEST_F(MappedStrategyFile, TheSolverReadsThroughWhatIsNotTooLarge) {
    EXPECT_EQ(CFR::MapLimits{}.everyKeyBytes, size_t{1} << 30U);
    damage(152);
    write();
    const GamePtr game = kuhn3();
    const size_t bytes = sections * (4 + recordsEach * 108);
    for (const size_t limit : {bytes - 1, bytes}) {
        CFR solver(game.get());
        solver.setMapLimits({0, 0, limit});
        EXPECT_EQ(solver.load(path), limit < bytes);
    }
}

} // namespace
} // namespace tamarin::test
