// Judging a player's answer.
#pragma once

#include "game/game.h"

#include <optional>
#include <string>
#include <string_view>

namespace tamarin {

// What can be wrong with a player. The first five concern an answer, which becomes the substitute
// action (but for wrongSize, where the nearest legal raise is played).
enum class Fault {
    late,       // no answer within its limit
    gone,       // the player has left: counted once for every answer it owed
    nonsense,   // not the state that was sent, ":" and an action
    illegal,    // an action against the rules
    wrongSize,  // a no-limit raise of an illegal size
    unexpected, // a line from a player that was not asked
};
inline constexpr int numFaults = 6;
const char* faultName(Fault fault); // "late", "gone", ..., "wrong size", "unexpected"

struct Verdict {
    Action action; // legal; what will be played
    std::optional<Fault> fault;
};

// What is played for a player that does not answer properly: fold when something is owed, else
// call.
Action substituteAction(const Game* game, const State* state);

// sent: the state as the player to act was sent it; sentText: its text without the line end. The
// line must be that state (the same text, or another that reads as the same), ":" and one action,
// with nothing behind it. A raise of a limit game from a stack that does not reach the current bet
// is played as the call that it amounts to: the rules would take it and lower everybody's bet.
Verdict judgeReply(const Game* game, const MatchState* sent, std::string_view sentText,
                   const std::string& line);

} // namespace tamarin
