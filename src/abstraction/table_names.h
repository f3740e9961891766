// The names of the table files below lookup/, and of the auxiliary games. They are relative to a
// playing directory.
//
// players: 2 or 3; round: 0..3; seat: below players.
#pragma once

#include <array>
#include <string>

namespace tamarin {

inline constexpr char lookupDirectory[] = "lookup";

// A round in the name of a file, and as a person types it.
inline constexpr std::array<const char*, 4> roundFileNames{"preflop", "flop", "turn", "river"};

std::string equityPath(int players, int round);            // lookup/flop_2p: doubles
std::string clusterPath(int players, int round);           // lookup/flop_2p_c: bytes 0..100
std::string holdemPath(int players, int round, int seat);  // lookup/holdem_flop_2p_0: bytes 0..9
std::string utilityPath(int players, int round, int seat); // lookup/utility_flop_2p_0: doubles
std::string auxiliaryGameName(int players, int round);     // kuhn.flop.2p.game

// The path of such a name below a directory, which may end in a slash; the name itself for the
// working directory, "." or empty.
std::string inDirectory(const std::string& directory, const std::string& name);

// The seat of the two-player utility table that a seat's hold'em table is made from, whatever the
// number of players.
constexpr int utilitySeatOf(int seat) {
    return seat == 0 ? 0 : 1;
}

} // namespace tamarin
