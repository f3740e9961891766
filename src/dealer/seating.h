// Bringing the players to the table: ports, processes, greetings.
//
// Each seat gets a port of its own, so that nobody can sit down in another's place: a player that
// the dealer starts finds its port on the loopback interface, one from elsewhere on the address
// that its plan names. A player is seated when it has greeted as greeting.h says.
//
// The port of a player that is started here is that player's alone: anybody else who connects is
// turned away, whatever user it runs as and whatever it says, and the wait goes on. Where the
// system does not tell whose a connection is, one notice says so, and whoever greets first has the
// seat.
#pragma once

#include "dealer/listener.h"
#include "dealer/player.h"
#include "dealer/socket_owner.h"
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
    // Where a player from elsewhere finds the dealer; port 0 picks one.
    std::string address = loopbackAddress;
    uint16_t port = 0;
};

struct SeatingOptions {
    // From the start of the players to the last greeting. Generous: a player may train first.
    Duration startLimit = std::chrono::seconds(600);
    // From a connection to its version line.
    Duration greetingLimit = std::chrono::seconds(10);
    // What players from elsewhere must say; empty asks for nothing.
    std::string token;
    // What happens meanwhile, a line each, for a person.
    std::function<void(const std::string&)> notice = [](const std::string&) {};
    // Asked some ten times a second; false gives up.
    std::function<bool()> keepWaiting = [] { return true; };
    std::string processes = systemProcesses; // where they are listed
};

// All players, seated, in the order of the plans; or an error, and then every process that was
// started has been ended. A player that the dealer started must greet properly at once; strangers
// are turned away, however many come.
Result<std::vector<Player>> seatPlayers(const std::vector<SeatPlan>& plans,
                                        const SeatingOptions& options);

} // namespace tamarin
