#include "web/web_table.h"

#include "support/file.h"
#include "support/interrupt.h"
#include "web/hand_view.h"

#include <cassert>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

const char* nameOfPhase(int phase) {
    constexpr const char* names[] = {"seating", "playing", "between", "over"};
    return names[phase];
}

Json intervalAsJson(const RunningMoments& moments) {
    if (moments.count() == 0)
        return Json();
    const Interval interval = interval95(moments);
    return {{"mean", interval.mean},
            {"halfWidth", std::isfinite(interval.halfWidth) ? Json(interval.halfWidth) : Json()}};
}

} // namespace

WebTable::WebTable(Setup setup) : setup_(std::move(setup)) {
    players_.emplace_back(personName);
    for (const SeatPlan& plan : setup_.opponents)
        players_.push_back(plan.name);
    options_.hands = UINT32_MAX;
    options_.seed = setup_.seed;
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        phase_ = Phase::over;
        problem_ = std::string("no sockets for the table: ") + std::strerror(errno);
        return;
    }
    dealerEnd_ = ends[0];
    ownEnd_ = ends[1];
    listener_ = std::thread([this] { listen(); });
    match_ = std::thread([this] { runMatch(); });
}

WebTable::~WebTable() {
    leave();
    if (match_.joinable())
        match_.join();
    if (ownEnd_ >= 0)
        ::shutdown(ownEnd_, SHUT_RDWR);
    if (listener_.joinable())
        listener_.join();
    if (ownEnd_ >= 0)
        ::close(ownEnd_);
    if (dealerEnd_ >= 0)
        ::close(dealerEnd_);
}

// The players are children of this thread: they are told to end when it does.
void WebTable::runMatch() {
    const Status played = playUntilOver();
    const std::lock_guard lock(mutex_);
    phase_ = Phase::over;
    asked_.clear();
    if (!played && !leaving_ && !interrupted())
        problem_ = played.error();
    tellWatchers();
}

Status WebTable::playUntilOver() {
    const std::string folder = std::filesystem::path(setup_.log).parent_path().string();
    if (Status made = makeDirectories(folder); !made)
        return made;
    auto log = HandLog::create(setup_.log, [this] { return keepPlaying(); });
    if (!log)
        return Error{log.error()};
    log_ = std::move(*log);
    SeatingOptions seating;
    seating.keepWaiting = [this] { return keepPlaying(); };
    auto players = seatPlayers(setup_.opponents, seating);
    if (!players)
        return Error{players.error()};
    Player person;
    person.name = personName;
    person.unhurried = true;
    person.connection.emplace(std::exchange(dealerEnd_, -1));
    players->insert(players->begin(), std::move(person));
    if (Status begun =
            log_.begin(game() + " seed " + std::to_string(setup_.seed) + " rotated, in a browser");
        !begun)
        return begun;
    MatchEvents events;
    events.keepPlaying = [this] { return keepPlaying(); };
    events.handFinished = [this](const FinishedHand& hand) { return handFinished(hand); };
    events.faulty = [this](size_t player, Fault fault, uint32_t hand, const std::string&) {
        const std::lock_guard lock(mutex_);
        notice_ = players_[player] + " is " + faultName(fault) + " in hand " +
                  std::to_string(hand) + "; the dealer plays for it";
    };
    const MatchResult result = playMatch(setup_.game->rules.get(), *players, options_, events);
    dismissPlayers(*players, true);
    if (Status closed = log_.close(); !closed)
        return closed;
    return result.failure.empty() ? Status() : Error{result.failure};
}

bool WebTable::keepPlaying() const {
    const std::lock_guard lock(mutex_);
    return !leaving_ && !interrupted();
}

// The other end of the person's connection: lines of the dealer's, until it closes.
void WebTable::listen() {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t count = ::read(ownEnd_, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        text.append(buffer, static_cast<size_t>(count));
        size_t begin = 0;
        for (size_t end; (end = text.find("\r\n", begin)) != std::string::npos; begin = end + 2)
            hear(text.substr(begin, end - begin));
        text.erase(0, begin);
    }
}

void WebTable::hear(const std::string& line) {
    MatchState state{};
    if (readMatchState(line.c_str(), setup_.game->rules.get(), &state) < 0)
        return; // the dealer is ours: there is no such line
    const std::lock_guard lock(mutex_);
    // A finished hand has come with all its cards, and what is left of it on the way comes later.
    if (phase_ == Phase::over || state.state.finished ||
        (handsFinished_ > 0 && state.state.handId <= finished_.handId))
        return;
    view_ = state;
    seen_ = true;
    phase_ = Phase::playing;
    const bool own = currentPlayer(setup_.game->rules.get(), &state.state) == state.viewingPlayer;
    asked_ = own ? line : "";
    tellWatchers();
}

// In the match's thread, which waits here until the person wants to go on.
Status WebTable::handFinished(const FinishedHand& hand) {
    LoggedHand logged{*hand.state, {hand.chips.begin(), hand.chips.end()}, {}};
    for (const size_t player : hand.players)
        logged.names.push_back(players_[player]);
    if (Status written = log_.add(setup_.game->rules.get(), logged); !written)
        return written;
    std::unique_lock lock(mutex_);
    finished_ = *hand.state;
    ++handsFinished_;
    for (size_t seat = 0; seat < hand.players.size(); ++seat)
        if (hand.players[seat] == 0) {
            chips_ += hand.chips[seat];
            perHand_.add(hand.chips[seat]);
        }
    phase_ = Phase::between;
    asked_.clear();
    nextWanted_ = false;
    tellWatchers();
    constexpr auto look = std::chrono::milliseconds(200); // for a signal, which wakes nobody
    while (!nextWanted_ && !leaving_ && !interrupted())
        dealOn_.wait_for(lock, look);
    return {};
}

Status WebTable::act(uint32_t hand, uint32_t actions, Action action) {
    const std::lock_guard lock(mutex_);
    const Game* game = setup_.game->rules.get();
    if (phase_ != Phase::playing || asked_.empty() || view_.state.handId != hand ||
        actionsIn(view_.state) != actions)
        return Error{"it is not your turn in that state any more"};
    if (game->bettingRule == limitRule)
        action.size = 0;
    int32_t least = 0;
    int32_t most = 0;
    if (action.type == actionRaise && !raiseIsValid(game, &view_.state, &least, &most))
        return Error{"the rules allow no raise here"};
    if (action.type == actionRaise && game->bettingRule == noLimitRule &&
        (action.size < least || action.size > most))
        return Error{"a raise is to " + std::to_string(least) + " up to " + std::to_string(most)};
    if (!isValidAction(game, &view_.state, 0, &action))
        return Error{"the rules do not allow that here"};
    char text[32];
    const int length = printAction(game, &action, sizeof text, text);
    assert(length > 0);
    const std::string answer =
        asked_ + ":" + std::string(text, static_cast<size_t>(length)) + "\r\n";
    asked_.clear();
    // A line is far smaller than the socket's buffer, and the dealer takes each before it asks
    // again.
    if (::send(ownEnd_, answer.data(), answer.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(answer.size()))
        return Error{"the dealer has gone"};
    return {};
}

Status WebTable::next(uint32_t hand) {
    const std::lock_guard lock(mutex_);
    if (phase_ != Phase::between || finished_.handId != hand)
        return Error{"that hand is not the one that waits"};
    nextWanted_ = true;
    dealOn_.notify_all();
    return {};
}

void WebTable::leave() {
    const std::lock_guard lock(mutex_);
    leaving_ = true;
    dealOn_.notify_all();
}

bool WebTable::over() const {
    const std::lock_guard lock(mutex_);
    return phase_ == Phase::over;
}

std::vector<std::string> WebTable::namesOf(uint32_t hand) const {
    std::vector<std::string> names;
    for (const size_t player : seatsOfHand(options_, players_.size(), hand))
        names.push_back(players_[player]);
    return names;
}

std::string WebTable::snapshot() const {
    const std::lock_guard lock(mutex_);
    const Game& game = *setup_.game->rules;
    Json table = {{"type", "table"},
                  {"table", setup_.id},
                  {"version", version_},
                  {"game", setup_.game->name},
                  {"limit", game.bettingRule == limitRule},
                  {"bigBlind", bigBlind(game)},
                  {"phase", nameOfPhase(static_cast<int>(phase_))},
                  {"problem", problem_},
                  {"notice", notice_},
                  {"log", std::filesystem::path(setup_.log).filename().string()},
                  {"players", players_}};
    table["session"] = {{"hands", handsFinished_}, {"chips", chips_}};
    table["session"]["perHand"] = intervalAsJson(perHand_);
    // After the last hand it is the last hand that stays on the table.
    const bool ended = handsFinished_ > 0 && (!seen_ || finished_.handId >= view_.state.handId);
    const State& state = ended ? finished_ : view_.state;
    if (!ended && !seen_) {
        table["hand"] = nullptr;
        return wireText(table);
    }
    const std::vector<std::string> names = namesOf(state.handId);
    uint8_t you = 0;
    while (names[you] != personName)
        ++you;
    table["hand"] = handAsJson(game, state, {names, you, ended});
    if (asked_.empty())
        table["hand"]["options"] = nullptr;
    return wireText(table);
}

std::string WebTable::summary() const {
    const std::lock_guard lock(mutex_);
    return wireText({{"table", setup_.id},
                     {"game", setup_.game->name},
                     {"players", players_},
                     {"hands", handsFinished_},
                     {"phase", nameOfPhase(static_cast<int>(phase_))}});
}

uint64_t WebTable::watch(std::function<void()> changed) {
    const std::lock_guard lock(mutex_);
    watchers_[++lastWatcher_] = std::move(changed);
    return lastWatcher_;
}

void WebTable::unwatch(uint64_t watcher) {
    const std::lock_guard lock(mutex_);
    watchers_.erase(watcher);
}

// With the mutex held.
void WebTable::tellWatchers() {
    ++version_;
    for (const auto& [id, changed] : watchers_)
        changed();
}

} // namespace tamarin
