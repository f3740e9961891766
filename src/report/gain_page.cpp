#include "report/gain_page.h"

#include "report/page.h"
#include "report/shades.h"

#include <algorithm>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr size_t handsListed = 20;

constexpr const char* gainStyle = R"(
.gains th,.gains td{padding:.2rem 1.25rem .2rem 0;border-bottom:1px solid var(--line);
text-align:right;font-weight:400;white-space:nowrap}
.gains th{color:var(--soft)}
.gains th:first-child,.gains td:first-child{text-align:left}
)";

std::string rowOf(const std::vector<std::string>& cells, const char* tag) {
    std::string text = "<tr>";
    for (const std::string& cell : cells)
        text += fmt::format("<{}>{}", tag, escapedForPage(cell));
    return text + "</tr>\n";
}

std::string heading(const GainReport& report) {
    std::string text = fmt::format(
        "<p>{} in the real game, {}: what an opponent who sees its cards and knows the strategy "
        "wins more than the strategy does against itself. All numbers are thousandths of the big "
        "blind a hand, the mean of both seats; each table adds up to <b>{}</b>.</p>\n",
        escapedForPage(report.strategy), escapedForPage(report.flops),
        report.text(report.whole.both));
    if (report.sampled)
        text += "<p>Every number is an estimate from a sample of flops. What the best response "
                "does before the flop was chosen on one half of the sample and valued on the "
                "other, so that the whole is on average at most the true one; of the rounds after "
                "the first the numbers are right on average. 95 intervals in 100 hold what they "
                "estimate. A number may fall below 0.</p>\n";
    return text;
}

std::string rounds(const GainReport& report) {
    std::string text = "<h2>By round</h2>\n";
    if (report.rounds.empty())
        return text + fmt::format("<p>{}.</p>\n", escapedForPage(noRounds));
    text += "<table class=gains>\n" + rowOf({"round", "gain", "part", "seat 0", "seat 1"}, "th");
    for (const GainReport::Round& round : report.rounds)
        text +=
            rowOf({round.name, report.text(round.gain.both), report.partOf(round.gain.both.mean),
                   fmt::format("{:.1f}", report.mbb * round.gain.seat[0]),
                   fmt::format("{:.1f}", report.mbb * round.gain.seat[1])},
                  "td");
    return text +
           "</table>\n<p>Of who plays as the strategy does before the round, and best from it on, "
           "what that gains more than the best from the next round on. A seat's number is of the "
           "hands that it plays there.</p>\n";
}

std::string firstDecisions(const GainReport& report) {
    std::string text =
        "<h2>By the best response's first decision</h2>\n<table class=gains>\n" +
        rowOf({"first decision", "does", "gain", "part", "hands", "the strategy's hands"}, "th");
    for (const GainReport::First& first : report.first)
        text +=
            rowOf({first.where, first.action, report.text(first.numbers.gain),
                   report.partOf(first.numbers.gain.mean), GainReport::percent(first.numbers.hands),
                   GainReport::percent(first.numbers.ownHands)},
                  "td");
    return text + "</table>\n<p>What the hands give with which the best response does this, "
                  "wherever in the hand they gain it; how often it comes there and does so, and "
                  "how often the strategy itself does.</p>\n";
}

// What a hand gives when it is dealt, from nothing to the most of all.
std::string grid(const GainReport& report) {
    double most = 0;
    for (const GainReport::Hand& hand : report.hands)
        most = std::max(most, hand.numbers.gain.both.mean);
    std::vector<std::string> fields(report.side * report.side, "<td>"); // of hands that are none
    for (const GainReport::Hand& hand : report.hands) {
        const double gain = hand.numbers.gain.both.mean;
        fields[hand.row * report.side + hand.column] = gridField(
            shade(oranges, most > 0 ? gain / most : 0), hand.name,
            fmt::format("{:.0f}", report.halved(gain)),
            fmt::format("{} when dealt, {} of the whole", report.text(hand.numbers.gain.both),
                        report.partOf(GainReport::inAll(hand))));
    }
    return "<h2>By starting hand, suited above the diagonal</h2>\n" + gridOf(fields, report.side) +
           "<p>What is gained with a hand when it is dealt: the darker, the more.</p>\n";
}

std::string mostGained(const GainReport& report) {
    std::string text = "<h2>The hands with which most is gained in all</h2>\n"
                       "<table class=gains>\n" +
                       rowOf({"hand", "gain", "part", "dealt", "when dealt"}, "th");
    for (size_t i = 0; i < std::min(handsListed, report.hands.size()); ++i) {
        const GainReport::Hand& hand = report.hands[i];
        text +=
            rowOf({hand.name, fmt::format("{:.2f}", report.halved(GainReport::inAll(hand))),
                   report.partOf(GainReport::inAll(hand)), GainReport::percent(hand.numbers.dealt),
                   report.text(hand.numbers.gain.both)},
                  "td");
    }
    text += "</table>\n";
    if (report.sampled)
        text += "<p>Of so many hands, the first are partly those that the sample flatters.</p>\n";
    return text;
}

constexpr const char* unsaid =
    "<h2>What this does not say</h2>\n<p>A best response knows the strategy from the first hand; "
    "how soon a real opponent would find out is not said. By round, what is counted as a later "
    "round's could partly be had by better play before it, and the other way round: counted from "
    "the first round on, other numbers would come of it. A hand with which much is gained is not "
    "one that the strategy plays badly: it is the opponent's hand, against which the strategy's "
    "hands together are played too loosely or too tightly.</p>\n";

} // namespace

std::string gainPage(const GainReport& report) {
    return pageOf(report.game + ": where the strategy loses", std::string(shadeStyle) + gainStyle,
                  heading(report) + rounds(report) + firstDecisions(report) + grid(report) +
                      mostGained(report) + unsaid);
}

} // namespace tamarin
