#include "report/abstraction_page.h"

#include "report/page.h"
#include "report/shades.h"
#include "support/progress.h"
#include "table_builder/table_summary.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr const char* abstractionStyle = R"(
.rounds th,.rounds td{padding:.2rem 1rem .2rem 0;border-bottom:1px solid var(--line);
text-align:right;font-weight:400}
.rounds th{color:var(--soft)}
.rounds td:first-child,.rounds th:first-child{text-align:left}
summary{color:var(--soft);cursor:pointer}
)";

// Of more buckets a page would be no help.
constexpr size_t mostListed = 2000;

std::string pageOfRounds(const AbstractionView& view) {
    std::string text = "<table class=rounds>\n<tr>";
    for (const char* head : summaryHeads)
        text += fmt::format("<th>{}", head);
    for (const RoundView& round : view.rounds) {
        text += "</tr>\n<tr>";
        for (const std::string& cell : summaryCells(round))
            text += "<td>" + cell;
    }
    text += "</tr>\n";
    text += "</table>\n<p>Least, median and greatest are hands of a bucket, distinct up to suits. "
            "Equity is against one opponent, a tie a loss, every hand weighed as often as it is "
            "dealt; within is the standard deviation in a bucket, on average, and between that of "
            "the buckets' means.</p>\n";
    for (const RoundView& round : view.rounds)
        if (!round.hasEquities())
            text += fmt::format("<p>No equities: {}</p>\n", escapedForPage(round.noEquities));
    return text;
}

// The place of a pre-flop bucket among all of them.
Colour colourOf(const AbstractionView& view, uint16_t bucket) {
    const uint32_t last = view.description.rounds[0].buckets - 1;
    return shade(blues, last == 0 ? 0 : static_cast<double>(bucket) / last);
}

std::string grid(const AbstractionView& view) {
    std::array<std::string, 169> fields;
    for (size_t i = 0; i < fields.size(); ++i) {
        const StartingHand& hand = startingHands()[i];
        const uint16_t bucket = view.startingHands[i];
        const std::string text = std::to_string(bucket);
        fields[static_cast<size_t>(hand.row * 13 + hand.column)] =
            gridField(colourOf(view, bucket), hand.name, text, "bucket " + text);
    }
    return "<h2>Buckets of the starting hands, suited above the diagonal</h2>\n" + gridOf(fields);
}

std::string sizes(const RoundView& round) {
    const BucketSizes sizes = sizesOf(round.buckets);
    uint64_t most = 1;
    for (const BucketSizes::Bin& bin : sizes.histogram)
        most = std::max(most, bin.buckets);
    std::string text = fmt::format("<h2>{}: buckets by their hands</h2>\n<table class=spread>\n",
                                   roundName(round));
    for (const BucketSizes::Bin& bin : sizes.histogram)
        text += fmt::format("<tr><td>{} to {} hands<td>{}<td>{}</tr>\n", describeCount(bin.from),
                            describeCount(bin.to), bin.buckets,
                            barOf(static_cast<double>(bin.buckets) / static_cast<double>(most)));
    return text + "</table>\n";
}

// Every bucket, with a bar for its mean equity.
std::string list(const RoundView& round) {
    if (round.buckets.size() > mostListed)
        return fmt::format("<p>Of {} buckets only --json lists every one.</p>\n",
                           describeCount(round.buckets.size()));
    std::string text = fmt::format("<details><summary>the {} buckets: hands, share of the deck, "
                                   "mean equity, standard deviation</summary>\n"
                                   "<table class=spread>\n",
                                   round.buckets.size());
    for (size_t number = 0; number < round.buckets.size(); ++number) {
        const BucketSummary& bucket = round.buckets[number];
        text += fmt::format("<tr><td>{}<td>{}<td class=soft>{:.3f}%<td>{}<td class=soft>{}<td>{}"
                            "</tr>\n",
                            number, describeCount(bucket.hands), 100 * round.deckShare(number),
                            equityText(round, bucket.meanEquity()),
                            equityText(round, bucket.spread()), barOf(bucket.meanEquity()));
    }
    return text + "</table></details>\n";
}

std::string bucketPage(const AbstractionView& view, const RoundView& round) {
    const uint32_t number = round.bucket->number;
    const BucketSummary& bucket = round.buckets[number];
    std::string text =
        fmt::format("<table class=range>\n<tr><td>hands, distinct up to suits<td>{}</tr>\n"
                    "<tr><td>share of the deck's hands<td>{:.4f}%</tr>\n"
                    "<tr><td>mean equity against one opponent<td>{}</tr>\n"
                    "<tr><td>standard deviation<td>{}</tr>\n</table>\n",
                    describeCount(bucket.hands), 100 * round.deckShare(number),
                    equityText(round, bucket.meanEquity()), equityText(round, bucket.spread()));
    if (!round.hasEquities())
        text += fmt::format("<p>No equities: {}</p>\n", escapedForPage(round.noEquities));
    if (!round.bucket->hands.empty())
        text += fmt::format("<h2>{}</h2>\n<table class=range>\n", handsTitle(round));
    for (const BucketView::Hand& hand : round.bucket->hands)
        text += fmt::format("<tr><td>{}<td>{}</tr>\n", handAt(round.round, hand.index),
                            equityText(round, hand.equity));
    if (!round.bucket->hands.empty())
        text += "</table>\n";
    return pageOf(titleOf(view, round), std::string(shadeStyle) + abstractionStyle, text);
}

} // namespace

std::string abstractionPage(const AbstractionView& view) {
    if (view.rounds[0].bucket)
        return bucketPage(view, view.rounds[0]);
    std::string text =
        fmt::format("<p>{}</p>\n", escapedForPage(howMade(view.description))) + pageOfRounds(view);
    if (view.rounds[0].round == 0)
        text += grid(view);
    for (const RoundView& round : view.rounds)
        text += sizes(round) + list(round);
    return pageOf(view.path + ": card abstraction", std::string(shadeStyle) + abstractionStyle,
                  text);
}

} // namespace tamarin
