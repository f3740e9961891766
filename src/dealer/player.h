// A player at the table: its name, its connection, and its process when the dealer started it.
#pragma once

#include "dealer/child.h"
#include "dealer/connection.h"
#include "support/clock.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

struct Player {
    std::string name;
    std::optional<Child> child;
    std::optional<Connection> connection; // none once the player is gone
    bool unhurried = false;               // a person who may take its time: never late
};

// The longest that servePlayers() waits, so that whoever calls it in a loop notices a signal.
inline constexpr Duration longestServe = std::chrono::milliseconds(100);

// Waits until something happens at one of the players, at most for the time given and longestServe,
// then reads and writes what is possible without waiting: everybody's answers first, then of what
// each player prints its share. extra descriptors only end the wait when they become readable.
void servePlayers(std::span<Player> players, Duration atMost, std::span<const int> extra = {});

// Ends a match in good order: tells every player that nothing more comes, gives those that run here
// the time to finish by themselves, then asks them (SIGTERM) and then makes them (SIGKILL).
// hurry skips the first wait.
void dismissPlayers(std::vector<Player>& players, bool hurry);

} // namespace tamarin
