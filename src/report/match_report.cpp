#include "report/match_report.h"

#include "report/result_text.h"
#include "support/progress.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

std::string describeLatency(Duration duration) {
    const double nanoseconds = static_cast<double>(duration.count());
    if (nanoseconds < 1e6)
        return fmt::format("{:.0f} us", nanoseconds / 1e3);
    if (nanoseconds < 1e9)
        return fmt::format("{:.1f} ms", nanoseconds / 1e6);
    return fmt::format("{:.2f} s", nanoseconds / 1e9);
}

std::string describeFaults(const PlayerResult& player) {
    std::string text;
    for (int fault = 0; fault < numFaults; ++fault)
        if (const uint64_t count = player.faults[static_cast<size_t>(fault)])
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count,
                                faultName(static_cast<Fault>(fault)));
    return text.empty() ? "none" : text;
}

const char* seatRule(const MatchOptions& options) {
    if (options.duplicate)
        return "duplicate";
    return options.fixedSeats ? "fixed" : "rotated";
}

using Row = std::vector<std::string>;

// The first column to the left, the others to the right but for the last.
std::string layOut(const std::vector<Row>& rows) {
    std::vector<size_t> widths;
    for (const Row& row : rows)
        for (size_t i = 0; i < row.size(); ++i) {
            if (widths.size() <= i)
                widths.push_back(0);
            widths[i] = std::max(widths[i], row[i].size());
        }
    std::string text;
    for (const Row& row : rows) {
        for (size_t i = 0; i < row.size(); ++i)
            if (i == 0)
                text += fmt::format("{:<{}}", row[i], widths[i]);
            else if (i + 1 < row.size())
                text += fmt::format("  {:>{}}", row[i], widths[i]);
            else
                text += "  " + row[i];
        text += '\n';
    }
    return text;
}

nlohmann::ordered_json intervalAsJson(const Interval& interval, double factor) {
    nlohmann::ordered_json json;
    json["mean"] = interval.mean * factor;
    // JSON has no infinity.
    if (std::isfinite(interval.halfWidth))
        json["plusMinus95"] = interval.halfWidth * factor;
    else
        json["plusMinus95"] = nullptr;
    return json;
}

nlohmann::ordered_json latencyAsJson(const LatencyHistogram& latency) {
    const auto microseconds = [](Duration duration) {
        return static_cast<double>(duration.count()) / 1e3;
    };
    return {{"answers", latency.count()},
            {"median", microseconds(latency.quantile(0.5))},
            {"p99", microseconds(latency.quantile(0.99))},
            {"longest", microseconds(latency.longest())}};
}

} // namespace

std::string reportAsTable(const MatchReport& report) {
    const MatchResult& result = *report.result;
    const Scoreboard& board = result.board;
    const int32_t blind = bigBlind(*report.game);

    std::string head = fmt::format("{}: {} hands", report.gameName, describeCount(board.hands()));
    if (report.options.duplicate)
        head += fmt::format(" in {} duplicate blocks", describeCount(board.units()));
    head += fmt::format(", seed {}, seats {}", report.options.seed, seatRule(report.options));
    if (result.seconds > 0)
        head +=
            fmt::format(", {} hands/s", describeCount(static_cast<uint64_t>(std::llround(
                                            static_cast<double>(result.played) / result.seconds))));
    head += '\n';
    if (result.stopped)
        head += fmt::format("stopped before all {} hands were played\n",
                            describeCount(report.options.hands));
    if (board.handsLeftOver() > 0)
        head +=
            fmt::format("{} hands of an unfinished block are not counted\n", board.handsLeftOver());

    const ResultUnit unit = unitOf(*report.game);
    std::vector<Row> rows = {{"player", "chips", "chips/hand (95 %)", "mbb/hand (95 %)", "fold",
                              "call", "raise", "median", "p99", "faults"}};
    const auto freedAt = rows[0].begin() + 4;
    if (!report.freed.empty() && report.freed[0].expected)
        rows[0].insert(freedAt, {"luck-free (95 %)", "worth of deals (95 %)"});
    else if (!report.freed.empty())
        rows[0].insert(freedAt, "luck-free (95 %)");
    for (size_t i = 0; i < result.players.size(); ++i) {
        const PlayerResult& player = result.players[i];
        const Interval perHand = board.perHand(i);
        rows.push_back({player.name, fmt::format("{:+.10g}", board.chips(i)),
                        resultWithInterval(perHand, 1, 4),
                        blind > 0 ? resultWithInterval(perHand, 1000.0 / blind, 1) : "-",
                        describeCount(player.actions[0]), describeCount(player.actions[1]),
                        describeCount(player.actions[2]),
                        describeLatency(player.latency.quantile(0.5)),
                        describeLatency(player.latency.quantile(0.99)),
                        describeFaults(player) + (player.gone ? " (left the match)" : "")});
        if (report.freed.empty())
            continue;
        const FreedFigures& freed = report.freed[i];
        Row& row = rows.back();
        auto at = row.insert(row.begin() + 4,
                             resultWithInterval(freed.luckFree, unit.factor, unit.digits));
        if (freed.expected)
            row.insert(at + 1, resultWithInterval(*freed.expected, unit.factor, unit.digits));
    }
    return head + layOut(rows);
}

nlohmann::ordered_json reportAsJson(const MatchReport& report) {
    const MatchResult& result = *report.result;
    const Scoreboard& board = result.board;
    const int32_t blind = bigBlind(*report.game);
    nlohmann::ordered_json json;
    json["game"] = report.gameName;
    json["hands"] = board.hands();
    json["handsAsked"] = report.options.hands;
    json["handsNotCounted"] = board.handsLeftOver();
    json["duplicateBlocks"] =
        report.options.duplicate ? nlohmann::ordered_json(board.units()) : nullptr;
    json["seed"] = report.options.seed;
    json["seats"] = seatRule(report.options);
    json["bigBlind"] = blind;
    json["seconds"] = result.seconds;
    json["stopped"] = result.stopped;
    json["failure"] = result.failure.empty() ? nullptr : nlohmann::ordered_json(result.failure);
    for (size_t i = 0; i < result.players.size(); ++i) {
        const PlayerResult& player = result.players[i];
        nlohmann::ordered_json entry;
        entry["name"] = player.name;
        entry["chips"] = board.chips(i);
        entry["chipsPerHand"] = intervalAsJson(board.perHand(i), 1);
        entry["mbbPerHand"] =
            blind > 0 ? intervalAsJson(board.perHand(i), 1000.0 / blind) : nullptr;
        if (!report.freed.empty()) {
            const FreedFigures& freed = report.freed[i];
            entry["luckFreeChipsPerHand"] = intervalAsJson(freed.luckFree, 1);
            if (freed.expected)
                entry["worthOfDealsPerHand"] = intervalAsJson(*freed.expected, 1);
        }
        entry["actions"] = {
            {"fold", player.actions[0]}, {"call", player.actions[1]}, {"raise", player.actions[2]}};
        entry["responseMicroseconds"] = latencyAsJson(player.latency);
        entry["responseMicroseconds"]["firstTenth"] = latencyAsJson(player.firstTenth);
        entry["responseMicroseconds"]["lastTenth"] = latencyAsJson(player.lastTenth);
        for (int fault = 0; fault < numFaults; ++fault)
            entry["faults"][faultName(static_cast<Fault>(fault))] =
                player.faults[static_cast<size_t>(fault)];
        entry["gone"] = player.gone;
        json["players"].push_back(std::move(entry));
    }
    return json;
}

std::string printable(const std::string& text) {
    constexpr size_t longest = 300;
    std::string result;
    for (const char c : text.substr(0, longest))
        if (c >= ' ' && c <= '~')
            result += c;
        else
            result += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    return text.size() > longest ? result + "..." : result;
}

} // namespace tamarin
