// Sizes of whole betting trees, counted by walking the rules.
#include "game/games.h"

#include <array>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

struct TreeCounts {
    std::array<long, MAX_ROUNDS> decisions{};
    long folds = 0; // ends by a fold
    long showdowns = 0;
};

// Counts the tree below state. In a no-limit game every raise size is tried.
void countTree(const Game& game, const State& state, TreeCounts& counts) {
    if (state.finished) {
        const bool folded = numFolded(&game, &state) + 1 == game.numPlayers;
        ++(folded ? counts.folds : counts.showdowns);
        return;
    }
    ++counts.decisions[state.round];
    const auto tryAction = [&](Action action) {
        if (isValidAction(&game, &state, 0, &action)) {
            State child = state;
            doAction(&game, &action, &child);
            countTree(game, child, counts);
        }
    };
    tryAction({actionFold, 0});
    tryAction({actionCall, 0});
    int32_t minSize = 0;
    int32_t maxSize = 0;
    if (raiseIsValid(&game, &state, &minSize, &maxSize))
        for (int32_t size = minSize; size <= maxSize; ++size)
            tryAction({actionRaise, size});
}

TreeCounts treeOf(const char* definition) {
    const GamePtr game = parseGame(definition);
    State root{};
    initState(game.get(), 0, &root);
    TreeCounts counts;
    countTree(*game, root, counts);
    return counts;
}

TEST(BettingTree, ThreePlayerKuhn) {
    const TreeCounts counts = treeOf(threePlayerKuhn);
    EXPECT_EQ(counts.decisions[0], 12);
    EXPECT_EQ(counts.folds + counts.showdowns, 13);
}

TEST(BettingTree, TwoPlayerKuhnAndLeduc) {
    const TreeCounts kuhn = treeOf(twoPlayerKuhn);
    EXPECT_EQ(kuhn.decisions[0], 4);
    EXPECT_EQ(kuhn.folds, 2);
    EXPECT_EQ(kuhn.showdowns, 3);
    const TreeCounts two = treeOf(leduc);
    EXPECT_EQ(two.decisions[0], 6);
    EXPECT_EQ(two.decisions[1], 5 * 6);
}

TEST(BettingTree, TwoPlayerLimit) {
    const TreeCounts counts = treeOf(twoPlayerLimit);
    EXPECT_EQ(counts.decisions, (std::array<long, 4>{8, 70, 630, 5670}));
    EXPECT_EQ(counts.folds, 5103);
    EXPECT_EQ(counts.showdowns, 5103);
}

TEST(BettingTree, TwoPlayerNoLimitWithEverySize) {
    std::string text = smallBlindFirst;
    text.replace(text.find("20000 20000"), 11, "20 20");
    text.replace(text.find("50 100"), 6, "1 2");
    const TreeCounts counts = treeOf(text.c_str());
    EXPECT_EQ(counts.decisions, (std::array<long, 4>{1188, 19996, 151124, 738540}));
}

TEST(BettingTree, ThreePlayerLimit) {
    const TreeCounts counts = treeOf(threePlayerLimit);
    EXPECT_EQ(counts.decisions, (std::array<long, 4>{90, 4412, 205962, 9501342}));
    EXPECT_EQ(counts.folds, 4971359);
    EXPECT_EQ(counts.showdowns, 9254143);
}

} // namespace
} // namespace tamarin::test
