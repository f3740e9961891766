#include "bots/rule_choice.h"

#include "game/games.h"
#include "game/random_hand.h"

#include <array>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

namespace {

constexpr const char* kuhn = "kuhn.limit.3p.game";
constexpr const char* limit = "holdem.limit.2p.reverse_blinds.game";
constexpr const char* noLimit = "holdem.nolimit.2p.reverse_blinds.game";

Action choiceIn(const char* gameName, const char* text) {
    const GamePtr game = test::loadGameFile(gameName);
    MatchState state{};
    EXPECT_GT(readMatchState(text, game.get(), &state), 0) << text;
    EXPECT_EQ(currentPlayer(game.get(), &state.state), state.viewingPlayer) << text;
    return ruleChoice(game.get(), &state);
}

HandClass classOf(const char* text) {
    const GamePtr game = test::loadGameFile(limit);
    MatchState state{};
    EXPECT_GT(readMatchState(text, game.get(), &state), 0) << text;
    return classifyHand(game.get(), &state);
}

} // namespace

TEST(RuleChoice, PlaysKuhnByItsCard) {
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:0:0::As||").type, actionRaise);
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:0:0::Ks||").type, actionCall);
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:0:0::Qs||").type, actionCall); // a check
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:1:0:r:|As|").type, actionCall);
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:1:0:r:|Ks|").type, actionCall);
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:1:0:r:|Qs|").type, actionFold);
    EXPECT_EQ(choiceIn(kuhn, "MATCHSTATE:1:0:r:|Js|").type, actionFold);
}

TEST(ClassifyHand, BeforeTheFlop) {
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|AsAd"), HandClass::strong);
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|AsKd"), HandClass::strong);
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|8s8d"), HandClass::strong);
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|KsJd"), HandClass::good);
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|Ts9s"), HandClass::fair);
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|7s2d"), HandClass::weak);
    EXPECT_EQ(classOf("MATCHSTATE:1:0::|7d2s"), HandClass::weak);
}

// The shares that the header of the rule promises, over all 1,326 hands.
TEST(ClassifyHand, SharesOfStartingHands) {
    const GamePtr game = test::loadGameFile(limit);
    std::array<int, 4> counts{};
    MatchState state{};
    initState(game.get(), 0, &state.state);
    for (uint8_t a = 0; a < 52; ++a)
        for (uint8_t b = 0; b < a; ++b) {
            state.state.holeCards[0][0] = a;
            state.state.holeCards[0][1] = b;
            ++counts[static_cast<size_t>(classifyHand(game.get(), &state))];
        }
    const auto share = [&](HandClass hand) { return counts[static_cast<size_t>(hand)] / 1326.0; };
    EXPECT_NEAR(share(HandClass::strong), 0.11, 0.01);
    EXPECT_NEAR(share(HandClass::good), 0.14, 0.01);
    EXPECT_NEAR(share(HandClass::fair), 0.25, 0.01);
}

TEST(ClassifyHand, AfterTheFlop) {
    const auto flop = [](const std::string& hole, const std::string& board) {
        return classOf(("MATCHSTATE:1:0:cc/:|" + hole + "/" + board).c_str());
    };
    EXPECT_EQ(flop("AsKd", "Ac8d3h"), HandClass::good);   // top pair
    EXPECT_EQ(flop("AsAd", "Kc8d3h"), HandClass::good);   // overpair
    EXPECT_EQ(flop("8s7d", "Kc8d3h"), HandClass::fair);   // second pair
    EXPECT_EQ(flop("2s2d", "Kc8d3h"), HandClass::fair);   // a pair below the board
    EXPECT_EQ(flop("As7d", "Kc8d3h"), HandClass::weak);   // nothing
    EXPECT_EQ(flop("As7d", "Kc3d3h"), HandClass::weak);   // the board's pair is everybody's
    EXPECT_EQ(flop("8s7d", "8c7h3h"), HandClass::strong); // two pair
    EXPECT_EQ(flop("8s8d", "8c7h3h"), HandClass::strong); // a set
    EXPECT_EQ(flop("8s7d", "Kc8dKh"), HandClass::fair);   // two pair, one of them everybody's
    EXPECT_EQ(flop("Ks7d", "KcTdTh"), HandClass::strong); // the same with the top pair
    EXPECT_EQ(flop("As7s", "Ks8s3h"), HandClass::fair);   // four to a flush
    EXPECT_EQ(flop("As7s", "Ks8s3s"), HandClass::strong); // a flush
    EXPECT_EQ(flop("9s7d", "TcJd8h"), HandClass::strong); // a straight
}

TEST(ClassifyHand, ADrawIsWorthNothingOnTheRiver) {
    EXPECT_EQ(classOf("MATCHSTATE:0:0:cc/cc/cc/:As7s|/Ks8s3h/2d/9c"), HandClass::weak);
}

TEST(RuleChoice, BetsWhatItHas) {
    EXPECT_EQ(choiceIn(limit, "MATCHSTATE:0:0:cc/:AsAd|/Kc8d3h").type, actionRaise);
    EXPECT_EQ(choiceIn(limit, "MATCHSTATE:0:0:cc/cr:AsAd|/Kc8d3h").type, actionCall);
    EXPECT_EQ(choiceIn(limit, "MATCHSTATE:0:0:cc/cr:8s8h|/Kc8d3h").type, actionRaise);
    EXPECT_EQ(choiceIn(limit, "MATCHSTATE:0:0:cc/cr:7s2h|/Kc8d3h").type, actionFold);
    EXPECT_EQ(choiceIn(limit, "MATCHSTATE:0:0:cc/:7s2h|/Kc8d3h").type, actionCall);
}

TEST(RuleChoice, NoLimitRaisesAreOfThePot) {
    // 50 and 100 are in; after calling 100 the pot is 200.
    const Action open = choiceIn(noLimit, "MATCHSTATE:1:0::|AsAd");
    EXPECT_EQ(open.type, actionRaise);
    EXPECT_EQ(open.size, 300);
    const Action reraise = choiceIn(noLimit, "MATCHSTATE:0:0:r300:AsAd|");
    EXPECT_EQ(reraise.size, 900);
    EXPECT_EQ(choiceIn(noLimit, "MATCHSTATE:0:0:r15000:AsAd|").size, 20000);
    EXPECT_EQ(choiceIn(noLimit, "MATCHSTATE:0:0:r20000:AsAd|").type, actionCall);
    EXPECT_EQ(choiceIn(noLimit, "MATCHSTATE:0:0:r20000:Ts9s|").type, actionFold);
}

RC_GTEST_PROP(RuleChoice, IsAlwaysLegal, (uint32_t seed)) {
    for (const char* name : {kuhn, limit, noLimit, "holdem.limit.3p.game"}) {
        const GamePtr game = test::loadGameFile(name);
        test::playRandomHand(*game, seed, [&](const State& state) {
            if (state.finished)
                return;
            const MatchState view{state, currentPlayer(game.get(), &state)};
            Action action = ruleChoice(game.get(), &view);
            RC_ASSERT(isValidAction(game.get(), &state, 0, &action) == 1);
        });
    }
}

} // namespace tamarin::test
