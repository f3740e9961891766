#include "training/small_game.h"

#include "solver/games.h"

#include <numeric>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(SmallGame, CountsWhatItLooksAt) {
    const auto game = SmallGame::make(*kuhn3());
    ASSERT_TRUE(game.ok());
    EXPECT_EQ((*game)->cost().deals, 24U);
    EXPECT_EQ((*game)->cost().decisionNodes, 12U);
    EXPECT_EQ((*game)->cost().informationSets, 48U);
    EXPECT_GT((*game)->cost().bytes, 0U);
}

TEST(SmallGame, MergesDealsThatNobodyCanTellApart) {
    // Six cards in two suits, three of them dealt. The board cannot be seen in the keys: what is
    // left is both ranks and who wins.
    const auto game = SmallGame::make(*leduc2());
    ASSERT_TRUE(game.ok());
    EXPECT_EQ((*game)->cost().deals, 120U);
    EXPECT_EQ((*game)->deals().size, 120U);
    EXPECT_EQ((*game)->keyDeals().size, 15U);
    for (const DealTable* deals : {&(*game)->deals(), &(*game)->keyDeals()})
        EXPECT_NEAR(std::accumulate(deals->weight.begin(), deals->weight.end(), 0.0), 1.0, 1e-12);
}

TEST(SmallGame, AViewIsAHandAndTheBoardSoFar) {
    const auto game = SmallGame::make(*leduc2());
    ASSERT_TRUE(game.ok());
    EXPECT_EQ((*game)->deals().numViews, (std::vector<uint32_t>{6, 6, 30, 30}));
    const auto hands = SmallGame::make(*twoCards());
    ASSERT_TRUE(hands.ok());
    EXPECT_EQ((*hands)->deals().numViews, (std::vector<uint32_t>{15, 15}));
}

TEST(SmallGame, RefusesAFullDeckWithTheFigures) {
    const auto game = SmallGame::make(*holdem2());
    ASSERT_FALSE(game.ok());
    EXPECT_EQ(game.error(), "a 52-card game cannot be enumerated: 1,335,062,881,152,000 deals, and "
                            "no card-rank keys for them");
}

TEST(SmallGame, RefusesTooManyDealsWithTheFigures) {
    const auto game = SmallGame::make(
        *gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 1\nraiseSize = 1\n"
                  "firstPlayer = 1\nmaxRaises = 1\nnumSuits = 4\nnumRanks = 6\n"
                  "numHoleCards = 3\nnumBoardCards = 0\nEND GAMEDEF\n"));
    ASSERT_FALSE(game.ok());
    EXPECT_EQ(game.error(), "the game has 96,909,120 deals; at most 20,000,000 can be enumerated");
}

TEST(SmallGame, RefusesATreeWithoutEnd) {
    const auto game = SmallGame::make(
        *gameFrom("GAMEDEF\nlimit\nnumPlayers = 5\nnumRounds = 4\nstack = 999 999 999 999 999\n"
                  "blind = 1 1 1 1 1\nraiseSize = 1 1 1 1\nnumSuits = 1\nnumRanks = 6\n"
                  "numHoleCards = 1\nnumBoardCards = 0 0 0 0\nEND GAMEDEF\n"));
    ASSERT_FALSE(game.ok());
    EXPECT_EQ(game.error(), "the betting tree has more than 2000000 decision nodes");
}

TEST(SmallGame, RefusesDealsTimesNodes) {
    const auto game = SmallGame::make(
        *gameFrom("GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 2\nblind = 1 1 1\n"
                  "raiseSize = 1 2\nfirstPlayer = 1 1\nmaxRaises = 4 4\nnumSuits = 4\n"
                  "numRanks = 6\nnumHoleCards = 1\nnumBoardCards = 0 2\nEND GAMEDEF\n"));
    ASSERT_FALSE(game.ok());
    EXPECT_NE(game.error().find("visits a pass; at most 4,000,000,000 are made"), std::string::npos)
        << game.error();
}

} // namespace
} // namespace tamarin::test
