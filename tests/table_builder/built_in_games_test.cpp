#include "table_builder/built_in_games.h"

#include "abstraction/sparse_tables.h"
#include "support/file.h"
#include "support/tree_paths.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(BuiltInGames, AreTheFilesOfTheTree) {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const auto file =
                readWholeFile(test::inTree("games/" + auxiliaryGameName(players, round)));
            ASSERT_TRUE(file.ok()) << file.error();
            EXPECT_EQ(auxiliaryGameText(players, round), *file);
        }
}

using GamesInDirectory = PlayingDirectory;

TEST_F(GamesInDirectory, ComeFirst) {
    auto builtIn = auxiliaryGameIn(".", 2, 1);
    ASSERT_TRUE(builtIn.ok());
    EXPECT_EQ((*builtIn)->raiseSize[0], 1);

    std::string text = auxiliaryGameText(2, 1);
    text.replace(text.find("raiseSize = 1"), 13, "raiseSize = 2");
    ASSERT_TRUE(writeWholeFile("kuhn.flop.2p.game", text).ok());
    auto own = auxiliaryGameIn(".", 2, 1);
    ASSERT_TRUE(own.ok());
    EXPECT_EQ((*own)->raiseSize[0], 2);
}

TEST_F(GamesInDirectory, MustBeOfTheRound) {
    ASSERT_TRUE(writeWholeFile("kuhn.flop.2p.game", auxiliaryGameText(2, 3)).ok());
    const auto game = auxiliaryGameIn(".", 2, 1);
    ASSERT_FALSE(game.ok());
    EXPECT_NE(game.error().find("kuhn.flop.2p.game: this is no auxiliary game of the flop"),
              std::string::npos)
        << game.error();
}

} // namespace
} // namespace tamarin::test
