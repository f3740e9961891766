#include "analysis/played_hand.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

PlayedHand handOf(const std::string& text) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    State state{};
    EXPECT_GT(readState(text.c_str(), game.get(), &state), 0);
    return playedHand(*game, state);
}

TEST(PlayedHand, HasTheCardsAndActionsOfTheRoundsReached) {
    const PlayedHand hand = handOf("STATE:3:rc/crf:2c3d|AsKh/4c5c6h");
    EXPECT_EQ(hand.hole[0], (HoleCards{0, 5}));
    EXPECT_EQ(hand.hole[1], (HoleCards{51, 46}));
    EXPECT_EQ(hand.board, (std::vector<uint8_t>{8, 12, 18}));
    EXPECT_EQ(hand.actions, (std::vector<uint8_t>{2, 1, 1, 2, 0}));
    EXPECT_TRUE(handOf("STATE:4:f:2c3d|AsKh").board.empty());
}

TEST(Payoff, IsThatOfTheRules) {
    CompiledTree::Settlement end{};
    end.spent = {20, 40};
    end.folded = {1, 0};
    const HoleCards aces{48, 51};
    const HoleCards low{0, 5};
    const std::vector<uint8_t> board{44, 40, 25, 22, 15};
    EXPECT_EQ(payoffAt(end, 0, aces, low, board), -20);
    EXPECT_EQ(payoffAt(end, 1, low, aces, board), 20);
    end = {};
    end.spent = {30, 30};
    EXPECT_EQ(payoffAt(end, 0, aces, low, board), 30);
    EXPECT_EQ(payoffAt(end, 1, low, aces, board), -30);
    EXPECT_EQ(payoffAt(end, 1, {49, 50}, aces, board), 0);
}

} // namespace
} // namespace tamarin::test
