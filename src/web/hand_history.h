// Match logs of a playing directory as JSON: which there are, their hands, one hand step by step,
// and how a session went.
//
// Logs are known by their file names in DIR/logs and by nothing else; a name that is not in that
// folder is an error, so no path leads out of it.
#pragma once

#include "support/result.h"

#include <cstdint>
#include <functional>
#include <string>

namespace tamarin {

class HandHistory {
public:
    // Larger logs are for `tamarin analyse`: every question reads its log from the start.
    static constexpr uint64_t largestLog = uint64_t{64} << 20;
    static constexpr size_t mostListed = 200;  // hands in one answer
    static constexpr size_t mostPoints = 1000; // of the curve

    explicit HandHistory(std::string directory) : directory_(std::move(directory)) {}

    // [{log, game, bytes}]: files *.log that begin as match logs do, the latest first.
    std::string logs() const;
    // {log, game, players, total, hands: [{number, hand, names, board, cards, chips}], results}:
    // hands from the first-th on, at most mostListed; results of every player with its 95 %
    // interval, chips a hand.
    Result<std::string> hands(const std::string& log, uint64_t first) const;
    // The number-th hand, as hand_view.h has it, with all cards.
    Result<std::string> hand(const std::string& log, uint64_t number) const;
    // {player, hands: [...], chips: [...], low: [...], high: [...]}: what the player (the person,
    // or else the first) had won after so many hands, and where its true mean would have put it in
    // 95 of 100 sessions.
    Result<std::string> curve(const std::string& log) const;

private:
    std::string directory_;
};

} // namespace tamarin
