#include "report/gain_report.h"

#include "game/text.h"
#include "report/holdem_chart.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr size_t handsInText = 5;

constexpr std::array<const char*, MAX_ROUNDS> roundWords{"pre-flop", "flop", "turn", "river"};

// Without the sign of what is rounded to nothing.
std::string fixed(double number, int digits) {
    const std::string text = fmt::format("{:.{}f}", number, digits);
    return text.find_first_of("123456789") == std::string::npos && text[0] == '-' ? text.substr(1)
                                                                                  : text;
}

std::string wordOf(const CompiledTree::Node& node, size_t action) {
    const bool owed = node.child[actionFold] != CompiledTree::noChild;
    if (action == actionFold)
        return "fold";
    if (action == actionRaise)
        return "raise";
    return owed ? "call" : "check";
}

GainReport::First firstOf(const CompiledTree& tree, const GainParts::First& numbers) {
    const auto& nodes = tree.nodes();
    const auto at = static_cast<size_t>(numbers.node);
    std::string before;
    std::string words;
    for (int32_t edge = nodes[at].parentEdge; edge != CompiledTree::noEdge;) {
        const auto& above = nodes[static_cast<size_t>(edge / numAbstractedActions)];
        const auto action = static_cast<size_t>(edge % numAbstractedActions);
        before.insert(before.begin(), actionChars[action]);
        words = wordOf(above, action) + (words.empty() ? "" : ", " + words);
        edge = above.parentEdge;
    }
    return {
        fmt::format("seat {} {}", numbers.seat, words.empty() ? "first to act" : "after " + words),
        before, wordOf(nodes[at], numbers.action), numbers};
}

GainReport::Hand handOf(const PublicDeck& deck, const GainParts::Hand& numbers) {
    size_t holding = 0;
    while (deck.handClassOf(holding) != numbers.handClass)
        ++holding;
    const auto cards = deck.cardsOf(holding);
    const auto place = [](uint8_t card) {
        return static_cast<size_t>(MAX_RANKS - 1 - card / MAX_SUITS);
    };
    const auto [high, low] = std::minmax({place(cards[0]), place(cards[1])});
    const bool suited = cards[0] % MAX_SUITS == cards[1] % MAX_SUITS;
    const size_t row = suited ? high : low;
    const size_t column = suited ? low : high;
    return {startingHandAt(row, column), row, column, numbers};
}

std::string table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<size_t> widths(rows.front().size());
    for (const auto& row : rows)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    std::string text;
    for (const auto& row : rows) {
        for (size_t i = 0; i < row.size(); ++i)
            text += i == 0 ? fmt::format("{:<{}}", row[i], widths[i])
                           : fmt::format("  {:>{}}", row[i], widths[i]);
        text += '\n';
    }
    return text;
}

nlohmann::ordered_json asJson(const Interval& gain, const char* name, bool sampled) {
    nlohmann::ordered_json json = {{name, gain.mean}};
    if (sampled)
        json["interval95"] = gain.halfWidth;
    return json;
}

nlohmann::ordered_json asJson(const GainParts::Part& part, bool sampled) {
    auto json = asJson(part.both, "gains", sampled);
    json["seats"] = part.seat;
    return json;
}

} // namespace

const char* const noRounds =
    "by round nothing is known: some of these flops were finished by an earlier version, which did "
    "not look; with another --finished folder they are worked out anew";

std::string GainReport::text(const Interval& gain) const {
    if (!sampled)
        return fixed(halved(gain.mean), 2);
    return fixed(halved(gain.mean), 1) + " +- " + fixed(halved(gain.halfWidth), 1);
}

// Of next to nothing there are no parts.
std::string GainReport::percent(double share) {
    return fixed(100 * share, 1) + " %";
}

std::string GainReport::partOf(double gain) const {
    if (halved(whole.both.mean) < 0.005)
        return "-";
    return fixed(100 * gain / whole.both.mean, 0) + " %";
}

GainReport gainReport(const MeasuredGame& game, const GainParts& parts, double bigBlind,
                      bool sampled) {
    GainReport report;
    report.sampled = sampled;
    report.mbb = 1000 / bigBlind;
    report.side = static_cast<size_t>(game.game.numRanks);
    report.whole = parts.whole;
    for (size_t round = 0; round < parts.rounds.size(); ++round)
        report.rounds.push_back({roundWords[round], parts.rounds[round]});
    for (const GainParts::First& first : parts.first)
        report.first.push_back(firstOf(game.tree, first));
    for (const GainParts::Hand& hand : parts.hands)
        report.hands.push_back(handOf(game.deck, hand));
    std::ranges::stable_sort(report.hands, std::ranges::greater{}, GainReport::inAll);
    return report;
}

std::string gainsAsText(const GainReport& report) {
    std::string text = fmt::format("where the {} are made{}\n", report.text(report.whole.both),
                                   report.sampled ? ": parts of the second figure (95 %)" : "");
    if (report.rounds.empty()) {
        text += std::string(noRounds) + "\n";
    } else {
        std::vector<std::vector<std::string>> rounds{{"round", "mbb/hand", "part"}};
        for (const GainReport::Round& round : report.rounds)
            rounds.push_back(
                {round.name, report.text(round.gain.both), report.partOf(round.gain.both.mean)});
        text += table(rounds);
    }
    std::vector<std::vector<std::string>> first{
        {"first decision, best response", "mbb/hand", "part", "hands", "strategy's"}};
    for (const GainReport::First& each : report.first)
        first.push_back({each.where + ": " + each.action, report.text(each.numbers.gain),
                         report.partOf(each.numbers.gain.mean),
                         GainReport::percent(each.numbers.hands),
                         GainReport::percent(each.numbers.ownHands)});
    text += table(first);
    std::vector<std::vector<std::string>> hands{{"hand", "mbb/hand", "part", "when dealt"}};
    for (size_t i = 0; i < std::min(handsInText, report.hands.size()); ++i) {
        const GainReport::Hand& hand = report.hands[i];
        hands.push_back({hand.name, fixed(report.halved(GainReport::inAll(hand)), 2),
                         report.partOf(GainReport::inAll(hand)),
                         report.text(hand.numbers.gain.both)});
    }
    return text + table(hands);
}

nlohmann::ordered_json gainsAsJson(const GainReport& report) {
    auto json = asJson(report.whole, report.sampled);
    json["of"] = report.sampled ? "crossed" : "gains";
    if (!report.rounds.empty())
        json["rounds"] = nlohmann::ordered_json::array();
    for (const GainReport::Round& round : report.rounds) {
        auto row = asJson(round.gain, report.sampled);
        row["round"] = round.name;
        json["rounds"].push_back(row);
    }
    json["firstDecisions"] = nlohmann::ordered_json::array();
    for (const GainReport::First& first : report.first) {
        auto row = asJson(first.numbers.gain, "gain", report.sampled);
        row.update({{"seat", first.numbers.seat},
                    {"before", first.before},
                    {"action", first.action},
                    {"hands", first.numbers.hands},
                    {"strategyHands", first.numbers.ownHands}});
        json["firstDecisions"].push_back(row);
    }
    json["hands"] = nlohmann::ordered_json::array();
    for (const GainReport::Hand& hand : report.hands) {
        auto row = asJson(hand.numbers.gain, report.sampled);
        row.update({{"hand", hand.name}, {"dealt", hand.numbers.dealt}});
        json["hands"].push_back(row);
    }
    return json;
}

} // namespace tamarin
