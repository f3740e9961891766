#include "strategy/packed_node.h"

#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class PackedNode : public ::testing::Test {
protected:
    PackedNode() {
        at.child[actionFold] = CompiledTree::noChild;
        at.child[actionCall] = 7;
        at.child[actionRaise] = -1; // a settlement
        for (int a = 0; a < numAbstractedActions; ++a) {
            node.regretSum[a] = -10.0 * a;
            node.strategySum[a] = a + 0.5;
        }
        node.setActionInvalid(actionFold);
    }
    bool packs() {
        SetNumbers numbers{};
        return packNode(node, at, numbers).has_value();
    }

    CompiledTree::Node at{};
    CFRNode node;
};

TEST_F(PackedNode, HoldsTheValidActionsAndNoOthers) {
    SetNumbers numbers{};
    const auto actions = packNode(node, at, numbers);
    ASSERT_TRUE(actions);
    EXPECT_EQ(actions->count, 2);
    EXPECT_EQ(actions->action[0], actionCall);
    EXPECT_EQ(actions->action[1], actionRaise);
    EXPECT_EQ(numbers.regret[0], -10.0);
    EXPECT_EQ(numbers.regret[1], -20.0);
    EXPECT_EQ(numbers.strategy[0], 1.5);
    EXPECT_EQ(numbers.strategy[1], 2.5);
    numbers = {{3.0, 4.0}, {5.0, 6.0}};
    unpackNode(*actions, numbers, node);
    EXPECT_EQ(node.regretSum[actionCall], 3.0);
    EXPECT_EQ(node.regretSum[actionRaise], 4.0);
    EXPECT_EQ(node.strategySum[actionCall], 5.0);
    EXPECT_EQ(node.strategySum[actionRaise], 6.0);
    EXPECT_FALSE(node.isActionValid(actionFold));
}

TEST_F(PackedNode, IsNoneWhereAnActionLeadsNowhere) {
    EXPECT_TRUE(packs());
    node.regretSum[actionFold] = 0.0;
    EXPECT_FALSE(packs());
}

TEST_F(PackedNode, IsNoneWhereASumIsNoneThatTrainingLeaves) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const auto packsWith = [&](double& sum, double value) {
        const double before = std::exchange(sum, value);
        const bool result = packs();
        sum = before;
        return result;
    };
    EXPECT_FALSE(packsWith(node.regretSum[actionRaise], infinity));
    EXPECT_FALSE(packsWith(node.strategySum[actionRaise], infinity));
    EXPECT_FALSE(packsWith(node.strategySum[actionRaise], -0.25));
    EXPECT_TRUE(packsWith(node.strategySum[actionRaise], 0.0));
}

} // namespace
} // namespace tamarin::test
