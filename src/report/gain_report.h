// Where a best response makes its gain (response/gain_parts.h), as text and as JSON; gain_page.h
// has it as a page.
//
// People read thousandths of the big blind a hand, and what both seats gain as the mean of the two:
// exploitability, and parts of it. A seat's own first decisions are halved likewise, so that every
// table adds up to the same. JSON has chips, and the seats' sum.
#pragma once

#include "response/gain_parts.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

struct GainReport {
    struct Round {
        std::string name;
        GainParts::Part gain;
    };
    struct First {
        std::string where;  // "seat 0 after raise"
        std::string before; // the other seat's actions, "r"
        std::string action; // "fold", "check", "call", "raise"
        GainParts::First numbers;
    };
    struct Hand {
        std::string name;   // "AKs"
        size_t row, column; // in the grid: by rank from the highest down, suited above the diagonal
        GainParts::Hand numbers;
    };

    std::string game;
    std::string strategy; // what was measured, for people
    std::string flops;    // likewise
    bool sampled = false;
    double mbb = 0;  // thousandths of the big blind in a chip
    size_t side = 0; // rows of the grid of starting hands
    GainParts::Part whole;
    std::vector<Round> rounds; // empty where some flop was finished without them
    std::vector<First> first;
    std::vector<Hand> hands; // those first with which most is gained in all

    // The part of the exploitability that a gain is, mbb a hand: both seats' or one seat's.
    double halved(double gain) const { return mbb * gain / 2; }
    std::string text(const Interval& gain) const; // "12.3 +- 4.5", or "12.34" of all flops
    std::string partOf(double gain) const;        // "17 %" of the whole
    static std::string percent(double share);     // "4.5 %"
    // What a hand gives in all, and a hand that it is dealt.
    static double inAll(const Hand& hand) {
        return hand.numbers.dealt * hand.numbers.gain.both.mean;
    }
};

// Fills in all but game, strategy and flops. big blind: in chips.
GainReport gainReport(const MeasuredGame& game, const GainParts& parts, double bigBlind,
                      bool sampled);

// What is said where there are no rounds.
extern const char* const noRounds;

// The rounds, the first decisions, and the few hands with which most is gained.
std::string gainsAsText(const GainReport& report);
nlohmann::ordered_json gainsAsJson(const GainReport& report);

} // namespace tamarin
