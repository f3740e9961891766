#include "dealer/seating.h"

#include "dealer/listener.h"
#include "support/progress.h"

#include <algorithm>
#include <cstdio>
#include <list>

namespace tamarin {

namespace {

constexpr const char* versionLine = "VERSION:2.0.0";
constexpr size_t mostVisitors = 4; // that have not greeted yet, a seat

// Bytes from a stranger, fit for a terminal.
std::string printable(const std::string& text) {
    constexpr size_t longest = 80;
    std::string result;
    for (const char c : text.substr(0, longest)) {
        if (c >= ' ' && c <= '~') {
            result += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
            result += escape;
        }
    }
    return text.size() > longest ? result + "..." : result;
}

// Somebody who has connected and not greeted yet.
struct Visitor {
    Player player; // only its connection is used
    std::string address;
    TimePoint since;
};

class Seating {
public:
    Seating(const std::vector<SeatPlan>& plans, const SeatingOptions& options)
        : plans_(plans), options_(options), players_(plans.size()), visitors_(plans.size()) {}

    Status run() {
        if (Status opened = open(); !opened)
            return opened;
        const TimePoint start = steadyClock().now();
        while (!allSeated()) {
            const auto waited = steadyClock().now() - start;
            if (waited >= options_.startLimit)
                return Error{whoIsMissing() + " did not connect within " +
                             describeDuration(seconds(options_.startLimit)) + " (--start-limit)" +
                             lastWords()};
            if (!options_.keepWaiting())
                return Error{"stopped while waiting for " + whoIsMissing()};
            wait(options_.startLimit - waited);
            for (size_t seat = 0; seat < plans_.size(); ++seat)
                if (Status status = look(seat); !status)
                    return status;
        }
        return {};
    }

    std::vector<Player> take() { return std::move(players_); }
    std::vector<Player>& players() { return players_; }

private:
    // All ports are open before the first process starts, so nobody finds its port closed.
    Status open() {
        for (size_t seat = 0; seat < plans_.size(); ++seat) {
            const SeatPlan& plan = plans_[seat];
            auto listener = plan.command ? Listener::local() : Listener::everywhere(plan.port);
            if (!listener)
                return Error{plan.name + ": " + listener.error()};
            listeners_.push_back(std::move(*listener));
            players_[seat].name = plan.name;
        }
        for (size_t seat = 0; seat < plans_.size(); ++seat) {
            const uint16_t port = listeners_[seat].port();
            if (!plans_[seat].command) {
                options_.notice("waiting for " + plans_[seat].name + " on port " +
                                std::to_string(port));
                continue;
            }
            Child::Command command = *plans_[seat].command;
            command.arguments.emplace_back("127.0.0.1");
            command.arguments.push_back(std::to_string(port));
            auto child = Child::start(command);
            if (!child)
                return Error{plans_[seat].name + ": " + child.error()};
            players_[seat].child = std::move(*child);
        }
        return {};
    }

    void wait(Duration atMost) {
        std::vector<int> fds;
        for (size_t seat = 0; seat < plans_.size(); ++seat) {
            if (!players_[seat].connection)
                fds.push_back(listeners_[seat].fd());
            for (const Visitor& visitor : visitors_[seat])
                fds.push_back(visitor.player.connection->fd());
        }
        servePlayers(players_, atMost, fds);
    }

    // Moves one seat on as far as it will go now.
    Status look(size_t seat) {
        Player& player = players_[seat];
        if (player.connection) {
            if (player.connection->ended())
                return lost(seat);
            return {};
        }
        welcome(seat);
        for (auto visitor = visitors_[seat].begin(); visitor != visitors_[seat].end();) {
            Connection& connection = *visitor->player.connection;
            connection.receive();
            std::string line;
            std::string complaint;
            if (connection.nextLine(line)) {
                if (line == versionLine) {
                    player.connection = std::move(connection);
                    visitors_[seat].clear();
                    return {};
                }
                complaint = "says '" + printable(line) + "' instead of " + versionLine;
            } else if (connection.ended()) {
                complaint = connection.ending() + " before its version line";
            } else if (steadyClock().now() - visitor->since >= options_.greetingLimit) {
                complaint = "sent no version line within " +
                            describeDuration(seconds(options_.greetingLimit));
            }
            if (complaint.empty()) {
                ++visitor;
                continue;
            }
            if (player.child)
                return Error{player.name + ": the player " + complaint + explain(player)};
            options_.notice(player.name + ": turned away " + visitor->address + ", which " +
                            complaint);
            visitor = visitors_[seat].erase(visitor);
        }
        if (player.child && player.child->ended())
            return Error{player.name + ": the player " + player.child->explain() +
                         ", before it connected"};
        return {};
    }

    void welcome(size_t seat) {
        while (visitors_[seat].size() < mostVisitors) {
            auto visitor = listeners_[seat].accept();
            if (!visitor)
                return;
            Visitor& added = visitors_[seat].emplace_back();
            added.player.connection.emplace(visitor->fd);
            added.address = visitor->address;
            added.since = steadyClock().now();
        }
    }

    // A seated player has left while others were still awaited.
    Status lost(size_t seat) {
        Player& player = players_[seat];
        const std::string how = player.connection->ending();
        if (player.child)
            return Error{player.name + ": the player " + how + " before the match began" +
                         explain(player)};
        options_.notice(player.name + ": the player " + how + "; waiting for another");
        player.connection.reset();
        return {};
    }

    // The process that stands behind a fault is usually just ending: gives it a moment, so that the
    // message can say how.
    static std::string explain(Player& player) {
        for (int i = 0; i < 20 && !player.child->ended(); ++i)
            servePlayers({&player, 1}, std::chrono::milliseconds(10));
        return " (its process " + player.child->explain() + ")";
    }

    bool allSeated() const {
        return std::ranges::all_of(players_,
                                   [](const Player& p) { return p.connection.has_value(); });
    }

    std::string whoIsMissing() const {
        std::string names;
        for (const Player& player : players_)
            if (!player.connection)
                names += (names.empty() ? "" : ", ") + player.name;
        return names;
    }

    std::string lastWords() {
        for (Player& player : players_)
            if (!player.connection && player.child)
                return "; " + player.name + " " + player.child->explain();
        return {};
    }

    const std::vector<SeatPlan>& plans_;
    const SeatingOptions& options_;
    std::vector<Listener> listeners_;
    std::vector<Player> players_;
    std::vector<std::list<Visitor>> visitors_;
};

} // namespace

Result<std::vector<Player>> seatPlayers(const std::vector<SeatPlan>& plans,
                                        const SeatingOptions& options) {
    Seating seating(plans, options);
    if (Status status = seating.run(); !status) {
        dismissPlayers(seating.players(), true);
        return Error{status.error()};
    }
    return seating.take();
}

} // namespace tamarin
