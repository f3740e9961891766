// The player's start-up: from the command line to the end of the match.
#pragma once

#include <cstdint>
#include <string>

class PokerAgent;

namespace tamarin {

// Whether a game of this name is one that the hold'em agent plays.
bool playsAsHoldem(const std::string& gameFile);

// Connects the agent and plays the match. The exit status: 0, or 1 when the dealer could not be
// greeted; an answer that cannot be sent ends the process with status 1 at once.
int playMatch(PokerAgent& agent, const char* host, uint16_t port);

// argv[1] is the game definition, argv[2] the dealer's host, argv[3] its port; more is ignored. The
// agent is chosen by the whole of argv[1] and is built (which may train it for a long time) before
// the port is looked at. Returns the exit status: 0 after a match that the dealer ended by closing
// the connection, 1 after one line on standard error that says what went wrong. No exception leaves
// it.
int runPlayer(int argc, char** argv);

} // namespace tamarin
