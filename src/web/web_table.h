// A table with one person at it: a match of the dealer's, in threads of its own.
//
// The person is a seat like any other. Its connection is one end of a pair of sockets; at the other
// end a thread reads the dealer's lines, and answers go out there in the dealer's own words. So the
// dealer sends, judges and logs what it always does; it only waits for this seat without a limit,
// and after every hand until the person asks for the next. Whether a page is open plays no part: it
// can go and come back, and finds the hand as it was.
//
// All functions may be called from any thread.
#pragma once

#include "dealer/hand_log.h"
#include "dealer/match.h"
#include "directory/playing_directory.h"
#include "support/statistics.h"
#include "web/opponents.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tamarin {

inline constexpr const char* personName = "you";

class WebTable {
public:
    struct Setup {
        uint32_t id = 0;
        std::shared_ptr<const GameFile> game;
        std::vector<SeatPlan> opponents;
        uint64_t seed = 0; // of the cards; never shown to a page
        std::string log;   // the path of the match log; its folder is made
    };

    // Sits down at once; seating and dealing go on in the table's threads.
    explicit WebTable(Setup setup);
    WebTable(const WebTable&) = delete;
    WebTable& operator=(const WebTable&) = delete;
    ~WebTable(); // leaves, and waits for the players' end

    uint32_t id() const { return setup_.id; }
    const std::string& game() const { return setup_.game->name; }
    const std::string& log() const { return setup_.log; }

    // All that a page needs to know now, as JSON (docs/browser.md).
    std::string snapshot() const;
    // "table" of the list of tables: id, game, hands, phase.
    std::string summary() const;

    // The person's action in that hand, after so many actions. An error says why it is not taken.
    Status act(uint32_t hand, uint32_t actions, Action action);
    // Deals on after the hand.
    Status next(uint32_t hand);
    // Ends the match; what is finished stays in the log.
    void leave();
    bool over() const;

    // changed is called after every change until unwatch(), from the table's threads; it must
    // return at once and call nothing of the table.
    uint64_t watch(std::function<void()> changed);
    void unwatch(uint64_t watcher);

private:
    enum class Phase : uint8_t { seating, playing, between, over };

    void runMatch();
    Status playUntilOver();
    void listen();
    void hear(const std::string& line);
    Status handFinished(const FinishedHand& hand);
    bool keepPlaying() const;
    std::vector<std::string> namesOf(uint32_t hand) const;
    void tellWatchers();

    const Setup setup_;
    std::vector<std::string> players_; // names, in the dealer's order: the person is first
    MatchOptions options_;
    int dealerEnd_ = -1; // given to the dealer's connection when it takes it
    int ownEnd_ = -1;
    HandLog log_;

    mutable std::mutex mutex_;
    std::condition_variable dealOn_;
    Phase phase_ = Phase::seating;
    bool leaving_ = false;
    std::string problem_;     // why the match is over before its time
    std::string notice_;      // the last thing that went wrong without ending it
    std::string asked_;       // the state to answer, as it was sent; empty when nobody waits
    MatchState view_{};       // as it was last sent
    bool seen_ = false;       // whether there is a view
    State finished_{};        // the last finished hand, with everybody's cards
    bool nextWanted_ = false; // after it
    uint32_t handsFinished_ = 0;
    double chips_ = 0;       // won by the person
    RunningMoments perHand_; // the same
    std::map<uint64_t, std::function<void()>> watchers_;
    uint64_t lastWatcher_ = 0;
    uint64_t version_ = 0;

    std::thread listener_;
    std::thread match_;
};

} // namespace tamarin
