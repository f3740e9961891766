#include "response/betting_rounds.h"

#include "game/games.h"
#include "response/simple_play.h"

#include <algorithm>
#include <set>

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

// What a seat does where it plays a strategy, of one class of hands.
bool takes(const CompiledTree& tree, const HandStrategy& strategy, int seat, int32_t node,
           size_t action) {
    return tree.nodes()[static_cast<size_t>(node)].player != seat ||
           strategy.shares(node, 0)[action] > 0;
}

// The nodes that a round begins with, where the seat does nothing else.
std::set<int32_t> reachedRoots(const CompiledTree& tree, const HandStrategy& strategy, int seat,
                               int round) {
    std::set<int32_t> roots;
    for (size_t n = 0; n < tree.nodes().size(); ++n) {
        const auto& node = tree.nodes()[n];
        if (node.round != round ||
            tree.nodes()[static_cast<size_t>(node.parentEdge / 3)].round == round)
            continue;
        bool reached = true;
        for (int32_t edge = node.parentEdge; edge != CompiledTree::noEdge;
             edge = tree.nodes()[static_cast<size_t>(edge / 3)].parentEdge)
            reached =
                reached && takes(tree, strategy, seat, edge / 3, static_cast<size_t>(edge % 3));
        if (reached)
            roots.insert(static_cast<int32_t>(n));
    }
    return roots;
}

TEST(BettingRounds, WhatAStrategyNeverDoesIsLeftOut) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const auto all = BettingRounds::of(*game, tree);
    ASSERT_TRUE(all.ok());
    std::map<std::pair<SimplePlay, int>, std::array<size_t, 3>> lanes;
    for (const SimplePlay play : {SimplePlay::uniform, SimplePlay::call, SimplePlay::raise})
        for (int seat = 0; seat < 2; ++seat) {
            const SimpleStrategy strategy(tree, play);
            const BettingRounds left = all->reachedBy(tree, strategy, seat);
            EXPECT_EQ(left.entries(), all->entries());
            ASSERT_EQ(left.last(), 3);
            for (int r = 1; r <= 3; ++r) {
                const RoundBetting& round = left.round(r);
                std::set<int32_t> roots;
                for (size_t lane = 0; lane < round.lanes(); ++lane)
                    if (const int32_t root = round.treeNode(0, lane);
                        root != RoundBetting::emptyLane) {
                        EXPECT_TRUE(roots.insert(root).second);
                    }
                EXPECT_EQ(roots, reachedRoots(tree, strategy, seat, r)) << seat << r;
                lanes[{play, seat}][static_cast<size_t>(r) - 1] = roots.size();
                if (r > 1) {
                    EXPECT_LT(round.lanes(), roots.size() + lanesInBlock);
                }
                for (size_t n = 0; n < round.nodes.size(); ++n)
                    for (size_t lane = 0; lane < round.lanes(); ++lane) {
                        const int32_t node = round.treeNode(n, lane);
                        for (size_t a = 0; node != RoundBetting::emptyLane && a < 3; ++a) {
                            const int16_t child = round.nodes[n].child[a];
                            const int32_t there = tree.nodes()[static_cast<size_t>(node)].child[a];
                            const bool goes = there != CompiledTree::noChild &&
                                              takes(tree, strategy, seat, node, a);
                            if (play != SimplePlay::uniform && round.nodes[n].seat == seat) {
                                EXPECT_EQ(child != RoundBetting::noAction, goes);
                            }
                            if (goes && child >= 0) {
                                EXPECT_EQ(round.treeNode(static_cast<size_t>(child), lane), there);
                            }
                        }
                    }
            }
        }
    for (int seat = 0; seat < 2; ++seat) {
        EXPECT_EQ((lanes[{SimplePlay::uniform, seat}]), (std::array<size_t, 3>{7, 63, 567}));
        EXPECT_EQ((lanes[{SimplePlay::call, seat}]), (std::array<size_t, 3>{2, 4, 8}));
    }
    // Who acts first is met in three ways in a round, who comes second in five.
    EXPECT_EQ((lanes[{SimplePlay::raise, 0}]), (std::array<size_t, 3>{4, 12, 36}));
    EXPECT_EQ((lanes[{SimplePlay::raise, 1}]), (std::array<size_t, 3>{2, 10, 50}));
    EXPECT_EQ(all->numBlocks(), 1U + 8 + 71);
}

// Of a strategy that never comes to the flop, a lane stays to walk.
TEST(BettingRounds, WhoFoldsAtOnceLeavesOneLane) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const auto all = BettingRounds::of(*game, tree);
    ASSERT_TRUE(all.ok());
    const SimpleStrategy strategy(tree, SimplePlay::fold);
    size_t used = 0;
    for (int seat = 0; seat < 2; ++seat) {
        const BettingRounds left = all->reachedBy(tree, strategy, seat);
        EXPECT_EQ(left.numBlocks(), 3U);
        for (size_t lane = 0; lane < left.round(1).lanes(); ++lane)
            used += left.round(1).treeNode(0, lane) != RoundBetting::emptyLane ? 1U : 0U;
    }
    EXPECT_EQ(used, 2U); // who is the big blind sees the flop where the other calls
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
