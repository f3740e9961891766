#include "tree/compiled_tree.h"

#include "solver/games.h"

#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Walks tree and rules side by side.
void compare(const Game& game, const CompiledTree& tree, int32_t child, const State& state,
             const std::string& betting, int32_t parentEdge, std::array<int32_t, MAX_PLAYERS> own,
             size_t& visited) {
    if (state.finished) {
        ASSERT_LT(child, 0) << betting;
        const auto& settled = tree.settlements()[static_cast<size_t>(~child)];
        for (size_t p = 0; p < game.numPlayers; ++p) {
            EXPECT_EQ(settled.spent[p], state.spent[p]) << betting;
            EXPECT_EQ(settled.folded[p], state.playerFolded[p]) << betting;
        }
        return;
    }
    ASSERT_GE(child, 0) << betting;
    ASSERT_EQ(static_cast<size_t>(child), visited++); // depth first
    const CompiledTree::Node& node = tree.nodes()[static_cast<size_t>(child)];
    EXPECT_EQ(node.player, currentPlayer(&game, &state));
    EXPECT_EQ(node.round, state.round);
    EXPECT_EQ(node.acting, numActingPlayers(&game, &state));
    EXPECT_EQ(node.parentEdge, parentEdge);
    EXPECT_EQ(node.ownEdge, own[node.player]);
    EXPECT_EQ(tree.sequence(child), betting);
    const CompiledTree::Slot& slot = tree.slots()[node.slot];
    EXPECT_EQ(slot.player, node.player);
    EXPECT_EQ(slot.round, node.round);
    EXPECT_EQ(slot.acting, node.acting);
    EXPECT_LT(node.offset, slot.numNodes);
    for (int a = 0; a < numAbstractedActions; ++a) {
        Action action{static_cast<ActionType>(a), 0};
        if (!isValidAction(&game, &state, 0, &action)) {
            EXPECT_EQ(node.child[a], CompiledTree::noChild) << betting;
            continue;
        }
        State next = state;
        doAction(&game, &action, &next);
        const int32_t edge = child * numAbstractedActions + a;
        auto ownNext = own;
        ownNext[node.player] = edge;
        compare(game, tree, node.child[a], next, betting + actionChars[a], edge, ownNext, visited);
    }
    EXPECT_EQ(static_cast<size_t>(node.end), visited);
}

TEST(CompiledTree, FollowsTheRules) {
    for (const auto& make : {kuhn3, kuhn2, leduc2, four, twoCards, boards3}) {
        const GamePtr game = make();
        const CompiledTree tree(*game);
        State state{};
        initState(game.get(), 0, &state);
        std::array<int32_t, MAX_PLAYERS> own;
        own.fill(CompiledTree::noEdge);
        size_t visited = 0;
        compare(*game, tree, 0, state, "", CompiledTree::noEdge, own, visited);
        EXPECT_EQ(visited, tree.nodes().size());
    }
}

TEST(CompiledTree, CountsOfKnownGames) {
    EXPECT_EQ(CompiledTree(*kuhn3()).nodes().size(), 12U);
    EXPECT_EQ(CompiledTree(*kuhn2()).nodes().size(), 4U);
    // Six lines each round, five of the first go on; each node of ten actions or fewer.
    EXPECT_EQ(CompiledTree(*leduc2()).nodes().size(), 6U + 5 * 6);
    EXPECT_EQ(CompiledTree(*holdem2()).slots().size(), 8U); // four rounds, two players
}

TEST(CompiledTree, SettlementsAreDistinct) {
    const CompiledTree tree(*leduc2());
    std::set<std::vector<int32_t>> seen;
    for (const auto& settlement : tree.settlements()) {
        std::vector<int32_t> all(settlement.spent.begin(), settlement.spent.end());
        all.insert(all.end(), settlement.folded.begin(), settlement.folded.end());
        EXPECT_TRUE(seen.insert(all).second);
    }
}

TEST(CompiledTree, StopsAtTheNodesAllowed) {
    EXPECT_NO_THROW(CompiledTree(*kuhn3(), 12));
    EXPECT_THROW(CompiledTree(*kuhn3(), 11), std::length_error);
}

TEST(SetLayout, GivesEverySetOneOfConsecutivePlacesBucketByBucket) {
    const CompiledTree tree(*boards3());
    std::vector<uint32_t> buckets;
    for (uint32_t s = 0; s < tree.slots().size(); ++s)
        buckets.push_back(3 + s);
    const SetLayout layout(tree, buckets);
    std::set<size_t> seen;
    for (const CompiledTree::Node& node : tree.nodes())
        for (uint32_t b = 0; b < buckets[node.slot]; ++b) {
            const size_t index = layout.index(node, b);
            EXPECT_TRUE(seen.insert(index).second);
            EXPECT_EQ(index, layout.bucketStart(node.slot, b) + node.offset);
            EXPECT_LT(index, layout.numSets());
        }
    EXPECT_EQ(seen.size(), layout.numSets());
}

} // namespace
} // namespace tamarin::test
