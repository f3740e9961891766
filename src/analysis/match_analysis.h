// A match taken apart: what every player won, all in all and by seat, by its first action, by the
// round that the hand reached, by its cards; over single hands, and over duplicate blocks where the
// log is one of duplicate deals.
#pragma once

#include "analysis/freed_results.h"
#include "dealer/hand_log.h"
#include "support/statistics.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tamarin {

// Results in chips a hand.
struct ResultFigures {
    RunningMoments plain;
    RunningMoments luckFree;
    RunningMoments expected;
};

// One of the ways to divide a player's hands; each hand is in one part. Parts by their order.
struct HandCut {
    struct Part {
        std::string name;
        RunningMoments won;
    };
    std::string name;
    std::map<size_t, Part> parts;
};

class MatchAnalysis {
public:
    struct Player {
        std::string name;
        double chips = 0;
        ResultFigures perHand;
        ResultFigures perBlock;
        std::vector<HandCut> cuts;
        std::array<double, 3> pending{}; // of the block under way: plain, luck-free, expected
    };
    // How the match stood after so many hands, by player; chips a hand.
    struct Standing {
        uint64_t hands;
        std::vector<Interval> plain;
        std::vector<Interval> luckFree; // empty where there is none
    };

    // The game must outlive the object.
    explicit MatchAnalysis(const Game& game) : game_(game) {}

    // freed: of the same hand. Refuses a hand in which one name sits twice, or a name that was not
    // there in the hands before.
    Status add(const LoggedHand& hand, const FreedHand& freed = {});

    uint64_t hands() const { return hands_; }
    // Whether every deal was played once for each rotation of the players, one after the other.
    bool duplicate() const { return duplicate_ && hands_ >= game_.numPlayers; }
    uint64_t blocks() const { return hands_ / game_.numPlayers; }
    // Over blocks in duplicate matches.
    const ResultFigures& figures(const Player& player) const {
        return duplicate() ? player.perBlock : player.perHand;
    }
    const std::vector<Player>& players() const { return players_; }
    // The number of a name; players are numbered as they first sat, in the order of the seats.
    size_t numberOf(const std::string& name) const;
    // A few hundred, evenly over the match.
    const std::vector<Standing>& standings() const { return standings_; }

private:
    Status seat(const LoggedHand& hand);
    void keepBlock(const LoggedHand& hand);
    void keepCuts(const LoggedHand& hand, size_t seat, Player& player) const;
    void keepStanding();

    const Game& game_;
    std::vector<Player> players_;
    std::vector<size_t> seats_; // of the hand being added: the player in each seat
    uint64_t hands_ = 0;
    bool duplicate_ = true;
    LoggedHand first_; // of the block under way
    std::vector<Standing> standings_;
    uint64_t standingEvery_ = 1;
};

// "AKs", "72o", "TT"; of a hand of one card its rank. Other hands have no name.
std::string startingHandName(const Game& game, const uint8_t* hole);

} // namespace tamarin
