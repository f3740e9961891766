// The server of `tamarin serve`: the loopback address, HTTP for questions, a WebSocket a table.
//
// Every connection has a thread that waits with a deadline, so that one that is slow, silent or
// hostile costs its own thread and nothing else; the tables have threads of their own and never
// wait for a page. When there are too many connections, one that has not shown the token makes way
// for the next.
#pragma once

#include "dealer/listener.h"
#include "support/clock.h"
#include "web/queries.h"
#include "web/request_guard.h"

#include <functional>
#include <list>
#include <memory>
#include <mutex>

namespace tamarin {

struct ServerLimits {
    size_t connections = 64;
    size_t sockets = 16;                         // WebSockets among them
    Duration request = std::chrono::seconds(10); // from its first wait to its last byte
    Duration answer = std::chrono::seconds(10);  // for the other side to take it
    size_t header = size_t{16} << 10;            // bytes
};

class WebServer {
public:
    // On the loopback address; port 0 picks a free one.
    static Result<std::unique_ptr<WebServer>> open(const std::string& directory, uint16_t port,
                                                   const std::string& token,
                                                   const Programs& programs,
                                                   const ServerLimits& limits = {});
    ~WebServer();

    uint16_t port() const { return listener_.port(); }

    // Serves until keepRunning, asked some five times a second, says no; then every connection and
    // every table is closed.
    void run(const std::function<bool()>& keepRunning);

private:
    class Visit;

    WebServer(Listener listener, const std::string& directory, const std::string& token,
              const Programs& programs, const ServerLimits& limits);
    void receive(int fd);
    bool makeRoom();
    void forgetEnded();

    Listener listener_;
    const ServerLimits limits_;
    const RequestGuard guard_;
    TableList tables_;
    const Queries queries_;
    std::mutex socketsMutex_;
    size_t sockets_ = 0;                       // open WebSockets
    std::list<std::unique_ptr<Visit>> visits_; // the oldest first
};

} // namespace tamarin
