#include "training/profile.h"

#include "solver/cfr.h"
#include "solver/games.h"

#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class Profiles : public ::testing::Test {
protected:
    Profiles() { solver.buildTree(); }
    CFRNode& node(const std::string& key) { return *solver.nodeMap(key[0] - '0', 0).at(key); }
    std::string error() {
        const auto profile = averageProfile(*game, solver.nodes());
        return profile ? "" : profile.error();
    }
    GamePtr rules = kuhn3();
    std::unique_ptr<SmallGame> game = std::move(*SmallGame::make(*rules));
    CFR solver{rules.get()};
};

TEST_F(Profiles, OfAFreshSolverIsUniform) {
    const auto profile = averageProfile(*game, solver.nodes());
    ASSERT_TRUE(profile.ok());
    EXPECT_EQ(*profile, uniformProfile(*game));
}

TEST_F(Profiles, HasTheAverageOfEachNode) {
    node("0:0:2:").strategySum[1] = 1;
    node("0:0:2:").strategySum[2] = 3;
    const auto profile = averageProfile(*game, solver.nodes());
    ASSERT_TRUE(profile.ok());
    const auto& shares = (*profile)[game->layout().index(game->tree().nodes()[0], 2)];
    EXPECT_EQ(shares, (std::array<double, 3>{0.0, 0.25, 0.75}));
}

TEST_F(Profiles, ANodeThatLostEverythingCalls) {
    CFRNode& raised = node("1:0:0:r");
    raised.setActionInvalid(0);
    raised.setActionInvalid(1);
    const auto profile = averageProfile(*game, solver.nodes());
    ASSERT_TRUE(profile.ok());
    for (const CompiledTree::Node& at : game->tree().nodes())
        if (at.player == 1 && at.child[2] == CompiledTree::noChild && at.parentEdge == 2) {
            EXPECT_EQ((*profile)[game->layout().index(at, 0)],
                      (std::array<double, 3>{0.0, 1.0, 0.0}));
        }
}

TEST_F(Profiles, NameWhatIsMissing) {
    CFR empty(rules.get());
    const auto profile = averageProfile(*game, empty.nodes());
    ASSERT_FALSE(profile.ok());
    EXPECT_EQ(profile.error(),
              "information set 0:0:0: is missing: the strategy is another game's, or not whole");
}

TEST_F(Profiles, NameWhatTheRulesForbid) {
    node("0:0:1:").regretSum[0] = 0.0;
    EXPECT_EQ(error(), "information set 0:0:1: allows fold, which the rules do not: the strategy "
                       "is damaged or another game's");
}

TEST_F(Profiles, RefuseSumsThatAreNoStrategy) {
    node("0:0:1:").strategySum[1] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(error(), "information set 0:0:1: has a damaged sum for call: the strategy is "
                       "damaged or another game's");
    node("0:0:1:").strategySum[1] = -1.0;
    node("0:0:1:").strategySum[2] = 3.0;
    EXPECT_NE(error(), "");
}

} // namespace
} // namespace tamarin::test
