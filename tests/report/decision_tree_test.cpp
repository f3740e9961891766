#include "report/decision_tree.h"

#include "clustering/sparse_abstraction.h"
#include "game/games.h"
#include "report/decision_view.h"
#include "response/measured.h"
#include "support/split_mix.h"
#include "support/temp_directory.h"

#include <numeric>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(DecisionTree, ActionsAreFollowedByTheRules) {
    const GamePtr game = parseGame(shortGame(4, 13, "3 2 1 1", "10 10 20 20", "0 3 1 1"));
    const CompiledTree tree(*game);
    const RandomStrategy strategy(tree, 5);
    const LimitDecisions decisions(tree, strategy);
    EXPECT_EQ(followActions(decisions, "")->node, 0);
    const auto way = followActions(decisions, "rc/cr");
    ASSERT_TRUE(way.ok());
    EXPECT_EQ(tree.sequence(way->node), "rccr");
    EXPECT_EQ(actionsOf(decisions, *way), "rc/cr");
    EXPECT_EQ(followActions(decisions, "rccr")->node, way->node);
    EXPECT_EQ(actionsOf(decisions, *followActions(decisions, "cccc")), "cc/cc/");
    const auto error = [&](const std::string& actions) {
        const auto refused = followActions(decisions, actions);
        return refused ? "" : refused.error();
    };
    EXPECT_EQ(error("rx"), "'x' is no action: they are f, c and r");
    EXPECT_EQ(error("rf"), "after \"rf\" the hand is over");
    EXPECT_EQ(error("cc/rcf"), "the rules do not allow the last action of \"ccrcf\"");
    EXPECT_EQ(error("rrrr"), "the rules do not allow the last action of \"rrrr\"");
    EXPECT_EQ(error("r20"),
              "the last action of \"r20\" is none that the blueprint has there: f, c, r");
}

// A blueprint of no-limit hold'em over a sparse card abstraction, in which each set has shares of
// its own.
class MenuDecisionsOfABlueprint : public testing::Test {
protected:
    void SetUp() override {
        writeSparseAbstraction("few", directory_.path());
        const auto abstraction = CardAbstraction::open(directory_.path(), "few");
        ASSERT_TRUE(abstraction.ok()) << abstraction.error();
        const BucketCounts counts = abstraction->description().counts();
        const auto menu = BettingMenu::parse("bets = 1/2 1 A, A", "menu");
        const MenuTree tree(*game_, *menu);
        MenuSets sets(tree, 2, counts);
        SplitMix random(3);
        for (int32_t& sum : sets.allSums())
            sum = static_cast<int32_t>(random.below(1000));
        const std::string path = directory_.file("blueprint");
        const MenuOrigin origin{{hashOfGame(*game_),
                                 "few",
                                 hashOfBuckets(abstraction->description()),
                                 {counts.begin(), counts.end()},
                                 1,
                                 64},
                                menu->text(),
                                {}};
        ASSERT_TRUE(writeMenuBlueprint(path, sets, origin).ok());
        auto ready = ReadyBlueprint::open(path, directory_.path(), *game_);
        ASSERT_TRUE(ready.ok()) << ready.error();
        ready_ = std::move(*ready);
        decisions_ = std::make_unique<MenuDecisions>(*game_, *ready_);
    }
    std::string errorOf(const std::string& actions) const {
        const auto refused = followActions(*decisions_, actions);
        return refused ? "" : refused.error();
    }

    TempDirectory directory_;
    const GamePtr game_ = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    std::unique_ptr<ReadyBlueprint> ready_;
    std::unique_ptr<MenuDecisions> decisions_;
};

TEST_F(MenuDecisionsOfABlueprint, NameTheirSizes) {
    const auto edges = decisions_->edges({});
    ASSERT_EQ(edges.size(), 5U);
    EXPECT_EQ(edges[0].name, "fold");
    EXPECT_EQ(edges[2].name, "raise 200");
    EXPECT_EQ(edges[2].letters, "r200");
    EXPECT_EQ(edges[3].raiseTo, 300);
    EXPECT_DOUBLE_EQ(edges[3].pots, 1);
    EXPECT_FALSE(edges[3].allIn);
    EXPECT_EQ(edges[4].name, "raise 20000");
    EXPECT_TRUE(edges[4].allIn);
    // The pot is 600 on the flop; then a half of it was bet.
    const auto way = followActions(*decisions_, "r300c/r600");
    ASSERT_TRUE(way.ok()) << way.error();
    EXPECT_EQ(actionsOf(*decisions_, *way), "r300c/r600");
    EXPECT_EQ(decisions_->place(way->node).seat, 1);
    EXPECT_EQ(decisions_->place(way->node).round, 1);
    const auto next = decisions_->edges(*way);
    ASSERT_EQ(next.size(), 3U);
    EXPECT_EQ(next[2].letters, "r20000");
    EXPECT_DOUBLE_EQ(next[2].pots, 19400 / 1200.0);

    EXPECT_EQ(errorOf("r250"),
              "the last action of \"r250\" is none that the blueprint has there: f, c, r200, r300, "
              "r20000");
    for (const std::string actions : {"r", "r30", "r3000"})
        EXPECT_EQ(errorOf(actions), "the last action of \"" + actions +
                                        "\" is none that the blueprint has there: f, c, r200, "
                                        "r300, r20000");
    EXPECT_EQ(errorOf("r300cr600f"), "after \"r300cr600f\" the hand is over");
    EXPECT_EQ(errorOf("cc/f"), "the rules do not allow the last action of \"ccf\"");
}

TEST_F(MenuDecisionsOfABlueprint, AreViewedWithAllTheirRaises) {
    const auto way = followActions(*decisions_, "r200c/c");
    ASSERT_TRUE(way.ok());
    const std::vector<uint8_t> board{3, 17, 40};
    const auto view = viewDecision(*game_, *decisions_, *way, board);
    ASSERT_TRUE(view.ok()) << view.error();
    EXPECT_EQ(view->seat, 1);
    ASSERT_EQ(view->next.size(), 4U);
    EXPECT_EQ(view->next[0], "the turn");
    EXPECT_EQ(view->next[3], "seat 0");
    const auto& hand = view->hands[77];
    const std::vector<uint8_t> cards{hand.cards[0], hand.cards[1], 3, 17, 40};
    const auto first = decisions_->classOf(1, 0, std::span(cards).first(2));
    EXPECT_EQ(hand.known, decisions_->classOf(1, 1, cards));
    EXPECT_DOUBLE_EQ(hand.reach, decisions_->shares(0, first)[2]);
    const auto parts = ready_->blueprint().parts(way->node, hand.known);
    ASSERT_EQ(hand.shares.size(), parts.size());
    for (size_t e = 0; e < parts.size(); ++e)
        EXPECT_DOUBLE_EQ(hand.shares[e], parts[e] / 255.0);
    const auto total = view->total();
    EXPECT_NEAR(std::accumulate(total.shares.begin(), total.shares.end(), 0.0), 1, 1e-9);
    const std::string text = decisionText(*view);
    EXPECT_NE(text.find("\n  raise 400, 0.5 pots "), std::string::npos) << text;
    EXPECT_NE(text.find("\n  raise 600, 1 pot "), std::string::npos) << text;
    EXPECT_NE(text.find("\n  raise 20000, all-in "), std::string::npos) << text;
    const auto json = decisionJson(*view);
    EXPECT_EQ(json["strategy"].size(), 4U);
    EXPECT_EQ(json["sizes"]["raise 600"]["to"], 600);
    EXPECT_EQ(json["sizes"]["raise 600"]["pots"], 1.0);
    EXPECT_EQ(json["sizes"]["raise 20000"]["allIn"], true);
    EXPECT_FALSE(json["sizes"].contains("call"));
}

} // namespace
} // namespace tamarin::test
