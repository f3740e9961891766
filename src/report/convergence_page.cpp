#include "report/convergence_page.h"

#include "report/page.h"
#include "support/progress.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr const char* convergenceStyle = R"(
svg{display:block;width:100%;height:auto;max-width:56rem}
svg text{fill:var(--soft);font-size:12px}
svg .axis{stroke:var(--line)}
svg polyline{fill:none;stroke-width:1.5}
svg .interval{stroke-width:1}
.legend i{display:inline-block;width:1.4rem;height:.25rem;margin-right:.3rem;vertical-align:3px}
.legend span{margin-right:1rem}
td,th{padding:.1rem 1rem .1rem 0;text-align:right;font-weight:400}
th{color:var(--soft)}
)";

// Told apart by who does not see all colours, too; the curves beyond begin anew.
constexpr std::array<const char*, 6> colours{"#3f7fbf", "#d9713c", "#3d9a6d",
                                             "#b0558f", "#8a7a2e", "#7464c4"};

// The drawing and its margins.
struct Sheet {
    static constexpr double width = 860;
    static constexpr double height = 320;
    static constexpr double left = 72;
    static constexpr double right = 12;
    static constexpr double bottom = 28;
    static constexpr double top = 12;
};

using Curves = std::vector<const ConvergenceCurve*>;

// A logarithmic axis over some numbers, all above 0.
struct LogAxis {
    double least = INFINITY;
    double most = 0;

    void include(double number) {
        if (number > 0) {
            least = std::min(least, number);
            most = std::max(most, number);
        }
    }
    bool empty() const { return most <= 0; }
    // 0 to 1.
    double place(double number) const {
        const double span = std::log(most / least);
        return span > 0 ? std::clamp(std::log(number / least) / span, 0.0, 1.0) : 0.5;
    }
    // 1, 2 and 5 times the powers of ten within it; of many powers these alone.
    std::vector<double> marks() const {
        const bool wide = most / least > 1e4;
        std::vector<double> found;
        for (double power = std::pow(10, std::floor(std::log10(least))); power <= most; power *= 10)
            for (const double digit : {1.0, 2.0, 5.0})
                if ((digit == 1 || !wide) && power * digit >= least && power * digit <= most)
                    found.push_back(power * digit);
        return found;
    }
};

struct TimeMark {
    double seconds;
    const char* text;
};
constexpr std::array<TimeMark, 23> timeMarks{
    {{1e-3, "1 ms"},     {1e-2, "10 ms"},     {0.1, "0.1 s"},      {0.5, "0.5 s"},
     {1, "1 s"},         {2, "2 s"},          {5, "5 s"},          {10, "10 s"},
     {30, "30 s"},       {60, "1 min"},       {120, "2 min"},      {300, "5 min"},
     {600, "10 min"},    {1800, "30 min"},    {3600, "1 h"},       {7200, "2 h"},
     {18000, "5 h"},     {36000, "10 h"},     {86400, "1 day"},    {172800, "2 days"},
     {432000, "5 days"}, {864000, "10 days"}, {2592000, "30 days"}}};

double acrossOf(const LogAxis& time, double seconds) {
    return Sheet::left +
           (Sheet::width - Sheet::left - Sheet::right) * time.place(std::max(seconds, time.least));
}

double heightOf(const LogAxis& values, double value) {
    return Sheet::height - Sheet::bottom -
           (Sheet::height - Sheet::bottom - Sheet::top) *
               values.place(std::max(value, values.least));
}

std::string drawingOf(const Curves& curves) {
    LogAxis time;
    LogAxis values;
    for (const ConvergenceCurve* curve : curves)
        for (const ConvergencePoint& point : curve->points) {
            time.include(point.seconds);
            values.include(point.value);
            if (point.interval95)
                values.include(point.value + *point.interval95);
        }
    if (time.empty() || values.empty())
        return "<p>nothing to draw: no figure is above 0</p>\n";
    std::string text =
        fmt::format("<svg viewBox=\"0 0 {} {}\" role=img aria-label=\"{} over time\">\n",
                    Sheet::width, Sheet::height, nameOf(curves.front()->measure));
    for (const double mark : values.marks())
        text += fmt::format("<line class=axis x1={0} x2={1} y1={2:.1f} y2={2:.1f} />"
                            "<text x={3} y={4:.1f} text-anchor=end>{5:.4g}</text>\n",
                            Sheet::left, Sheet::width - Sheet::right, heightOf(values, mark),
                            Sheet::left - 8, heightOf(values, mark) + 4, mark);
    for (const TimeMark& mark : timeMarks)
        if (mark.seconds >= time.least && mark.seconds <= time.most)
            text += fmt::format("<text x={:.1f} y={} text-anchor=middle>{}</text>\n",
                                acrossOf(time, mark.seconds), Sheet::height - 8, mark.text);
    for (size_t c = 0; c < curves.size(); ++c) {
        const char* const colour = colours[c % colours.size()];
        std::string line;
        for (const ConvergencePoint& point : curves[c]->points) {
            const double x = acrossOf(time, point.seconds);
            line += fmt::format("{:.1f},{:.1f} ", x, heightOf(values, point.value));
            if (point.interval95)
                text += fmt::format("<line class=interval stroke=\"{0}\" x1={1:.1f} x2={1:.1f} "
                                    "y1={2:.1f} y2={3:.1f} />\n",
                                    colour, x, heightOf(values, point.value - *point.interval95),
                                    heightOf(values, point.value + *point.interval95));
        }
        text += fmt::format("<polyline stroke=\"{}\" points=\"{}\"/>\n", colour, line);
    }
    return text + "</svg>\n";
}

std::string legendOf(const Curves& curves) {
    std::string text = "<p class=legend>";
    for (size_t c = 0; c < curves.size(); ++c)
        text += fmt::format("<span><i style=\"background:{}\"></i>{}</span>",
                            colours[c % colours.size()], escapedForPage(curves[c]->log));
    return text + "</p>\n";
}

std::string tableOf(const ConvergenceCurve& curve) {
    constexpr size_t lines = 40;
    std::string text =
        fmt::format("<details><summary>{}</summary>\n<table>\n<tr><th>iterations<th>time<th>{}"
                    "</tr>\n",
                    escapedForPage(curve.log), unitOf(curve.measure));
    for (const ConvergencePoint& point : thinned(curve.points, lines))
        text +=
            fmt::format("<tr><td>{}<td>{}<td>{:.4g}{}</tr>\n", describeCount(point.iteration),
                        describeDuration(point.seconds), point.value,
                        point.interval95 ? fmt::format(" &plusmn; {:.2g}", *point.interval95) : "");
    return text + "</table></details>\n";
}

} // namespace

std::string convergencePage(const std::vector<ConvergenceCurve>& curves) {
    std::string body;
    for (const auto measure : {ConvergenceMeasure::exploitability, ConvergenceMeasure::nashConv,
                               ConvergenceMeasure::averageRegret}) {
        Curves some;
        for (const ConvergenceCurve& curve : curves)
            if (curve.measure == measure)
                some.push_back(&curve);
        if (some.empty())
            continue;
        body += fmt::format("<h2>{}, {}</h2>\n", nameOf(measure), unitOf(measure));
        body += legendOf(some) + drawingOf(some);
        for (const ConvergenceCurve* curve : some)
            body += tableOf(*curve);
    }
    return pageOf("Convergence", convergenceStyle, body);
}

} // namespace tamarin
