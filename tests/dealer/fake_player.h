// Players made for tests: a thread at the other end of a real connection, doing what it is told.
#pragma once

#include "dealer/listener.h"
#include "dealer/player.h"
#include "game/game.h"

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tamarin::test {

// The client end of a connection to the loopback interface.
class Client {
public:
    static constexpr int patience = 10000; // milliseconds; a test that waits longer has failed

    // from is the loopback address to connect from: each stands for another machine. to is that of
    // the dealer: each stands for another of its machine's.
    explicit Client(uint16_t port, uint32_t from = INADDR_LOOPBACK, uint32_t to = INADDR_LOOPBACK)
        : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(from);
        if (from != INADDR_LOOPBACK)
            ::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(to);
        address.sin_port = htons(port);
        connected_ = ::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        const int on = 1;
        ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { close(); }

    bool connected() const { return connected_; }

    void send(const std::string& text) {
        for (size_t sent = 0; sent < text.size();) {
            const ssize_t n = ::send(fd_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (n <= 0)
                return;
            sent += static_cast<size_t>(n);
        }
    }

    // The next line without its end; empty at the end of the stream.
    std::string readLine() {
        for (;;) {
            const size_t end = received_.find('\n');
            if (end != std::string::npos) {
                std::string line = received_.substr(0, end);
                received_.erase(0, end + 1);
                endings_ += !line.empty() && line.back() == '\r';
                if (!line.empty() && line.back() == '\r')
                    line.pop_back();
                return line;
            }
            pollfd waiting{fd_, POLLIN, 0};
            char buffer[4096];
            ssize_t n = 0;
            if (fd_ < 0 || ::poll(&waiting, 1, patience) != 1 ||
                (n = ::recv(fd_, buffer, sizeof buffer, 0)) <= 0)
                return {};
            received_.append(buffer, static_cast<size_t>(n));
        }
    }

    // Whether the other side has closed, without waiting.
    bool closedByPeer() const {
        char byte;
        return ::recv(fd_, &byte, 1, MSG_DONTWAIT | MSG_PEEK) == 0;
    }

    // Lines read so far that ended with "\r\n".
    int carriageReturns() const { return endings_; }

    void close() {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = -1;
    }
    void reset() {
        const linger now{1, 0};
        ::setsockopt(fd_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        close();
    }
    void halfClose() { ::shutdown(fd_, SHUT_WR); }

private:
    int fd_;
    bool connected_ = false;
    std::string received_;
    int endings_ = 0;
};

inline void pause(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// A connected pair: the dealer's end and the player's.
struct Link {
    explicit Link(uint16_t port) : client(port) {}
    Client client;
    int dealerEnd = -1;
};
inline std::unique_ptr<Link> makeLink() {
    auto listener = Listener::local();
    auto link = std::make_unique<Link>(listener->port());
    while (link->dealerEnd < 0)
        if (const auto visitor = listener->accept())
            link->dealerEnd = visitor->fd;
    return link;
}

// What a fake player does when it is to act: turn counts from 0, line is the state it was sent.
using Turn = std::function<void(Client& client, const std::string& line, int turn)>;

inline Turn answers(const std::string& action) {
    return [action](Client& client, const std::string& line, int) {
        client.send(line + ":" + action + "\r\n");
    };
}

// Players who are seated, each a thread that reads every line and takes its turn.
class FakeTable {
public:
    FakeTable(const Game* game, const std::vector<Turn>& turns) : game_(game) {
        assert(turns.size() <= counts_.size());
        states_.resize(turns.size());
        for (size_t i = 0; i < turns.size(); ++i) {
            links_.push_back(makeLink());
            Player& player = players.emplace_back();
            player.name = std::string(1, static_cast<char>('a' + i));
            player.connection.emplace(links_.back()->dealerEnd);
            // The thread is given its link: the list of links still grows under it.
            Client& client = links_.back()->client;
            threads_.emplace_back([this, i, &client, turn = turns[i]] { run(i, client, turn); });
        }
    }
    ~FakeTable() { finish(); }

    // Ends the match and the threads; then states() may be looked at.
    void finish() {
        if (threads_.empty())
            return;
        dismissPlayers(players, false);
        for (std::thread& thread : threads_)
            thread.join();
        threads_.clear();
    }

    // Every line that a player has read.
    const std::vector<std::string>& states(size_t player) const { return states_[player]; }
    // How many that were; may be asked at any time.
    int countStates(size_t player) const { return counts_[player]; }
    int carriageReturns(size_t player) const { return links_[player]->client.carriageReturns(); }

    std::vector<Player> players;

private:
    void run(size_t index, Client& client, const Turn& turn) {
        int turns = 0;
        for (std::string line; !(line = client.readLine()).empty();) {
            states_[index].push_back(line);
            ++counts_[index];
            MatchState state{};
            if (readMatchState(line.c_str(), game_, &state) > 0 && !state.state.finished &&
                currentPlayer(game_, &state.state) == state.viewingPlayer)
                turn(client, line, turns++);
        }
        client.close();
    }

    const Game* game_;
    std::vector<std::unique_ptr<Link>> links_;
    std::vector<std::vector<std::string>> states_;
    std::array<std::atomic<int>, MAX_PLAYERS> counts_{};
    std::vector<std::thread> threads_;
};

} // namespace tamarin::test
