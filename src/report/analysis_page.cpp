#include "report/analysis_page.h"

#include "report/page.h"
#include "report/result_text.h"
#include "support/progress.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr const char* analysisStyle = R"(
:root{--plain:#3f7fbf;--free:#d9713c}
svg{display:block;width:100%;height:auto;max-width:56rem}
svg text{fill:var(--soft);font-size:12px}
svg .axis{stroke:var(--line)}
svg .plain{stroke:var(--plain)}svg .free{stroke:var(--free)}
svg polyline{fill:none;stroke-width:1.5}
svg polygon{stroke:none;opacity:.2}
svg polygon.plain{fill:var(--plain)}svg polygon.free{fill:var(--free)}
.legend i{display:inline-block;width:1.4rem;height:.8rem;margin-right:.3rem;vertical-align:-1px}
.legend span{margin-right:1rem}
td,th{padding:.1rem 1rem .1rem 0;text-align:left;font-weight:400}
td+td,th+th{text-align:right}
th{color:var(--soft)}
)";

constexpr double width = 860;
constexpr double height = 300;
constexpr double left = 64;
constexpr double bottom = 24;
constexpr double top = 8;

// Where hands and results lie on the drawing.
class Scale {
public:
    Scale(uint64_t hands, double least, double most)
        : hands_(static_cast<double>(hands)), least_(least), most_(most) {}
    double x(uint64_t hand) const {
        return left + (width - left - 8) * static_cast<double>(hand) / hands_;
    }
    double y(double result) const {
        const double place = (std::clamp(result, least_, most_) - least_) / (most_ - least_);
        return height - bottom - (height - bottom - top) * place;
    }

private:
    double hands_;
    double least_;
    double most_;
};

using Standings = std::vector<MatchAnalysis::Standing>;

const Interval* of(const MatchAnalysis::Standing& standing, size_t player, bool free) {
    const auto& intervals = free ? standing.luckFree : standing.plain;
    return player < intervals.size() ? &intervals[player] : nullptr;
}

// The band of the later three quarters sets the scale: the first hands' are as wide as can be.
Scale scaleOf(const Standings& standings, size_t player, double factor) {
    double least = 0;
    double most = 0;
    for (size_t i = standings.size() / 4; i < standings.size(); ++i)
        if (const Interval* at = of(standings[i], player, false);
            at != nullptr && std::isfinite(at->halfWidth)) {
            least = std::min(least, (at->mean - at->halfWidth) * factor);
            most = std::max(most, (at->mean + at->halfWidth) * factor);
        }
    if (most - least <= 0)
        most = least + 1;
    return {standings.back().hands, least, most};
}

std::string curve(const Standings& standings, size_t player, bool free, double factor,
                  const Scale& scale) {
    std::string line;
    std::string upper;
    std::string lower;
    for (const auto& standing : standings) {
        const Interval* at = of(standing, player, free);
        if (at == nullptr || !std::isfinite(at->halfWidth))
            continue;
        const double x = scale.x(standing.hands);
        const auto point = [&](double result) {
            return fmt::format("{:.1f},{:.1f} ", x, scale.y(result * factor));
        };
        line += point(at->mean);
        upper += point(at->mean + at->halfWidth);
        lower.insert(0, point(at->mean - at->halfWidth));
    }
    const char* const kind = free ? "free" : "plain";
    return fmt::format("<polygon class={0} points=\"{1}{2}\"/>\n<polyline class={0} "
                       "points=\"{3}\"/>\n",
                       kind, upper, lower, line);
}

std::string drawing(const AnalysisReport& report, size_t player) {
    const Standings& standings = report.analysis->standings();
    if (standings.empty())
        return "<p>too few hands for a curve</p>\n";
    const ResultUnit unit = unitOf(*report.game);
    const Scale scale = scaleOf(standings, player, unit.factor);
    std::string text = fmt::format("<svg viewBox=\"0 0 {} {}\" role=img>\n", width, height);
    const double zero = scale.y(0);
    text += fmt::format("<line class=axis x1={0} x2={1} y1={2:.1f} y2={2:.1f} />"
                        "<text x=8 y={3:.1f}>0</text>\n",
                        left, width - 8, zero, zero + 4);
    const Interval last = standings.back().plain[player];
    text += fmt::format("<text x=8 y={:.1f}>{:+.0f}</text>\n", scale.y(last.mean * unit.factor) + 4,
                        last.mean * unit.factor);
    text += fmt::format("<text x={} y={} text-anchor=end>{} hands</text>\n", width - 8, height - 6,
                        describeCount(standings.back().hands));
    text += curve(standings, player, false, unit.factor, scale);
    if (!standings.back().luckFree.empty())
        text += curve(standings, player, true, unit.factor, scale);
    return text + "</svg>\n";
}

std::string legend(const AnalysisReport& report) {
    const auto& standings = report.analysis->standings();
    const bool free = !standings.empty() && !standings.back().luckFree.empty();
    return fmt::format("<p class=legend><span><i style=\"background:var(--plain)\"></i>as played, "
                       "{}, and its 95 % interval</span>{}</p>\n",
                       unitOf(*report.game).name,
                       free ? "<span><i style=\"background:var(--free)\"></i>luck-free</span>"
                            : "");
}

std::string row(const std::string& name, const RunningMoments& moments, const ResultUnit& unit) {
    return fmt::format("<tr><td>{}<td>{}<td>{}</tr>\n", escapedForPage(name),
                       describeCount(moments.count()),
                       resultWithInterval(interval95(moments), unit.factor, unit.digits));
}

std::string tablesOf(const AnalysisReport& report, const MatchAnalysis::Player& player) {
    const ResultUnit unit = unitOf(*report.game);
    const bool duplicate = report.analysis->duplicate();
    const std::string head = fmt::format("<tr><th><th>{{}}<th>{}</tr>\n", unit.name);
    const ResultFigures& figures = report.analysis->figures(player);
    std::string text =
        "<table>\n" + fmt::format(fmt::runtime(head), duplicate ? "blocks" : "hands");
    text += row("as played", figures.plain, unit);
    if (figures.luckFree.count() > 0)
        text += row("luck-free", figures.luckFree, unit);
    if (figures.expected.count() > 0)
        text += row("worth of the deals", figures.expected, unit);
    text += "</table>\n";
    for (const HandCut& cut : player.cuts) {
        const bool long_ = cut.parts.size() > 20;
        text += long_ ? fmt::format("<details><summary>By {}</summary>\n", cut.name)
                      : fmt::format("<h3>By {}</h3>\n", cut.name);
        text += "<table>\n" + fmt::format(fmt::runtime(head), "hands");
        for (const auto& [order, part] : cut.parts)
            text += row(part.name, part.won, unit);
        text += long_ ? "</table></details>\n" : "</table>\n";
    }
    return text;
}

} // namespace

std::string analysisPage(const AnalysisReport& report) {
    const MatchAnalysis& analysis = *report.analysis;
    std::string body = fmt::format(
        "<p>{}: {} hands{}</p>\n", escapedForPage(report.gameName), describeCount(analysis.hands()),
        analysis.duplicate()
            ? fmt::format(" in {} duplicate blocks", describeCount(analysis.blocks()))
            : "");
    body += legend(report);
    for (size_t p = 0; p < analysis.players().size(); ++p) {
        const auto& player = analysis.players()[p];
        body +=
            fmt::format("<h2>{}: {:+.10g} chips</h2>\n", escapedForPage(player.name), player.chips);
        body += drawing(report, p) + tablesOf(report, player);
    }
    return pageOf("Match " + report.log, analysisStyle, body);
}

} // namespace tamarin
