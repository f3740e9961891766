// Strategies of a playing directory as JSON: what there is, the whole tree of a small game, and one
// decision of hold'em with what every holding does there.
//
// Files stay mapped and tables open from one question to the next. Questions may come from several
// threads; one is answered at a time.
#pragma once

#include "support/result.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace tamarin {

class StrategyViews {
public:
    // Trees of more decision nodes are too large for a page.
    static constexpr size_t mostNodes = 5000;

    explicit StrategyViews(std::string directory);
    ~StrategyViews();

    // [{game, kind: "tree" or "grid", missing}]: the games whose strategies a page can show;
    // missing says what to do where there is none yet.
    std::string list() const;
    // {game, seats, value, best, nashConv, nodes: [{seat, round, betting, reach, next, sets}],
    // ends}: next has for each action a node's number, ~number of an end, or null; a set has its
    // card, its reach and its shares of fold, call and raise.
    Result<std::string> tree(const std::string& game) const;
    // The decision after the betting ("cr/") on a board of as many cards as its round has
    // ("Ks7d2c"), both of any bytes: {seat, round, actions, shares: ten buckets of three, buckets:
    // of the 1,326 holdings by their two cards' numbers; -1 for those that meet the board}.
    Result<std::string> grid(const std::string& game, const std::string& betting,
                             const std::string& board) const;

private:
    struct OpenGrid;
    Result<std::shared_ptr<OpenGrid>> openGrid(const std::string& game) const;

    std::string directory_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, std::shared_ptr<OpenGrid>> grids_;
};

} // namespace tamarin
