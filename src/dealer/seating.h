// Bringing the players to the table: ports, processes, greetings.
//
// Each seat gets a port of its own, so that nobody can sit down in another's place: a player that
// the dealer starts finds its port on the loopback interface, one from elsewhere on all of them. A
// player is seated when it has sent the version line "VERSION:2.0.0".
#pragma once

#include "dealer/player.h"
#include "support/result.h"

#include <functional>
#include <optional>
#include <vector>

namespace tamarin {

struct SeatPlan {
    std::string name;
    // The process to start, the host and port still to be appended to its arguments; none for a
    // player from elsewhere.
    std::optional<Child::Command> command;
    uint16_t port = 0; // of a player from elsewhere; 0 picks one
};

struct SeatingOptions {
    // From the start of the players to the last greeting. Generous: a player may train first.
    Duration startLimit = std::chrono::seconds(600);
    // From a connection to its version line.
    Duration greetingLimit = std::chrono::seconds(10);
    // What happens meanwhile, a line each, for a person.
    std::function<void(const std::string&)> notice = [](const std::string&) {};
    // Asked some ten times a second; false gives up.
    std::function<bool()> keepWaiting = [] { return true; };
};

// All players, seated, in the order of the plans; or why not. When this fails every process that
// was started has been ended. A player that the dealer started must greet properly at once; on the
// port of a player from elsewhere strangers are turned away and the wait goes on.
Result<std::vector<Player>> seatPlayers(const std::vector<SeatPlan>& plans,
                                        const SeatingOptions& options);

} // namespace tamarin
