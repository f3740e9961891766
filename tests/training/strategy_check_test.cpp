#include "training/strategy_check.h"

#include "solver/games.h"
#include "training/small_game_trainer.h"

#include <cstring>
#include <filesystem>
#include <limits>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

class StrategyCheck : public ::testing::Test {
protected:
    StrategyCheck() {
        auto trainer = makeTrainer(*game, {});
        trainer->run(10);
        CFR solver(rules.get());
        trainer->store(solver);
        EXPECT_TRUE(solver.save(path));
        bytes = *readWholeFile(path);
    }
    ~StrategyCheck() override { std::filesystem::remove(path); }

    std::string verdict(const std::string& contents) {
        EXPECT_TRUE(writeWholeFile(path, contents).ok());
        const Status status = checkStrategyFile(*game, path);
        return status ? "" : status.error().substr(path.size());
    }

    GamePtr rules = kuhn3();
    std::unique_ptr<SmallGame> game = std::move(*SmallGame::make(*rules));
    std::string path = ::testing::TempDir() + "strategy_check." + std::to_string(getpid());
    std::string bytes;
};

TEST_F(StrategyCheck, PassesATrainedFile) {
    EXPECT_EQ(verdict(bytes), "");
}

TEST_F(StrategyCheck, RefusesEveryOtherLength) {
    for (const size_t length : {size_t{0}, size_t{3}, size_t{12}, bytes.size() - 1}) {
        EXPECT_EQ(verdict(bytes.substr(0, length)),
                  " has " + std::to_string(length) +
                      " bytes, not 5196: it is damaged or another game's");
    }
    EXPECT_NE(verdict(bytes + '\0'), "");
}

TEST_F(StrategyCheck, NamesThePlaceOfAFault) {
    std::string other = bytes;
    other[0] = 15;
    EXPECT_EQ(verdict(other), ", byte 0: section 0 counts 15 information sets, not 16; it is "
                              "damaged or another game's");
    other = bytes;
    other[4 + 108] = '9';
    EXPECT_EQ(verdict(other),
              ", byte 112: the key should be 0:0:0:ccr; it is damaged or another game's");
    other = bytes;
    other[4 + 59] = 'x'; // behind the key's end
    EXPECT_NE(verdict(other), "");
}

TEST_F(StrategyCheck, RefusesNumbersThatNoTrainingLeaves) {
    const auto with = [&](size_t offset, double value) {
        std::string other = bytes;
        std::memcpy(other.data() + offset, &value, sizeof value);
        return verdict(other);
    };
    const size_t record = 4;
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_NE(with(record + 60, 0.0).find("allows fold"), std::string::npos);
    EXPECT_NE(with(record + 68, infinity), "");
    EXPECT_NE(with(record + 92, -1.0), "");
    EXPECT_NE(with(record + 92, std::numeric_limits<double>::quiet_NaN()), "");
    EXPECT_EQ(with(record + 68, std::numeric_limits<double>::quiet_NaN()), ""); // eliminated
}

// Most bits of a key or count show; in the sums, those that make a number no number.
TEST_F(StrategyCheck, NoticesEveryFlippedBitOfCountsAndKeys) {
    for (size_t at = 0; at < 4 + 60; ++at)
        for (unsigned bit = 0; bit < 8; ++bit) {
            std::string other = bytes;
            other[at] = static_cast<char>(static_cast<unsigned char>(other[at]) ^ (1U << bit));
            ASSERT_NE(verdict(other), "") << at;
        }
}

TEST_F(StrategyCheck, RefusesEveryOtherGamesFile) {
    for (const auto& make : {kuhn2, leduc2, four, boards3}) {
        const GamePtr otherRules = make();
        CFR other(otherRules.get());
        other.buildTree();
        ASSERT_TRUE(other.save(path));
        EXPECT_NE(verdict(*readWholeFile(path)), "");
    }
}

TEST_F(StrategyCheck, RefusesWhatIsNoFile) {
    EXPECT_FALSE(checkStrategyFile(*game, ::testing::TempDir()).ok());
    EXPECT_FALSE(checkStrategyFile(*game, path + ".absent").ok());
    EXPECT_FALSE(checkStrategyFile(*game, "/dev/zero").ok());
}

} // namespace
} // namespace tamarin::testing
