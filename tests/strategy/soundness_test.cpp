#include "strategy/soundness.h"

#include "solver/cfr.h"
#include "solver/games.h"
#include "support/temp_directory.h"
#include "training/small_game_trainer.h"

#include <cstring>
#include <filesystem>
#include <limits>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
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
        const Status status = checkStrategyFile(*rules, game->tree(), path);
        return status ? "" : status.error().substr(path.size());
    }

    GamePtr rules = kuhn3();
    std::unique_ptr<SmallGame> game = std::move(*SmallGame::make(*rules));
    std::string path = ::testing::TempDir() + "soundness." + std::to_string(getpid());
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

TEST_F(StrategyCheck, LooksIntoEverySection) {
    constexpr size_t section = 4 + 16 * 108; // bytes
    for (size_t m = 0; m < 3; ++m) {
        std::string other = bytes;
        other[m * section] = 15;
        EXPECT_EQ(verdict(other), ", byte " + std::to_string(m * section) + ": section " +
                                      std::to_string(m) +
                                      " counts 15 information sets, not 16; it is damaged or "
                                      "another game's");
        other = bytes;
        other[(m + 1) * section - 108] = 'x'; // its last key
        EXPECT_NE(verdict(other), "") << m;
    }
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
    EXPECT_FALSE(checkStrategyFile(*rules, game->tree(), ::testing::TempDir()).ok());
    EXPECT_FALSE(checkStrategyFile(*rules, game->tree(), path + ".absent").ok());
    EXPECT_FALSE(checkStrategyFile(*rules, game->tree(), "/dev/zero").ok());
}

TEST(NodeFault, NamesTheFirst) {
    bool callOrRaise[] = {false, true, true};
    const LegalActions legal = {false, true, true};
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto fault = [&](ValidActions expected, const auto& change) {
        CFRNode node(callOrRaise);
        change(node);
        return faultOf(node, legal, expected);
    };
    for (const ValidActions expected : {ValidActions::allLegal, ValidActions::someLegal}) {
        EXPECT_EQ(fault(expected, [](CFRNode&) {}), "");
        EXPECT_EQ(fault(expected, [](CFRNode& node) { node.regretSum[0] = 0.0; }),
                  "allows fold, which the rules do not");
        EXPECT_EQ(fault(expected, [](CFRNode& node) { node.regretSum[1] = -infinity; }),
                  "has a damaged sum for call");
        EXPECT_EQ(fault(expected, [](CFRNode& node) { node.strategySum[2] = -0.5; }),
                  "has a damaged sum for raise");
        EXPECT_EQ(fault(expected, [](CFRNode& node) { node.strategySum[0] = infinity; }),
                  "has a damaged sum for fold");
        EXPECT_EQ(fault(expected, [](CFRNode& node) { node.strategySum[1] = nan; }),
                  "has a damaged sum for call");
        EXPECT_EQ(fault(expected, [](CFRNode& node) { node.regretSum[2] = -7.0; }), "");
    }
    const auto loseRaise = [](CFRNode& node) { node.setActionInvalid(2); };
    EXPECT_EQ(fault(ValidActions::allLegal, loseRaise), "lacks raise");
    EXPECT_EQ(fault(ValidActions::someLegal, loseRaise), "");
}

// Nodes that can be taken away and put in.
class Solver : public CFR {
public:
    using CFR::CFR;
    NodeMap& map(int m) { return nodeMaps[m]; }
};

class SmallFit : public ::testing::Test {
protected:
    SmallFit() { whole.buildTree(); }

    // What is said of the nodes, which must not depend on where they are kept.
    bool fits() {
        const std::string path = directory.file("strategy");
        EXPECT_TRUE(whole.save(path));
        bool said[2];
        for (const bool mapped : {false, true}) {
            CFR solver(game.get());
            if (mapped)
                solver.setMapLimits({0, 0});
            EXPECT_TRUE(solver.load(path));
            EXPECT_EQ(solver.nodeMap(0, 0).empty(), mapped);
            said[mapped] = holdsSmallGame(solver.nodes(), *game);
        }
        EXPECT_EQ(said[0], said[1]);
        return said[0];
    }

    const test::TempDirectory directory;
    GamePtr game = kuhn3();
    Solver whole{game.get()};
};

TEST_F(SmallFit, AWholeOneFits) {
    EXPECT_TRUE(fits());
    whole.map(1).at("1:0:2:r")->setActionInvalid(0); // as elimination does
    EXPECT_TRUE(fits());
}

TEST_F(SmallFit, OneThatLacksANodeDoesNot) {
    whole.map(2).erase("2:0:3:cc");
    EXPECT_FALSE(fits());
}

TEST_F(SmallFit, OneWithANodeTooManyDoesNot) {
    whole.map(2)["2:0:7:cc"] = whole.map(2).at("2:0:3:cc");
    EXPECT_FALSE(fits());
}

TEST_F(SmallFit, OneWithAnotherNodeInsteadDoesNot) {
    whole.map(2)["2:0:7:cc"] = whole.map(2).at("2:0:3:cc");
    whole.map(2).erase("2:0:3:cc");
    EXPECT_FALSE(fits());
}

TEST_F(SmallFit, OneWithAnActionThatTheRulesForbidDoesNot) {
    whole.map(0).at("0:0:0:")->regretSum[0] = 0.0; // fold where nothing is owed
    EXPECT_FALSE(fits());
}

TEST_F(SmallFit, OneWithoutAnyActionSomewhereDoesNot) {
    for (int action = 0; action < numAbstractedActions; ++action)
        whole.map(1).at("1:0:2:r")->setActionInvalid(action);
    EXPECT_FALSE(fits());
}

TEST_F(SmallFit, OneWithDamagedSumsDoesNot) {
    whole.map(0).at("0:0:0:")->strategySum[1] = -1.0;
    EXPECT_FALSE(fits());
    whole.map(0).at("0:0:0:")->strategySum[1] = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(fits());
}

// A good file with rubbish behind it, above the size from which on files are looked up in place.
TEST_F(SmallFit, AWholeOneGrownToSeventyMegabytesFits) {
    const std::string path = directory.file("strategy");
    ASSERT_TRUE(whole.save(path));
    std::filesystem::resize_file(path, size_t{70} << 20U);
    CFR solver(game.get());
    ASSERT_TRUE(solver.load(path));
    EXPECT_TRUE(holdsSmallGame(solver.nodes(), *game));
}

} // namespace
} // namespace tamarin::test
