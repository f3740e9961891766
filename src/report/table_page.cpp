#include "report/table_page.h"

#include "abstraction/quantise.h"
#include "report/page.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr const char* tableStyle = R"(
:root{--bar:#3f7fbf}
@media(prefers-color-scheme:dark){:root{--bar:#4a8ccb}}
.range td{padding:.2rem 1.5rem .2rem 0;border-bottom:1px solid var(--line)}
.spread{width:100%}
.spread td{padding:.1rem .75rem .1rem 0;white-space:nowrap;text-align:right}
.spread td:last-child{width:70%}
.spread u{display:block;height:.95rem;background:var(--bar);border-radius:2px}
.soft{color:var(--soft)}
.grid{table-layout:fixed;width:100%;max-width:52rem}
.grid td{border:1px solid var(--bg);padding:.2rem 0;text-align:center;font-size:.72rem;
line-height:1.2;overflow:hidden}
.grid b{display:block;font-size:.82rem}
.legend i{display:inline-block;width:1.4rem;height:.8rem;margin-right:.3rem;vertical-align:-1px}
.legend span{margin-right:1rem;white-space:nowrap}
)";

struct Colour {
    double red, green, blue;

    std::string text() const {
        return fmt::format("#{:02x}{:02x}{:02x}", static_cast<int>(std::lround(red)),
                           static_cast<int>(std::lround(green)),
                           static_cast<int>(std::lround(blue)));
    }
    // Black or white, whichever reads better on it.
    const char* ink() const {
        return 0.299 * red + 0.587 * green + 0.114 * blue > 140 ? "#1d2329" : "#fff";
    }
};

// Light to dark, so that the order shows without colour too.
using Ramp = std::array<Colour, 4>;
constexpr Ramp blues{{{237, 243, 249}, {166, 200, 228}, {63, 127, 191}, {16, 50, 96}}};
constexpr Ramp oranges{{{252, 240, 226}, {243, 190, 138}, {217, 113, 60}, {110, 44, 14}}};

Colour shade(const Ramp& ramp, double place) {
    assert(std::isfinite(place)); // a table with other entries gets no grid
    const double at = std::clamp(place, 0.0, 1.0) * static_cast<double>(ramp.size() - 1);
    const size_t step = std::min(static_cast<size_t>(at), ramp.size() - 2);
    const double along = at - static_cast<double>(step);
    const auto mix = [&](double from, double to) { return from + along * (to - from); };
    const Colour& a = ramp[step];
    const Colour& b = ramp[step + 1];
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

// A bucket is a level of equity, light to dark, in one colour for each level of utility.
Colour colourOf(const TableSummary& summary, double value) {
    const double least = summary.least.value;
    const double width = summary.greatest.value - least;
    switch (kindOf(*summary.file)) {
    case EntryKind::bucket: {
        const int levels = holdemEquityLevels + 1;
        const int bucket = static_cast<int>(value);
        return shade(bucket / levels == 0 ? blues : oranges,
                     static_cast<double>(bucket % levels) / holdemEquityLevels);
    }
    case EntryKind::cluster:
        return shade(blues, value / clusterLevels);
    default:
        return shade(blues, width > 0 ? (value - least) / width : 0);
    }
}

std::string number(const TableSummary& summary, double value, int digits) {
    return kindOf(*summary.file) == EntryKind::number ? fmt::format("{:.{}f}", value, digits)
                                                      : fmt::format("{:.0f}", value);
}

std::string range(const TableSummary& summary) {
    const auto row = [&](const char* name, const TableSummary::Extreme& extreme) {
        const bool hands = kindOf(*summary.file) != EntryKind::value;
        return fmt::format("<tr><td>{}<td>{}<td>{}</tr>\n", name, number(summary, extreme.value, 6),
                           hands ? handAt(summary.file->round, extreme.index) : "");
    };
    return "<table class=range>\n" + row("least", summary.least) +
           row("greatest", summary.greatest) +
           fmt::format("<tr><td>mean<td>{:.6f}<td></tr>\n</table>\n", summary.mean);
}

std::string histogram(const TableSummary& summary) {
    uint64_t most = 1;
    for (const TableSummary::Bin& bin : summary.histogram)
        most = std::max(most, bin.entries);
    std::string text = "<table class=spread>\n";
    for (const TableSummary::Bin& bin : summary.histogram)
        text += fmt::format(
            "<tr><td>{}{}<td>{}<td class=soft>{:.1f}%<td><u style=\"width:{:.2f}%\"></u></tr>\n",
            number(summary, bin.from, 4),
            bin.from == bin.to ? "" : " to " + number(summary, bin.to, 4), bin.entries,
            100.0 * static_cast<double>(bin.entries) / static_cast<double>(summary.entries),
            100.0 * static_cast<double>(bin.entries) / static_cast<double>(most));
    return text + "</table>\n";
}

std::string legend(const TableSummary& summary) {
    std::string text = "<p class=legend>";
    const auto add = [&](double value, const std::string& label) {
        text += fmt::format("<span><i style=\"background:{}\"></i>{}</span>",
                            colourOf(summary, value).text(), label);
    };
    if (kindOf(*summary.file) == EntryKind::bucket)
        for (int bucket = 0; bucket < holdemBuckets; ++bucket)
            add(bucket, std::to_string(bucket));
    else
        for (int step = 0; step <= 4; ++step) {
            const double value =
                summary.least.value + step / 4.0 * (summary.greatest.value - summary.least.value);
            add(value, number(summary, value, 3));
        }
    return text + "</p>\n";
}

std::string grid(const TableSummary& summary) {
    std::array<std::string, 169> fields;
    for (size_t i = 0; i < fields.size(); ++i) {
        const StartingHand& hand = startingHands()[i];
        const Colour colour = colourOf(summary, summary.all[i]);
        fields[static_cast<size_t>(hand.row * 13 + hand.column)] =
            fmt::format("<td style=\"background:{};color:{}\" title=\"{}: {}\"><b>{}</b>{}",
                        colour.text(), colour.ink(), hand.name, number(summary, summary.all[i], 6),
                        hand.name, number(summary, summary.all[i], 3));
    }
    std::string text = "<table class=grid>\n";
    for (size_t i = 0; i < fields.size(); ++i)
        text += (i % 13 == 0 ? "<tr>" : "") + fields[i] + (i % 13 == 12 ? "</tr>\n" : "");
    return text + "</table>\n" + legend(summary);
}

} // namespace

std::string tablePage(const TableView& view) {
    const TableSummary& summary = view.summary;
    std::string text = fmt::format(
        "<p>{}: {} entries, {} bytes{}</p>\n", escapedForPage(view.path), summary.entries,
        summary.file->bytes,
        summary.notNumbers == 0 ? std::string()
                                : fmt::format(", {} of them no numbers", summary.notNumbers));
    if (summary.notNumbers < summary.entries)
        text += range(summary);
    if (!summary.all.empty() && summary.notNumbers == 0) {
        text += "<h2>Starting hands, suited above the diagonal</h2>\n" + grid(summary);
        for (const TableSummary& other : view.beside)
            if (other.notNumbers == 0)
                text += fmt::format("<h2>{}</h2>\n", escapedForPage(titleOf(*other.file))) +
                        grid(other);
    }
    text += "<h2>How the entries are spread</h2>\n" + histogram(summary);
    return pageOf(titleOf(*summary.file), tableStyle, text);
}

} // namespace tamarin
