// Who owns the other end of a connection, when it lies on this machine.
//
// Linux tells the inode of every TCP socket, when asked for one (sock_diag(7)) or in the lists
// /proc/net/tcp and, of an IPv6 socket that talks IPv4, tcp6; and it lists every process's open
// sockets in /proc/PID/fd. Together they tell a player that the dealer has started from everybody
// else who finds its port, whatever user that runs as.
#pragma once

#include <span>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tamarin {

inline constexpr const char* systemProcesses = "/proc";

enum class SocketOwner {
    ours,     // a process of the group, or one that descends from its leader
    stranger, // some other process
    // Nobody, because the other end was closed; or the system does not tell: another PID namespace,
    // a process whose descriptors may not be looked at.
    unknown,
};

// Who owns the other ends of these connected IPv4 sockets, each at one of the two ends of a
// connection within this machine. group is a process that leads its process group. One call looks
// through the processes once for all of them; proc is where they are listed, and the sockets, too,
// when that is not the system's own place.
std::vector<SocketOwner> ownersOfPeers(std::span<const int> sockets, pid_t group,
                                       const std::string& proc = systemProcesses);

} // namespace tamarin
