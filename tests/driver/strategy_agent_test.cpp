#include "driver/strategy_agent.h"

#include "driver/scratch.h"
#include "game/text.h"

#include <optional>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Answers what it is told to, or nothing.
class ToldStrategy : public PlayedStrategy {
public:
    std::optional<Action> answer;
    std::string asked;

    std::optional<Action> draw(const MatchState& seen) override {
        asked =
            std::to_string(seen.viewingPlayer) + " in round " + std::to_string(seen.state.round);
        return answer;
    }
    std::string describe() const override { return "told"; }
};

class OpenStrategyAgent : public StrategyAgent {
public:
    OpenStrategyAgent(const char* gameFile, std::unique_ptr<ToldStrategy> told)
        : StrategyAgent(gameFile, std::move(told)) {}
    Action actionIn(const std::string& text) {
        EXPECT_GT(readMatchState(text.c_str(), game, &state), 0) << text;
        Action action{actionInvalid, 77};
        getAction(action);
        return action;
    }
};

struct Told {
    Told() {
        auto told = std::make_unique<ToldStrategy>();
        strategy = told.get();
        agent = std::make_unique<OpenStrategyAgent>("holdem.limit.2p.reverse_blinds.game",
                                                    std::move(told));
    }
    PlayingDirectory directory;
    ToldStrategy* strategy;
    std::unique_ptr<OpenStrategyAgent> agent;
};

TEST(StrategyAgent, PlaysWhatTheStrategySays) {
    Told told;
    testing::internal::CaptureStderr();
    for (const ActionType type : {actionFold, actionCall, actionRaise}) {
        told.strategy->answer = Action{type, 0};
        EXPECT_EQ(told.agent->actionIn("MATCHSTATE:1:0:cc/r:|AsAh/2c3d4h").type, type);
        EXPECT_EQ(told.strategy->asked, "1 in round 1");
    }
    told.strategy->answer = Action{actionRaise, 250};
    EXPECT_EQ(told.agent->actionIn("MATCHSTATE:0:0:c:AsAh|").size, 250);
    EXPECT_EQ(told.strategy->asked, "0 in round 0");
    told.agent.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The price is 10 in a pot of 30: a hand has to win a quarter of the time.
TEST(StrategyAgent, GoesByPotOddsWithoutAnAnswer) {
    Told told;
    testing::internal::CaptureStderr();
    const std::string price = "MATCHSTATE:1:0:cc/r:|";
    EXPECT_EQ(told.agent->actionIn(price + "AsAh/2c7d9h").type, actionCall);
    EXPECT_EQ(told.agent->actionIn(price + "3s2h/KcKdKh").type, actionFold);
    EXPECT_EQ(told.agent->actionIn(price + "4s2h/KcQdTh").type, actionFold);
    EXPECT_EQ(told.agent->actionIn("MATCHSTATE:0:0:cc/:4s2h|/KcQdTh").type, actionCall)
        << "nothing is owed";
    EXPECT_EQ(told.agent->actionIn("MATCHSTATE:1:0::|7s2h").type, actionCall);
    told.agent.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: the strategy does not hold this state: playing by pot odds\n"
              "5 decisions were made by pot odds in this match\n");
}

} // namespace
} // namespace tamarin::test
