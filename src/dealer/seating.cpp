#include "dealer/seating.h"

#include "dealer/greeting.h"
#include "support/progress.h"

#include <algorithm>
#include <list>
#include <map>
#include <sys/resource.h>

namespace tamarin {

namespace {

// Who has connected to a port and has not greeted yet. Beyond so many the oldest of the host that
// has the most make way, so that neither silence nor numbers keep the player out.
constexpr size_t mostVisitors = 16;
constexpr int mostBatches = 4;      // of those at the door, in one turn at a seat
constexpr uint64_t mostNotices = 5; // of strangers, a seat

struct Visitor {
    Visitor(Listener::Visitor arrived, const std::string& token)
        : connection(arrived.fd), host(std::move(arrived.host)), port(arrived.port),
          greeting(token) {}

    Connection connection;
    std::string host;
    uint16_t port;
    TimePoint since = steadyClock().now();
    SocketOwner owner = SocketOwner::unknown;
    Greeting greeting;
    Greeting::Outcome outcome = Greeting::Outcome::unfinished;
};

using Visitors = std::list<Visitor>;

// How many may come in at once. Descriptors must be left for everything else, or a crowd could keep
// the dealer from finding out who they are.
size_t visitorsAtATime() {
    constexpr rlim_t forTheRest = 256;
    rlimit descriptors{};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) != 0)
        return 1;
    const rlim_t left = descriptors.rlim_cur - std::min(descriptors.rlim_cur, forTheRest);
    return static_cast<size_t>(std::clamp<rlim_t>(left / 2, 1, 256));
}

class Seating {
public:
    Seating(const std::vector<SeatPlan>& plans, const SeatingOptions& options)
        : plans_(plans), options_(options), players_(plans.size()), doors_(plans.size()) {}

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
        for (size_t seat = 0; seat < plans_.size(); ++seat)
            if (doors_[seat].turnedAway > mostNotices)
                options_.notice(plans_[seat].name + ": turned away " +
                                std::to_string(doors_[seat].turnedAway) + " in all");
        return {};
    }

    std::vector<Player> take() { return std::move(players_); }
    std::vector<Player>& players() { return players_; }

private:
    // What leads to a seat.
    struct Door {
        std::optional<Listener> listener;
        Visitors visitors;
        bool certain = false; // it is the process that was started here who has the seat
        uint64_t turnedAway = 0;
    };

    // All ports are open before the first process starts, so nobody finds its port closed.
    Status open() {
        for (size_t seat = 0; seat < plans_.size(); ++seat) {
            const SeatPlan& plan = plans_[seat];
            auto listener =
                plan.command ? Listener::local() : Listener::at(plan.address, plan.port);
            if (!listener)
                return Error{plan.name + ": " + listener.error()};
            doors_[seat].listener = std::move(*listener);
            players_[seat].name = plan.name;
        }
        for (size_t seat = 0; seat < plans_.size(); ++seat) {
            const SeatPlan& plan = plans_[seat];
            const uint16_t port = doors_[seat].listener->port();
            if (!plan.command) {
                options_.notice("waiting for " + plan.name + " on " + plan.address + " port " +
                                std::to_string(port));
                continue;
            }
            Child::Command command = *plan.command;
            command.arguments.emplace_back(loopbackAddress);
            command.arguments.push_back(std::to_string(port));
            auto child = Child::start(command);
            if (!child)
                return Error{plan.name + ": " + child.error()};
            players_[seat].child = std::move(*child);
        }
        return {};
    }

    void wait(Duration atMost) {
        std::vector<int> fds;
        for (size_t seat = 0; seat < plans_.size(); ++seat) {
            if (players_[seat].connection)
                continue;
            fds.push_back(doors_[seat].listener->fd());
            for (const Visitor& visitor : doors_[seat].visitors)
                fds.push_back(visitor.connection.fd());
        }
        servePlayers(players_, atMost, fds);
    }

    // Moves one seat on as far as it will go now.
    Status look(size_t seat) {
        Player& player = players_[seat];
        if (player.connection)
            return player.connection->ended() ? lost(seat) : Status{};
        bool more = true;
        for (int batch = 0; more && batch < mostBatches; ++batch) {
            more = welcome(seat);
            if (Status status = hearAll(seat); !status || player.connection)
                return status;
        }
        if (player.child && player.child->ended())
            return Error{player.name + ": the player " + player.child->explain() +
                         ", before it connected"};
        return {};
    }

    // Lets in those who wait at the door, a batch at a time; whether there may be more.
    bool welcome(size_t seat) {
        Door& door = doors_[seat];
        size_t accepted = 0;
        for (; accepted < batchSize_; ++accepted) {
            auto arrived = door.listener->accept();
            if (!arrived)
                break;
            door.visitors.emplace_back(std::move(*arrived),
                                       players_[seat].child ? "" : options_.token);
        }
        if (accepted > 0)
            identify(seat);
        return accepted == batchSize_;
    }

    // Seats the first visitor who may sit, and turns away those who cannot stay.
    Status hearAll(size_t seat) {
        Visitors& visitors = doors_[seat].visitors;
        for (auto visitor = visitors.begin(); visitor != visitors.end();) {
            hear(*visitor);
            if (visitor->outcome == Greeting::Outcome::welcome && maySit(seat, *visitor)) {
                sit(seat, *visitor);
                return {};
            }
            const std::string complaint = complaintOf(seat, *visitor);
            if (complaint.empty()) {
                ++visitor;
                continue;
            }
            if (visitor->owner == SocketOwner::ours)
                return Error{players_[seat].name + ": the player " + complaint +
                             explain(players_[seat])};
            visitor = turnAway(seat, visitor, complaint);
        }
        // Everybody has been heard, so nobody goes who has greeted.
        while (visitors.size() > mostVisitors)
            turnAway(seat, leastWelcome(visitors), "made way for others");
        return {};
    }

    // Finds out which of those who connected are the process that was started for the seat.
    void identify(size_t seat) {
        if (!players_[seat].child)
            return;
        std::vector<Visitor*> asked;
        std::vector<int> sockets;
        for (Visitor& visitor : doors_[seat].visitors)
            if (visitor.owner == SocketOwner::unknown) {
                asked.push_back(&visitor);
                sockets.push_back(visitor.connection.fd());
            }
        const auto owners =
            ownersOfPeers(sockets, players_[seat].child->group(), options_.processes);
        for (size_t i = 0; i < asked.size(); ++i)
            asked[i]->owner = owners[i];
    }

    static void hear(Visitor& visitor) {
        visitor.connection.receive();
        std::string line;
        while (visitor.outcome == Greeting::Outcome::unfinished &&
               visitor.connection.nextLine(line))
            visitor.outcome = visitor.greeting.hear(line);
    }

    // Whether somebody who has greeted gets the seat.
    bool maySit(size_t seat, Visitor& visitor) {
        if (!players_[seat].child || visitor.owner == SocketOwner::ours)
            return true;
        if (visitor.owner == SocketOwner::unknown)
            identify(seat);
        if (visitor.owner != SocketOwner::unknown)
            return visitor.owner == SocketOwner::ours;
        // Of somebody who has left nothing can be known; of somebody who is there, it should.
        visitor.connection.receive();
        if (visitor.connection.ended())
            return false;
        if (!toldOfUncertainty_)
            options_.notice(plans_[seat].name +
                            ": the system does not tell whose the connections are; whoever greets "
                            "first has the seat");
        toldOfUncertainty_ = true;
        return true;
    }

    void sit(size_t seat, Visitor& visitor) {
        Door& door = doors_[seat];
        players_[seat].connection = std::move(visitor.connection);
        door.certain = visitor.owner == SocketOwner::ours;
        door.visitors.clear();
        if (door.certain)
            door.listener.reset(); // nobody else has business there
    }

    // Why a visitor cannot stay; empty while it can.
    std::string complaintOf(size_t seat, const Visitor& visitor) const {
        if (players_[seat].child && visitor.owner == SocketOwner::stranger)
            return "is no process of this player";
        if (visitor.outcome == Greeting::Outcome::refused)
            return visitor.greeting.complaint();
        if (visitor.connection.ended())
            return visitor.connection.ending() + (visitor.outcome == Greeting::Outcome::welcome
                                                      ? " before it had the seat"
                                                      : " before its version line");
        if (steadyClock().now() - visitor.since >= options_.greetingLimit)
            return "sent no version line within " +
                   describeDuration(seconds(options_.greetingLimit));
        return {};
    }

    Visitors::iterator turnAway(size_t seat, Visitors::iterator visitor, const std::string& why) {
        Door& door = doors_[seat];
        if (++door.turnedAway <= mostNotices)
            options_.notice(plans_[seat].name + ": turned away " + visitor->host + ":" +
                            std::to_string(visitor->port) + ", which " + why +
                            (door.turnedAway == mostNotices ? "; others are only counted" : ""));
        return door.visitors.erase(visitor);
    }

    // The oldest of those from the host that has the most; never one of our own while there are
    // others.
    static Visitors::iterator leastWelcome(Visitors& visitors) {
        std::map<std::string, size_t> fromHost;
        for (const Visitor& visitor : visitors)
            ++fromHost[visitor.host];
        const auto worse = [&](const Visitor& a, const Visitor& b) {
            const bool aOurs = a.owner == SocketOwner::ours;
            const bool bOurs = b.owner == SocketOwner::ours;
            return aOurs != bOurs ? bOurs : fromHost[a.host] > fromHost[b.host];
        };
        return std::ranges::min_element(visitors, worse); // of equals the first, which is oldest
    }

    // A seated player has left while others were still awaited.
    Status lost(size_t seat) {
        Player& player = players_[seat];
        const std::string how = player.connection->ending();
        if (doors_[seat].certain)
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
    std::vector<Player> players_;
    std::vector<Door> doors_;
    bool toldOfUncertainty_ = false;
    const size_t batchSize_ = visitorsAtATime();
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
