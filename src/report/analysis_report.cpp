#include "report/analysis_report.h"

#include "report/result_text.h"
#include "support/progress.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

// The standard deviation of one hand; of a mean over blocks, as if hands were independent.
double deviationOf(const RunningMoments& moments, uint64_t handsOfOne) {
    return std::sqrt(moments.variance() * static_cast<double>(handsOfOne));
}

nlohmann::ordered_json momentsAsJson(const RunningMoments& moments, double factor) {
    const Interval interval = interval95(moments);
    nlohmann::ordered_json json = {{"count", moments.count()}, {"mean", interval.mean * factor}};
    if (std::isfinite(interval.halfWidth))
        json["plusMinus95"] = interval.halfWidth * factor;
    else
        json["plusMinus95"] = nullptr; // JSON has no infinity
    return json;
}

std::string headOf(const AnalysisReport& report) {
    const MatchAnalysis& analysis = *report.analysis;
    std::string head = fmt::format("{}: {}, {} hands", report.log, report.gameName,
                                   describeCount(analysis.hands()));
    if (analysis.duplicate())
        head += fmt::format(" in {} duplicate blocks", describeCount(analysis.blocks()));
    return head + '\n';
}

// One line a way of counting, with what is left of the deviation of one hand.
std::string playerLines(const MatchAnalysis::Player& player, bool duplicate, size_t seats,
                        const ResultUnit& unit) {
    std::string text = fmt::format("\n{}: {:+.10g} chips\n", player.name, player.chips);
    const auto line = [&](const char* name, const RunningMoments& moments, uint64_t hands) {
        if (moments.count() > 0)
            text += fmt::format("  {:<28}{:<22}{:>8.{}f}\n", name,
                                resultWithInterval(interval95(moments), unit.factor, unit.digits),
                                deviationOf(moments, hands) * unit.factor, unit.digits);
    };
    text +=
        fmt::format("  {:<28}{:<22}{:>8}\n", fmt::format("{} (95 %)", unit.name), "", "deviation");
    line("as played", player.perHand.plain, 1);
    if (duplicate)
        line("as played, by blocks", player.perBlock.plain, seats);
    line("luck-free", player.perHand.luckFree, 1);
    if (duplicate)
        line("luck-free, by blocks", player.perBlock.luckFree, seats);
    line("worth of the deals", player.perHand.expected, 1);
    if (duplicate)
        line("worth of the deals, blocks", player.perBlock.expected, seats);
    return text;
}

} // namespace

std::string analysisAsTable(const AnalysisReport& report) {
    const MatchAnalysis& analysis = *report.analysis;
    const ResultUnit unit = unitOf(*report.game);
    std::string text = headOf(report);
    for (const auto& player : analysis.players()) {
        text += playerLines(player, analysis.duplicate(), report.game->numPlayers, unit);
        for (const HandCut& cut : player.cuts) {
            if (cut.parts.size() > 20)
                continue; // the starting hands: in the JSON and on the page
            text += fmt::format("  by {}\n", cut.name);
            for (const auto& [order, part] : cut.parts)
                text += fmt::format(
                    "    {:<32}{:>10}  {}\n", part.name, describeCount(part.won.count()),
                    resultWithInterval(interval95(part.won), unit.factor, unit.digits));
        }
    }
    return text;
}

nlohmann::ordered_json analysisAsJson(const AnalysisReport& report) {
    const MatchAnalysis& analysis = *report.analysis;
    nlohmann::ordered_json json = {{"log", report.log},
                                   {"game", report.gameName},
                                   {"unit", "chips/hand"},
                                   {"bigBlind", bigBlind(*report.game)},
                                   {"hands", analysis.hands()}};
    json["duplicateBlocks"] =
        analysis.duplicate() ? nlohmann::ordered_json(analysis.blocks()) : nullptr;
    json["players"] = nlohmann::ordered_json::array();
    for (const auto& player : analysis.players()) {
        nlohmann::ordered_json entry = {{"name", player.name}, {"chips", player.chips}};
        const auto figures = [&](const char* name, const ResultFigures& kept) {
            entry[name]["asPlayed"] = momentsAsJson(kept.plain, 1);
            if (kept.luckFree.count() > 0)
                entry[name]["luckFree"] = momentsAsJson(kept.luckFree, 1);
            if (kept.expected.count() > 0)
                entry[name]["worthOfDeals"] = momentsAsJson(kept.expected, 1);
        };
        figures("byHand", player.perHand);
        if (analysis.duplicate())
            figures("byBlock", player.perBlock);
        for (const HandCut& cut : player.cuts) {
            auto parts = nlohmann::ordered_json::array();
            for (const auto& [order, part] : cut.parts) {
                nlohmann::ordered_json one = {{"name", part.name}};
                one.update(momentsAsJson(part.won, 1));
                parts.push_back(std::move(one));
            }
            entry["cuts"][cut.name] = std::move(parts);
        }
        json["players"].push_back(std::move(entry));
    }
    return json;
}

} // namespace tamarin
