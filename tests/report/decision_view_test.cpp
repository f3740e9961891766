#include "report/decision_view.h"

#include "eval/hand_range.h"
#include "response/measured.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

struct Viewed {
    GamePtr game = parseGame(shortGame(4, 13, "3 2 1 1", "10 10 20 20", "0 3 1 1"));
    CompiledTree tree{*game};
    RandomStrategy strategy{tree, 5};
    LimitDecisions decisions{tree, strategy};

    int32_t node(const std::string& actions) const {
        const auto way = followActions(decisions, actions);
        EXPECT_TRUE(way.ok()) << way.error();
        return way->node;
    }
    Result<DecisionView> view(const std::string& actions, const std::string& board) const {
        const auto way = followActions(decisions, actions);
        EXPECT_TRUE(way.ok()) << way.error();
        return viewDecision(*game, decisions, *way, *parseCards(board));
    }
};

std::string errorOf(const Result<DecisionView>& view) {
    return view ? "" : view.error();
}

// Of every hand: its class in each round on the way, and what its seat did there.
TEST(DecisionView, HandsComeWithTheReachOfTheirSeat) {
    const Viewed viewed;
    const auto flop = viewed.view("crc/r", "Ah7d2s");
    ASSERT_TRUE(flop.ok()) << flop.error();
    EXPECT_EQ(flop->actions, "crc/r");
    EXPECT_EQ(flop->seat, 1);
    EXPECT_EQ(flop->round, 1);
    EXPECT_EQ(flop->hands.size(), 49U * 48 / 2);
    const auto board = *parseCards("Ah7d2s");
    double reach = 0;
    ActionShares shares{};
    for (const DecisionView::Hand& hand : flop->hands) {
        const std::vector<uint8_t> cards{hand.cards[0], hand.cards[1], board[0], board[1],
                                         board[2]};
        const auto first = viewed.strategy.classOf(1, 0, std::span(cards).first(2));
        const auto now = viewed.strategy.classOf(1, 1, cards);
        // Seat 1 opened with a call, and called a raise.
        const double wanted = viewed.strategy.shares(viewed.node(""), first)[1] *
                              viewed.strategy.shares(viewed.node("cr"), first)[1];
        ASSERT_DOUBLE_EQ(hand.reach, wanted);
        ASSERT_EQ(hand.known, now);
        const ActionShares own = viewed.strategy.shares(viewed.node("crcr"), now);
        ASSERT_TRUE(std::ranges::equal(hand.shares, own));
        reach += wanted;
        for (size_t a = 0; a < own.size(); ++a)
            shares[a] += wanted * own[a];
    }
    const DecisionView::Total total = flop->total();
    EXPECT_NEAR(total.reach, reach, 1e-9);
    double sum = 0;
    for (size_t a = 0; a < shares.size(); ++a) {
        EXPECT_NEAR(total.shares[a], shares[a] / reach, 1e-9);
        sum += total.shares[a];
    }
    EXPECT_NEAR(sum, 1, 1e-9);
    EXPECT_EQ(flop->next[0], "the hand ends");
    EXPECT_EQ(flop->next[1], "the turn");
    EXPECT_EQ(flop->next[2], "seat 0");
}

TEST(DecisionView, BoardsAreThoseOfTheRound) {
    const Viewed viewed;
    EXPECT_EQ(errorOf(viewed.view("", "Ah7d2s")),
              "the decision is before the flop, where the board has 0 cards, not 3");
    EXPECT_EQ(errorOf(viewed.view("cc", "")),
              "the decision is on the flop, where the board has 3 cards, not 0");
    EXPECT_EQ(errorOf(viewed.view("cc/cc", "Ah7d2s")),
              "the decision is on the turn, where the board has 4 cards, not 3");
    EXPECT_EQ(errorOf(viewed.view("cc/cc/cc", "Ah7d2s3s4s")), "");
    const auto way = followActions(viewed.decisions, "cc");
    EXPECT_EQ(errorOf(viewDecision(*viewed.game, viewed.decisions, *way, {5, 9, 5})),
              "the board has 3d twice");
}

TEST(DecisionView, TextHasTheGridOfStartingHands) {
    const Viewed viewed;
    const auto first = viewed.view("", "");
    ASSERT_TRUE(first.ok());
    const std::string text = decisionText(*first);
    EXPECT_TRUE(text.starts_with(
        "seat 1 before the flop, first to act\n100.0% of its hands come here\n  fold  "))
        << text;
    EXPECT_EQ(std::ranges::count(text, '\n'), 6 + 14);
    // Aces are one class.
    const auto hand = *parseCards("AsAh");
    const ActionShares aces = viewed.strategy.shares(0, viewed.strategy.classOf(1, 0, hand));
    const auto best = std::ranges::max_element(aces) - aces.begin();
    const std::string cell =
        std::string(1, "fcr"[best]) +
        std::to_string(static_cast<int>(std::round(100 * aces[static_cast<size_t>(best)])));
    const size_t row = text.find("\n A");
    ASSERT_NE(row, std::string::npos);
    EXPECT_EQ(text.substr(row + 3, 5), std::string(5 - cell.size(), ' ') + cell);
}

TEST(DecisionView, JsonHasEveryHandOnABoard) {
    const Viewed viewed;
    const auto flop = viewed.view("cc/r", "AsKd7c");
    ASSERT_TRUE(flop.ok());
    const auto json = decisionJson(*flop);
    EXPECT_EQ(json["actions"], "cc/r");
    EXPECT_EQ(json["board"], "AsKd7c");
    EXPECT_EQ(json["round"], "flop");
    EXPECT_EQ(json["seat"], 1);
    EXPECT_EQ(json["hands"].size(), 1176U);
    EXPECT_EQ(json["classes"].size(), 169U);
    EXPECT_EQ(json["classes"]["AKs"]["hands"], 2.0) << "clubs and hearts";
    EXPECT_EQ(json["classes"]["AKo"]["hands"], 7.0);
    EXPECT_EQ(json["classes"]["77"]["hands"], 3.0);
    EXPECT_EQ(json["classes"]["QJs"]["hands"], 4.0);
    // The classes' reaches and shares are those of their hands.
    double reach = 0;
    double raise = 0;
    for (const auto& hand : json["hands"]) {
        const std::string cards = hand["cards"];
        if (cards.find('Q') == std::string::npos || cards.find('J') == std::string::npos ||
            cards[1] == cards[3])
            continue;
        reach += hand["reach"].get<double>();
        raise += hand["reach"].get<double>() * hand["strategy"]["raise"].get<double>();
    }
    EXPECT_NEAR(json["classes"]["QJo"]["reach"], reach / 12, 1e-12);
    EXPECT_NEAR(json["classes"]["QJo"]["strategy"]["raise"], raise / reach, 1e-12);
    EXPECT_FALSE(decisionJson(*viewed.view("r", "")).contains("hands"));
}

} // namespace
} // namespace tamarin::test
