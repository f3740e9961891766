#include "response/betting_rounds.h"

#include "game/games.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string refusalOf(const Game& game) {
    const CompiledTree tree(game);
    const auto rounds = BettingRounds::of(game, tree);
    return rounds.ok() ? "" : rounds.error();
}

TEST(BettingRounds, LimitHasAsManyLanesAsWaysToARound) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const auto rounds = BettingRounds::of(*game, tree);
    ASSERT_TRUE(rounds.ok());
    ASSERT_EQ(rounds->last(), 3);
    EXPECT_EQ(rounds->entries().size(), 7U);
    const std::array<size_t, 3> lanes{7, 63, 567};
    for (int r = 1; r <= 3; ++r) {
        const RoundBetting& round = rounds->round(r);
        size_t used = 0;
        for (size_t lane = 0; lane < round.lanes(); ++lane)
            used += round.treeNode(0, lane) != RoundBetting::emptyLane ? 1U : 0U;
        EXPECT_EQ(used, lanes[static_cast<size_t>(r) - 1]);
        EXPECT_LT(round.lanes(), used + lanesInBlock); // no block is without use
        EXPECT_EQ(round.nodes.size(), 10U);
        EXPECT_EQ(round.endings.size(), 17U); // eight folds, nine that go on
        EXPECT_EQ(round.continuing, r < 3 ? 9U : 0U);
    }
}

// Every lane leads where the tree leads, and its stakes are the tree's.
TEST(BettingRounds, LanesFollowTheTree) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const auto rounds = BettingRounds::of(*game, tree);
    ASSERT_TRUE(rounds.ok());
    size_t nodes = 0;
    for (int r = 1; r <= 3; ++r) {
        const RoundBetting& round = rounds->round(r);
        for (size_t n = 0; n < round.nodes.size(); ++n)
            for (size_t lane = 0; lane < round.lanes(); ++lane) {
                const int32_t id = round.treeNode(n, lane);
                if (id == RoundBetting::emptyLane)
                    continue;
                ++nodes;
                const auto& node = tree.nodes()[static_cast<size_t>(id)];
                ASSERT_EQ(node.player, round.nodes[n].seat);
                ASSERT_EQ(node.round, r);
                for (size_t a = 0; a < numAbstractedActions; ++a) {
                    const int16_t child = round.nodes[n].child[a];
                    ASSERT_EQ(child == RoundBetting::noAction,
                              node.child[a] == CompiledTree::noChild);
                    if (child == RoundBetting::noAction)
                        continue;
                    if (child >= 0) {
                        ASSERT_EQ(round.treeNode(static_cast<size_t>(child), lane), node.child[a]);
                        continue;
                    }
                    const auto ending = static_cast<size_t>(~child);
                    const auto& end = round.endings[ending];
                    if (end.kind == RoundBetting::EndingKind::nextRound) {
                        const int32_t below = round.laneBelow(end.number, lane);
                        ASSERT_NE(below, RoundBetting::emptyLane);
                        ASSERT_EQ(rounds->round(r + 1).treeNode(0, static_cast<size_t>(below)),
                                  node.child[a]);
                        ASSERT_EQ(round.stake(ending, lane), 0);
                        continue;
                    }
                    const auto& settlement =
                        tree.settlements()[static_cast<size_t>(~node.child[a])];
                    const bool folds = end.kind == RoundBetting::EndingKind::fold;
                    ASSERT_EQ(round.stake(ending, lane), settlement.spent[folds ? end.folded : 0]);
                    ASSERT_EQ(settlement.folded[0] != 0, folds && end.folded == 0);
                    ASSERT_EQ(settlement.folded[1] != 0, folds && end.folded == 1);
                }
            }
    }
    EXPECT_EQ(nodes, 10U * (7 + 63 + 567));
    EXPECT_EQ(nodes + 8, tree.nodes().size()); // eight before the flop
}

TEST(BettingRounds, RefusesWhatIsNotLimitForTwo) {
    const auto refusal = [](const std::string& name) {
        const GamePtr game = loadGameFile(name);
        return refusalOf(*game);
    };
    EXPECT_EQ(refusal("kuhn.limit.3p.game"),
              "only games for two with two rounds or more can be measured so");
    EXPECT_EQ(refusal("kuhn.limit.2p.game"),
              "only games for two with two rounds or more can be measured so");
    EXPECT_EQ(refusal("holdem.nolimit.2p.reverse_blinds.game"),
              "only limit games can be measured so");
}

TEST(BettingRounds, RefusesCardsAndStacksThatItDoesNotCountOn) {
    const auto refusal = [](const auto& change) {
        const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
        change(*game);
        return refusalOf(*game);
    };
    EXPECT_EQ(refusal([](Game&) {}), "");
    EXPECT_EQ(refusal([](Game& game) { game.numHoleCards = 1; }),
              "only games with two hole cards can be measured so");
    const std::string board = "only games with no board in the first round, and more of it in each "
                              "that follows, can be measured so";
    EXPECT_EQ(refusal([](Game& game) { game.numBoardCards[0] = 1; }), board);
    EXPECT_EQ(refusal([](Game& game) { game.numBoardCards[2] = 0; }), board);
    for (int seat = 0; seat < 2; ++seat)
        EXPECT_EQ(refusal([&](Game& game) { game.stack[seat] = 100; }),
                  "only games whose stacks never run out can be measured so");
}

} // namespace
} // namespace tamarin::test
