#include "dealer/player.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <poll.h>

namespace tamarin {

namespace {

using namespace std::chrono_literals;

// A player may have statistics to print when the match is over.
constexpr Duration ownEndLimit = 5s;
constexpr Duration askedEndLimit = 2s;
// A player elsewhere is owed the last state, not our patience.
constexpr Duration remoteEndLimit = 500ms;

bool somethingLeft(std::span<Player> players, bool remoteToo) {
    return std::ranges::any_of(players, [&](Player& player) {
        if (player.child)
            return !player.child->ended();
        return remoteToo && player.connection && !player.connection->ended();
    });
}

// Reads and throws away until every player has finished or the time is over. Unread input at the
// moment of closing would reset the connection and could cost a player the last state.
void waitForEnds(std::vector<Player>& players, Duration limit) {
    const TimePoint start = steadyClock().now();
    std::string line;
    for (;;) {
        const auto waited = steadyClock().now() - start;
        if (waited >= limit || !somethingLeft(players, waited < remoteEndLimit))
            return;
        servePlayers(players, std::min<Duration>(limit - waited, 10ms));
        for (Player& player : players)
            if (player.connection)
                while (player.connection->nextLine(line)) {
                }
    }
}

} // namespace

void servePlayers(std::span<Player> players, Duration atMost, std::span<const int> extra) {
    constexpr size_t mostFds = 256;
    pollfd fds[mostFds];
    nfds_t count = 0;
    const auto add = [&](int fd, short events) {
        if (count < mostFds)
            fds[count++] = {fd, events, 0};
    };
    for (const Player& player : players) {
        // poll() skips negative descriptors, so every player keeps its two places.
        int fd = -1;
        short events = 0;
        if (const auto& connection = player.connection) {
            if (connection->wantsToRead())
                events = POLLIN;
            if (connection->wantsToWrite())
                events = static_cast<short>(events | POLLOUT);
            // With nothing wanted, poll() would still report a closed peer, again and again.
            if (events != 0)
                fd = connection->fd();
        }
        add(fd, events);
        add(player.child ? player.child->output().fdToPoll() : -1, POLLIN);
    }
    for (const int fd : extra)
        add(fd, POLLIN);

    const Duration wait = std::clamp<Duration>(atMost, Duration::zero(), longestServe);
    const timespec limit{static_cast<time_t>(wait.count() / 1'000'000'000),
                         static_cast<long>(wait.count() % 1'000'000'000)};
    if (::ppoll(fds, count, &limit, nullptr) <= 0)
        return;
    for (size_t i = 0; i < players.size(); ++i) {
        const pollfd& socket = fds[2 * i];
        if (socket.revents & POLLOUT)
            players[i].connection->flush();
        if (socket.revents & (POLLIN | POLLHUP | POLLERR))
            players[i].connection->receive();
    }
    for (size_t i = 0; i < players.size(); ++i)
        if (fds[2 * i + 1].revents != 0)
            players[i].child->output().take();
}

void dismissPlayers(std::vector<Player>& players, bool hurry) {
    for (Player& player : players)
        if (player.connection)
            player.connection->finishSending();
    if (!hurry)
        waitForEnds(players, ownEndLimit);
    for (Player& player : players)
        if (player.child && !player.child->ended())
            player.child->signalGroup(SIGTERM);
    waitForEnds(players, askedEndLimit);
    for (Player& player : players)
        if (player.child)
            player.child->output().takeRest(); // its last words, written just before it ended
    players.clear();                           // kills and collects those that are left
}

} // namespace tamarin
