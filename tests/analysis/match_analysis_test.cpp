#include "analysis/match_analysis.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

LoggedHand handOf(const Game& game, const std::string& state, const std::string& names) {
    LoggedHand hand{};
    EXPECT_GT(readState(state.c_str(), &game, &hand.state), 0) << state;
    for (uint8_t seat = 0; seat < game.numPlayers; ++seat)
        hand.chips.push_back(valueOfState(&game, &hand.state, seat));
    for (size_t begin = 0; begin != std::string::npos;) {
        const size_t end = names.find('|', begin);
        hand.names.push_back(names.substr(begin, end - begin));
        begin = end == std::string::npos ? end : end + 1;
    }
    return hand;
}

const HandCut::Part* partOf(const MatchAnalysis::Player& player, size_t cut,
                            const std::string& name) {
    for (const auto& [order, part] : player.cuts[cut].parts)
        if (part.name == name)
            return &part;
    return nullptr;
}

void expectPart(const MatchAnalysis::Player& player, size_t cut, const std::string& name,
                uint64_t count, double mean) {
    const HandCut::Part* const part = partOf(player, cut, name);
    ASSERT_NE(part, nullptr) << name;
    EXPECT_EQ(part->won.count(), count) << name;
    EXPECT_DOUBLE_EQ(part->won.mean(), mean) << name;
}

class LimitForTwo : public testing::Test {
protected:
    GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    MatchAnalysis analysis{*game};
    void add(const std::string& state, const std::string& names, const FreedHand& freed = {}) {
        EXPECT_TRUE(analysis.add(handOf(*game, state, names), freed).ok());
    }
};

TEST_F(LimitForTwo, EveryHandIsInOnePartOfEveryCut) {
    add("STATE:0:rc/crf:Ts8d|Ad7s/2s5dAc", "me|bot"); // me folds after 20: -20
    add("STATE:1:f:2c2d|Kh9h", "bot|me");             // me folds the small blind: -5
    add("STATE:2:rf:Ah3h|Kh9d", "me|bot");            // bot raises, me folds the big blind: -10
    add("STATE:3:cc/cc/cc/cc:Qc2d|KhKd/2s5dAc/7c/9s", "bot|me"); // me wins 10
    ASSERT_EQ(analysis.hands(), 4U);
    EXPECT_FALSE(analysis.duplicate());
    const auto& me = analysis.players()[0];
    EXPECT_EQ(me.name, "me");
    EXPECT_EQ(me.chips, -25);
    EXPECT_EQ(analysis.players()[1].chips, 25);
    expectPart(me, 0, "seat 0", 2, -15);
    expectPart(me, 0, "seat 1", 2, 2.5);
    expectPart(me, 1, "first to act in the last round", 2, -15);
    expectPart(me, 1, "last to act in the last round", 2, 2.5);
    expectPart(me, 2, "called or checked", 2, -5);
    expectPart(me, 2, "folded", 2, -7.5);
    EXPECT_EQ(partOf(me, 2, "raised"), nullptr);
    expectPart(analysis.players()[1], 2, "raised", 2, 15);
    expectPart(analysis.players()[1], 2, "did not act", 1, 5);
    expectPart(me, 3, "flop", 1, -20);
    expectPart(me, 3, "pre-flop", 2, -7.5);
    expectPart(me, 3, "showdown", 1, 10);
    expectPart(me, 4, "pairs", 1, 10);
    expectPart(me, 4, "suited", 2, -7.5);
    expectPart(me, 4, "offsuit", 1, -20);
    expectPart(me, 5, "T8o", 1, -20);
    expectPart(me, 5, "A3s", 1, -10);
    expectPart(me, 5, "KK", 1, 10);
    // In the order of the grid: by rows of 13 from the aces down, suited above the diagonal.
    std::vector<size_t> places;
    for (const auto& [order, part] : me.cuts[5].parts)
        places.push_back(order);
    EXPECT_EQ(places, (std::vector<size_t>{11, 13 + 1, 13 + 5, 6 * 13 + 4}));
    for (const HandCut& cut : me.cuts) {
        uint64_t hands = 0;
        for (const auto& [order, part] : cut.parts)
            hands += part.won.count();
        EXPECT_EQ(hands, 4U) << cut.name;
    }
}

TEST_F(LimitForTwo, FindsDuplicateBlocks) {
    add("STATE:0:rc/crf:Ts8d|Ad7s/2s5dAc", "me|bot", {-3.0, 1.0}); // me -20
    add("STATE:1:f:Ts8d|Ad7s", "bot|me", {-5.0, 2.0});             // me -5
    add("STATE:2:rf:Ah3h|Kh9d", "me|bot", {-7.0, 4.0});            // me -10
    add("STATE:3:f:Ah3h|Kh9d", "bot|me", {2.0, 9.0});              // me -5
    EXPECT_TRUE(analysis.duplicate());
    EXPECT_EQ(analysis.blocks(), 2U);
    const ResultFigures& me = analysis.figures(analysis.players()[0]);
    EXPECT_EQ(me.plain.count(), 2U);
    EXPECT_DOUBLE_EQ(me.plain.mean(), -10);
    EXPECT_DOUBLE_EQ(me.plain.variance(), 2 * 2.5 * 2.5); // blocks of -12.5 and -7.5
    // Freed results are seat 0's: me has -3 + 5 and -7 - 2 in them.
    EXPECT_DOUBLE_EQ(me.luckFree.mean(), (1 - 4.5) / 2);
    EXPECT_DOUBLE_EQ(me.luckFree.variance(), 2 * 2.75 * 2.75);
    EXPECT_DOUBLE_EQ(me.expected.mean(), (-0.5 - 2.5) / 2);
    EXPECT_EQ(analysis.players()[0].perHand.plain.count(), 4U);
    EXPECT_EQ(analysis.standings().back().hands, 4U);

    add("STATE:4:rf:Ah3h|Kh9d", "me|bot");
    add("STATE:5:rf:Ah3c|Kh9d", "bot|me"); // another card
    EXPECT_FALSE(analysis.duplicate());
}

TEST_F(LimitForTwo, PlayersThatDoNotMoveOnAreNoDuplicates) {
    add("STATE:0:rf:Ah3h|Kh9d", "me|bot");
    add("STATE:1:rf:Ah3h|Kh9d", "me|bot");
    EXPECT_FALSE(analysis.duplicate());
}

TEST_F(LimitForTwo, RefusesNamesThatDoNotFit) {
    add("STATE:0:rf:Ah3h|Kh9d", "me|bot");
    EXPECT_EQ(analysis.add(handOf(*game, "STATE:1:rf:Ah3h|Kh9d", "me|you")).error(),
              "'you' did not sit in the hands before");
    EXPECT_EQ(analysis.add(handOf(*game, "STATE:1:rf:Ah3h|Kh9d", "me|me")).error(),
              "'me' sits twice");
}

TEST(MatchAnalysis, OfThreePlayers) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    MatchAnalysis analysis(*game);
    ASSERT_TRUE(analysis.add(handOf(*game, "STATE:0:rcf:Qs|Ks|As", "a|b|c")).ok());
    ASSERT_TRUE(analysis.add(handOf(*game, "STATE:1:rcf:Qs|Ks|As", "c|a|b")).ok());
    ASSERT_TRUE(analysis.add(handOf(*game, "STATE:2:ccc:Qs|Ks|As", "b|c|a")).ok());
    EXPECT_TRUE(analysis.duplicate());
    EXPECT_EQ(analysis.blocks(), 1U);
    EXPECT_DOUBLE_EQ(analysis.players()[0].chips, -2 + 3 + 2);
    expectPart(analysis.players()[0], 1, "between them", 1, 3);
    expectPart(analysis.players()[0], 5, "A", 1, 2);
}

TEST(MatchAnalysis, KeepsSomeHundredStandings) {
    const GamePtr game = loadGameFile("kuhn.limit.2p.game");
    MatchAnalysis analysis(*game);
    for (int i = 0; i < 5000; ++i)
        ASSERT_TRUE(
            analysis.add(handOf(*game, i % 3 == 0 ? "STATE:0:rf:Qs|Ks" : "STATE:0:rc:Qs|Ks", "a|b"))
                .ok());
    const auto& standings = analysis.standings();
    EXPECT_EQ(standings.size(), 312U); // every 16th: of every 8th there would be more than 512
    EXPECT_EQ(standings.front().hands, 16U);
    for (size_t i = 1; i < standings.size(); ++i)
        EXPECT_GT(standings[i].hands, standings[i - 1].hands);
    EXPECT_GT(standings.back().hands, 4900U);
}

TEST(StartingHandName, HasRanksAndSuits) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const auto name = [&](std::array<uint8_t, 2> hole) {
        return startingHandName(*game, hole.data());
    };
    EXPECT_EQ(name({0, 51}), "A2o");
    EXPECT_EQ(name({51, 47}), "AKs");
    EXPECT_EQ(name({32, 33}), "TT");
}

} // namespace
} // namespace tamarin::test
