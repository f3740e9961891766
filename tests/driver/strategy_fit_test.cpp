#include "driver/strategy_fit.h"

#include "game/games.h"
#include "support/file.h"
#include "support/temp_directory.h"

#include <filesystem>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Nodes that can be taken away and put in.
class Solver : public CFR {
public:
    using CFR::CFR;
    NodeMap& map(int m) { return nodeMaps[m]; }
};

class SmallFit : public testing::Test {
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
            said[mapped] = holdsSmallGame(solver, *game);
        }
        EXPECT_EQ(said[0], said[1]);
        return said[0];
    }

    const TempDirectory directory;
    GamePtr game = parseGame(threePlayerKuhn);
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
    EXPECT_TRUE(holdsSmallGame(solver, *game));
}

} // namespace
} // namespace tamarin::test
