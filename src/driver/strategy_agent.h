// The player of a ready strategy in hold'em: it asks the strategy at every decision, and goes by
// pot odds where that has no answer, which it counts and reports. Nothing is read or made for the
// match but the definition.
#pragma once

#include "driver/PokerAgent.h"
#include "driver/fallback.h"
#include "driver/played_strategy.h"

#include <memory>

namespace tamarin {

class StrategyAgent : public PokerAgent {
public:
    // The game is hold'em (isHoldem), and the strategy one of it.
    StrategyAgent(const char* gameFile, std::unique_ptr<PlayedStrategy> strategy,
                  SocketCalls& calls = systemSockets());

    void getAction(Action& action) override;
    void holeCards(unsigned char*, unsigned char) override {}
    void actionEvent(unsigned char, Action) override {}
    void stageEvent(int) override {}
    void showdownEvent(unsigned char, unsigned char*) override {}
    void gameOverEvent(double) override {}
    void winEvent(unsigned char, int) override {}

private:
    double equity() const;

    std::unique_ptr<PlayedStrategy> strategy_;
    FallbackCount fallback_{"pot odds"};
};

} // namespace tamarin
