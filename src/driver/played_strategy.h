// A strategy as an agent plays it: asked with a state of a match, it answers with an action.
//
// What a strategy is made of, and what it does with bets that it was not made for, is its own
// business; the agent (strategy_agent.h) knows the rules and what to do without an answer.
#pragma once

#include "game/state.h"

#include <optional>
#include <string>

namespace tamarin {

class PlayedStrategy {
public:
    virtual ~PlayedStrategy() = default;

    // What the viewing seat, which is to act and knows its cards, does: drawn by the process-wide
    // engine. Nothing where the strategy does not hold the state. One thread.
    virtual std::optional<Action> draw(const MatchState& seen) = 0;

    // What is played, for people: "strategies/holdem.limit.2p/blueprint, over ...".
    virtual std::string describe() const = 0;
};

} // namespace tamarin
