#include "report/table_page.h"

#include "abstraction/quantise.h"
#include "report/page.h"
#include "report/shades.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr const char* tableStyle = R"(
.legend i{display:inline-block;width:1.4rem;height:.8rem;margin-right:.3rem;vertical-align:-1px}
.legend span{margin-right:1rem;white-space:nowrap}
)";

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
            "<tr><td>{}{}<td>{}<td class=soft>{:.1f}%<td>{}</tr>\n", number(summary, bin.from, 4),
            bin.from == bin.to ? "" : " to " + number(summary, bin.to, 4), bin.entries,
            100.0 * static_cast<double>(bin.entries) / static_cast<double>(summary.entries),
            barOf(static_cast<double>(bin.entries) / static_cast<double>(most)));
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
        fields[static_cast<size_t>(hand.row * 13 + hand.column)] =
            gridField(colourOf(summary, summary.all[i]), hand.name,
                      number(summary, summary.all[i], 3), number(summary, summary.all[i], 6));
    }
    return gridOf(fields) + legend(summary);
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
    return pageOf(titleOf(*summary.file), std::string(shadeStyle) + tableStyle, text);
}

} // namespace tamarin
