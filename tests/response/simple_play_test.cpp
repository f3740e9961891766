#include "response/simple_play.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(SimplePlay, KnowsItsNames) {
    EXPECT_EQ(simplePlayNamed("uniform"), SimplePlay::uniform);
    EXPECT_EQ(simplePlayNamed("fold"), SimplePlay::fold);
    EXPECT_EQ(simplePlayNamed("call"), SimplePlay::call);
    EXPECT_EQ(simplePlayNamed("raise"), SimplePlay::raise);
    EXPECT_FALSE(simplePlayNamed("Call"));
    EXPECT_FALSE(simplePlayNamed(""));
}

TEST(SimplePlay, DoesWhatItsNameSaysWhereItMay) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const auto node = [&](const std::string& sequence) {
        for (size_t n = 0; n < tree.nodes().size(); ++n)
            if (tree.sequence(static_cast<int32_t>(n)) == sequence)
                return static_cast<int32_t>(n);
        return -1;
    };
    const auto shares = [&](SimplePlay play, const std::string& sequence) {
        const SimpleStrategy strategy(tree, play);
        EXPECT_EQ(strategy.numClasses(1, 2), 1U);
        return strategy.shares(node(sequence), 0);
    };
    constexpr double third = 1.0 / 3;
    EXPECT_EQ(shares(SimplePlay::uniform, ""), (ActionShares{third, third, third}));
    EXPECT_EQ(shares(SimplePlay::uniform, "c"), (ActionShares{0, 0.5, 0.5}));   // nothing is owed
    EXPECT_EQ(shares(SimplePlay::uniform, "rrr"), (ActionShares{0.5, 0.5, 0})); // three raises
    EXPECT_EQ(shares(SimplePlay::fold, ""), (ActionShares{1, 0, 0}));
    EXPECT_EQ(shares(SimplePlay::fold, "c"), (ActionShares{0, 1, 0}));
    EXPECT_EQ(shares(SimplePlay::call, "r"), (ActionShares{0, 1, 0}));
    EXPECT_EQ(shares(SimplePlay::raise, "r"), (ActionShares{0, 0, 1}));
    EXPECT_EQ(shares(SimplePlay::raise, "rrr"), (ActionShares{0, 1, 0}));
}

} // namespace
} // namespace tamarin::test
