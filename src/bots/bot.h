// Simple opponents: enough of a player to test a match, a dealer or a better player against.
//
// A bot is an agent like any other: it connects to a dealer and plays by the states it is sent. How
// it chooses is a function of the state alone (and of the random numbers it draws), kept apart from
// the agent so that it can be tested without a dealer.
#pragma once

#include "driver/PokerAgent.h"

#include <memory>
#include <string>
#include <vector>

namespace tamarin {

// The agent's events that a bot without a memory has no use for.
class SimpleBot : public PokerAgent {
public:
    using PokerAgent::PokerAgent;
    void holeCards(unsigned char*, unsigned char) override {}
    void actionEvent(unsigned char, Action) override {}
    void stageEvent(int) override {}
    void showdownEvent(unsigned char, unsigned char*) override {}
    void gameOverEvent(double) override {}
    void winEvent(unsigned char, int) override {}
};

struct BotKind {
    const char* name;
    const char* description; // one line
};
// "random", "call", "raise", "rule".
const std::vector<BotKind>& botKinds();
// The names, for a message: "random, call, raise, rule".
std::string botNames();

// A bot of that kind, not connected yet; null when there is no such kind. The seed is that of its
// random numbers. A game file that cannot be read ends the process, as with every agent; calls
// carries the match and must outlive the bot.
std::unique_ptr<PokerAgent> makeBot(const std::string& kind, const char* gameFile, uint64_t seed,
                                    SocketCalls& calls = systemSockets());

} // namespace tamarin
