// Who sits in a match, as a person writes it down.
//
//   NAME=COMMAND        a player started here: a shell command, run in the playing directory with
//                       the game, host and port appended
//   NAME=bot:KIND       a simple opponent in a process of its own
//   NAME=listen:[ADDRESS:]PORT
//                       a player that somebody else starts and the dealer waits for, at an IPv4
//                       address of this machine: on this machine alone when none is given, from
//                       everywhere with 0.0.0.0; port 0 picks one
#pragma once

#include "support/result.h"

#include <cstdint>
#include <string>

namespace tamarin {

enum class SeatKind { command, bot, listen };

struct Seat {
    std::string name; // letters, digits, and . _ - +; names appear in logs and tables
    SeatKind kind = SeatKind::command;
    std::string command; // of a command
    std::string bot;     // kind of a bot
    std::string address; // of a listening seat
    uint16_t port = 0;   // of a listening seat
};

// Reads one of the three forms above. Whether the kind of bot exists is for the caller to check.
Result<Seat> parseSeat(const std::string& text);

} // namespace tamarin
