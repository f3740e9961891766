#include "menu/tree_follower.h"

#include "game/games.h"
#include "menu/bet_translation.h"
#include "support/split_mix.h"

#include <gtest/gtest.h>

namespace tamarin {
namespace {

const char* const threeWays = R"(GAMEDEF
nolimit
numPlayers = 3
numRounds = 4
stack = 1000 1700 400
blind = 5 10 0
firstPlayer = 3 1 1 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3 1 1
END GAMEDEF
)";

struct Followed {
    Followed(GamePtr rules, const std::string& menu)
        : game(std::move(rules)), tree(*game, *BettingMenu::parse(menu, "menu")),
          follower(*game, tree) {
        begin();
    }
    void begin() {
        initState(game.get(), 0, &real);
        follower.begin();
    }
    // What the tree takes a real action for.
    Action taken(Action action, double draw = 0.5) {
        const MenuTree::Node& node = tree.node(*follower.node(real));
        follower.follow(real, action, draw);
        EXPECT_TRUE(isValidAction(game.get(), &real, 0, &action));
        doAction(game.get(), &action, &real);
        for (size_t e = 0; e < node.numEdges; ++e) {
            const auto now = follower.node(real);
            if (now && tree.edges(node)[e].child == *now)
                return tree.action(node, e);
        }
        return {actionInvalid, 0};
    }
    Action take(size_t edge) {
        const Action action = follower.take(real, edge);
        doAction(game.get(), &action, &real);
        return action;
    }

    GamePtr game;
    MenuTree tree;
    TreeFollower follower;
    State real{};
};

GamePtr headsUp() {
    return test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
}

TEST(BetTranslation, IsThePublishedFormula) {
    // A = 0, B = 1, x = 1/2: (1/2)(1) / ((1)(3/2)).
    EXPECT_DOUBLE_EQ(shareOfSmaller(0, 1, 0.5), 1 / 3.0);
    // A = 1/2, B = 2, x = 1: (1)(3/2) / ((3/2)(2)).
    EXPECT_DOUBLE_EQ(shareOfSmaller(0.5, 2, 1), 0.5);
    EXPECT_DOUBLE_EQ(shareOfSmaller(0.5, 2, 0.5), 1);
    EXPECT_DOUBLE_EQ(shareOfSmaller(0.5, 2, 2), 0);
    double last = 1;
    for (double bet = 0.6; bet < 2; bet += 0.1) {
        EXPECT_LT(shareOfSmaller(0.5, 2, bet), last);
        last = shareOfSmaller(0.5, 2, bet);
    }
}

TEST(TreeFollower, TakesBetsForThoseOfTheTree) {
    Followed hand(headsUp(), "bets = 1/2 1 A");
    // The tree raises to 200, 300 and 20,000: by 1/2, 1 and 99 of 200. 250 is 3/4 of a pot:
    // (1/4)(3/2) / ((1/2)(7/4)) = 3/7 for the smaller.
    const std::vector<std::pair<double, int32_t>> draws{{0.0, 200}, {0.42, 200}, {0.43, 300}};
    for (const auto& [draw, total] : draws) {
        hand.begin();
        EXPECT_EQ(hand.taken({actionRaise, 250}, draw).size, total) << draw;
    }
    hand.begin();
    EXPECT_EQ(hand.taken({actionRaise, 300}, 0.999).size, 300);
    hand.begin();
    EXPECT_EQ(hand.taken({actionRaise, 20000}, 0.0).size, 20000);
    // 5,000 is 24.5 pots: (74.5)(2) / ((98)(25.5)) = 0.0596.
    hand.begin();
    EXPECT_EQ(hand.taken({actionRaise, 5000}, 0.059).size, 300);
    hand.begin();
    EXPECT_EQ(hand.taken({actionCall, 0}).type, actionCall);
}

TEST(TreeFollower, ASmallBetMayBeNone) {
    Followed hand(headsUp(), "bets = 1 A");
    hand.taken({actionCall, 0});
    hand.taken({actionCall, 0});
    EXPECT_EQ(hand.real.round, 1);
    // A half of the pot of 200: taken for a check with (1/2) / (3/2).
    EXPECT_EQ(hand.taken({actionRaise, 200}, 0.33).type, actionCall);
    const MenuTree::Node& node = hand.tree.node(*hand.follower.node(hand.real));
    EXPECT_FALSE(node.hasFold); // in the tree nothing was bet
    // Its bet of a pot is one of the real pot: 400 after a call of 200.
    EXPECT_EQ(hand.take(1).size, 600);

    hand.begin();
    hand.taken({actionCall, 0});
    hand.taken({actionCall, 0});
    hand.taken({actionCall, 0});
    hand.follower.follow(hand.real, {actionRaise, 200}, 0.1); // the tree goes on to the turn
    const Action bet{actionRaise, 200};
    doAction(hand.game.get(), &bet, &hand.real);
    EXPECT_FALSE(hand.follower.node(hand.real).has_value());
    const Action answer = hand.follower.takeWithoutNode(hand.real);
    EXPECT_EQ(answer.type, actionCall);
    doAction(hand.game.get(), &answer, &hand.real);
    EXPECT_EQ(hand.real.round, 2);
    ASSERT_TRUE(hand.follower.node(hand.real).has_value());
    EXPECT_EQ(hand.tree.node(*hand.follower.node(hand.real)).round, 2);
}

TEST(TreeFollower, AllInStaysAllIn) {
    Followed hand(headsUp(), "bets = 1 A");
    hand.taken({actionRaise, 400}, 0); // taken for 300
    const MenuTree::Node& node = hand.tree.node(*hand.follower.node(hand.real));
    EXPECT_EQ(hand.take(node.numEdges - size_t{1}).size, 20000);
}

double uniform(SplitMix& random) {
    return unitInterval(random());
}

// Any legal action: a raise of any size between the least and the most, small ones more often.
Action anyAction(const Game& game, const State& state, SplitMix& random) {
    int32_t least = 0;
    int32_t most = 0;
    if (random.below(3) == 0 && mayRaise(game, state, least, most)) {
        const double share = uniform(random) * uniform(random) * uniform(random);
        const int32_t more = static_cast<int32_t>(share * (most - least));
        return {actionRaise, game.bettingRule == limitRule ? 0
                             : random.below(8) == 0        ? most
                                                           : least + more};
    }
    Action action{random.below(12) == 0 ? actionFold : actionCall, 0};
    if (!isValidAction(&game, &state, 0, &action))
        action = {actionCall, 0};
    return action;
}

struct Seen {
    int states = 0;
    int withNode = 0;
    int lost = 0;
};

// One seat plays along the tree, the others play anything; every answer must be legal.
Seen playHands(const Game& game, const MenuTree& tree, int hands) {
    Seen seen;
    SplitMix random(17);
    TreeFollower follower(game, tree);
    for (int hand = 0; hand < hands; ++hand) {
        const auto own = static_cast<int>(random.below(game.numPlayers));
        State real{};
        initState(&game, 0, &real);
        follower.begin();
        while (!real.finished) {
            Action action = anyAction(game, real, random);
            if (currentPlayer(&game, &real) == own) {
                const auto node = follower.node(real);
                ++seen.states;
                seen.withNode += node.has_value();
                seen.lost += follower.lost();
                EXPECT_FALSE(node && follower.lost());
                action = node ? follower.take(real, random.below(tree.node(*node).numEdges))
                              : follower.takeWithoutNode(real);
            } else {
                follower.follow(real, action, uniform(random));
            }
            const Action before = action;
            EXPECT_TRUE(isValidAction(&game, &real, 0, &action));
            EXPECT_EQ(before.size, action.size);
            doAction(&game, &action, &real);
        }
    }
    return seen;
}

TEST(TreeFollower, EveryStateHasALegalAnswer) {
    const GamePtr game = headsUp();
    for (const char* text : {"bets = 1 A", "bets = 1/2 1 2 A, 1 A, 1 A, A", "bets = none",
                             "bets = 3b A, min\nbets flop = 1/3, none"}) {
        const MenuTree tree(*game, *BettingMenu::parse(text, "menu"));
        const Seen seen = playHands(*game, tree, 10'000);
        EXPECT_GT(seen.states, 15'000) << text;
        EXPECT_GT(seen.withNode, seen.states / 2) << text;
        EXPECT_EQ(seen.lost, 0) << text;
    }
    const GamePtr three = test::parseGame(threeWays);
    const MenuTree tree(*three, *BettingMenu::parse("bets = 1 A, A", "menu"));
    const Seen seen = playHands(*three, tree, 10'000);
    EXPECT_GT(seen.withNode, seen.states / 2);
    EXPECT_GT(seen.lost, 0) << "a seat folds to a bet that was taken for none";
}

TEST(TreeFollower, LimitHandsAreFollowedExactly) {
    const GamePtr game = test::loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const MenuTree tree(*game);
    const Seen seen = playHands(*game, tree, 10'000);
    EXPECT_GT(seen.states, 15'000);
    EXPECT_EQ(seen.withNode, seen.states);
    EXPECT_EQ(seen.lost, 0);
}

// Play that keeps to the tree's sizes is never anywhere but at its node, with its chips.
TEST(TreeFollower, PlayByTheMenuIsFollowedExactly) {
    for (const bool three : {false, true}) {
        const GamePtr game = three ? test::parseGame(threeWays) : headsUp();
        const MenuTree tree(*game, *BettingMenu::parse("bets = 1/2 1 A, A", "menu"));
        TreeFollower follower(*game, tree);
        SplitMix random(23);
        for (int hand = 0; hand < 10'000; ++hand) {
            State real{};
            initState(game.get(), 0, &real);
            follower.begin();
            int32_t at = 0;
            while (!real.finished) {
                ASSERT_EQ(follower.node(real), at);
                const MenuTree::Node& node = tree.node(at);
                const size_t edge = random.below(node.numEdges);
                Action action = tree.action(node, edge);
                if (random.below(2) == 0)
                    follower.follow(real, action, uniform(random));
                else
                    ASSERT_EQ(follower.take(real, edge).size, action.size);
                doAction(game.get(), &action, &real);
                at = tree.edges(node)[edge].child;
            }
            ASSERT_FALSE(follower.node(real).has_value());
        }
    }
}

} // namespace
} // namespace tamarin
