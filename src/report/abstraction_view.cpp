#include "report/abstraction_view.h"

#include "abstraction/table_names.h"
#include "support/progress.h"
#include "table_builder/table_summary.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr size_t sizeBins = 10;
constexpr size_t shownHands = 10;
constexpr size_t barLength = 40;

// A round's equities against one opponent, or why there are none.
struct Equities {
    std::optional<MappedFile> file;
    std::string problem;

    std::span<const double> all() const {
        return file ? file->as<double>() : std::span<const double>{};
    }
};

Equities openEquities(const std::string& directory, int round) {
    Equities equities;
    const std::string path = inDirectory(directory, equityPath(2, round));
    auto file = MappedFile::open(path, roundSizes[static_cast<size_t>(round)] * sizeof(double));
    if (file)
        equities.file = std::move(*file);
    else
        equities.problem = file.error() + "; 'tamarin tables --only equity' makes it";
    return equities;
}

BucketView viewBucket(uint32_t number, std::span<const uint16_t> table,
                      std::span<const double> equities) {
    BucketView view;
    view.number = number;
    for (const uint64_t hand :
         handsSpreadOver(table, static_cast<uint16_t>(number), equities, shownHands))
        view.hands.push_back({hand, equities.empty() ? 0 : equities[hand]});
    return view;
}

Work workFor(int round, const AbstractionQuestion& question) {
    Work work;
    work.threads = question.threads;
    work.stop = question.stop;
    if (question.progress)
        work.progress = [&question, round](uint64_t done, uint64_t total) {
            const std::string name = roundNames[static_cast<size_t>(round)];
            question.progress("weighing the buckets of the " + name, done, total);
        };
    return work;
}

Result<RoundView> viewRound(const CardAbstraction& abstraction, int round,
                            const AbstractionQuestion& question) {
    RoundView view;
    view.round = round;
    Equities equities = openEquities(question.directory, round);
    auto buckets = summariseBuckets(round, abstraction.table(round), abstraction.buckets(round),
                                    equities.all(), workFor(round, question));
    if (!buckets && buckets.error() == stopped().message)
        return stopped();
    if (!buckets)
        return Error{inDirectory(question.directory, equityPath(2, round)) + ": damaged, " +
                     buckets.error()};
    view.buckets = std::move(*buckets);
    for (const BucketSummary& bucket : view.buckets)
        view.deckHands += bucket.deckHands;
    view.noEquities = equities.problem;
    if (question.bucket)
        view.bucket = viewBucket(*question.bucket, abstraction.table(round), equities.all());
    return view;
}

std::string roundsTable(const AbstractionView& view) {
    std::string text;
    const auto addLine = [&text](const auto& cells) {
        constexpr std::array<size_t, summaryHeads.size()> widths{9, 9, 8, 12, 12, 12, 9, 9, 9};
        for (size_t i = 0; i < widths.size(); ++i) {
            const std::string cell = cells[i];
            const std::string room(widths[i] - std::min(widths[i], cell.size()), ' ');
            text += i == 0 ? cell + room : room + cell;
        }
        text += '\n';
    };
    addLine(summaryHeads);
    for (const RoundView& round : view.rounds)
        addLine(summaryCells(round));
    text += "least, median, greatest: hands of a bucket, distinct up to suits\n"
            "mean: equity against one opponent, a tie a loss, every hand as often as it is dealt\n"
            "within: standard deviation in a bucket, on average; between: that of the buckets' "
            "means\n";
    for (const RoundView& round : view.rounds)
        if (!round.hasEquities())
            text += fmt::format("no equities: {}\n", round.noEquities);
    return text;
}

std::string sizesText(const RoundView& round) {
    std::string text = fmt::format("\n{}: buckets by their hands\n", roundName(round));
    const BucketSizes sizes = sizesOf(round.buckets);
    uint64_t most = 1;
    for (const BucketSizes::Bin& bin : sizes.histogram)
        most = std::max(most, bin.buckets);
    for (const BucketSizes::Bin& bin : sizes.histogram) {
        const double share = static_cast<double>(bin.buckets) / static_cast<double>(most);
        const auto length = static_cast<size_t>(std::lround(share * barLength));
        text += fmt::format("{:>12} ..{:>12} {:>7} {:5.1f} % {}\n", describeCount(bin.from),
                            describeCount(bin.to), describeCount(bin.buckets),
                            100.0 * static_cast<double>(bin.buckets) /
                                static_cast<double>(round.buckets.size()),
                            std::string(bin.buckets > 0 ? std::max<size_t>(length, 1) : 0, '#'));
    }
    return text;
}

// Thirteen rows, aces first; suited hands above the diagonal.
std::string gridText(const std::vector<uint16_t>& buckets) {
    std::string text = "\nbuckets of the starting hands, suited above the diagonal\n";
    std::array<std::string, 169> fields;
    for (size_t i = 0; i < fields.size(); ++i) {
        const StartingHand& hand = startingHands()[i];
        fields[static_cast<size_t>(hand.row * 13 + hand.column)] =
            fmt::format("{:>4}{:>4}", hand.name, buckets[i]);
    }
    for (size_t i = 0; i < fields.size(); ++i)
        text += fields[i] + (i % 13 == 12 ? "\n" : "");
    return text;
}

std::string bucketText(const AbstractionView& view, const RoundView& round) {
    const BucketSummary& bucket = round.buckets[round.bucket->number];
    std::string text =
        fmt::format("{}\n{} hands that are distinct up to suits, {:.4f} % of the deck's\n",
                    titleOf(view, round), describeCount(bucket.hands),
                    100 * round.deckShare(round.bucket->number));
    if (round.hasEquities())
        text += fmt::format("equity against one opponent, a tie a loss: mean {:.4f}, standard "
                            "deviation {:.4f}\n",
                            bucket.meanEquity(), bucket.spread());
    else
        text += fmt::format("no equities: {}\n", round.noEquities);
    if (!round.bucket->hands.empty())
        text += handsTitle(round) + ":\n";
    for (const BucketView::Hand& hand : round.bucket->hands) {
        const std::string cards = handAt(round.round, hand.index);
        text += round.hasEquities() ? fmt::format("  {:<15}{:.4f}\n", cards, hand.equity)
                                    : fmt::format("  {}\n", cards);
    }
    return text;
}

nlohmann::ordered_json bucketJson(const RoundView& round, size_t number) {
    const BucketSummary& bucket = round.buckets[number];
    nlohmann::ordered_json json = {{"bucket", number},
                                   {"hands", bucket.hands},
                                   {"deckHands", bucket.deckHands},
                                   {"deckShare", round.deckShare(number)}};
    if (round.hasEquities()) {
        json["meanEquity"] = bucket.meanEquity();
        json["spread"] = bucket.spread();
    }
    return json;
}

nlohmann::ordered_json oneBucketJson(const RoundView& round) {
    nlohmann::ordered_json json = bucketJson(round, round.bucket->number);
    if (!round.hasEquities())
        json["noEquities"] = round.noEquities;
    json["examples"] = nlohmann::ordered_json::array();
    for (const BucketView::Hand& hand : round.bucket->hands) {
        nlohmann::ordered_json one = {{"hand", handAt(round.round, hand.index)},
                                      {"index", hand.index}};
        if (round.hasEquities())
            one["equity"] = hand.equity;
        json["examples"].push_back(one);
    }
    return json;
}

nlohmann::ordered_json roundJson(const AbstractionView& view, const RoundView& round) {
    const BucketSizes sizes = sizesOf(round.buckets);
    const RoundDescription& own = view.description.rounds[static_cast<size_t>(round.round)];
    nlohmann::ordered_json json = {{"round", roundName(round)}, {"buckets", round.buckets.size()},
                                   {"hands", own.hands},        {"empty", sizes.empty},
                                   {"least", sizes.least},      {"median", sizes.median},
                                   {"greatest", sizes.greatest}};
    if (round.hasEquities()) {
        const RoundSpread spread = spreadOf(round.buckets);
        json["meanEquity"] = spread.mean;
        json["spread"] = spread.all;
        json["spreadWithin"] = spread.within;
        json["spreadBetween"] = spread.between;
    } else
        json["noEquities"] = round.noEquities;
    json["sizes"] = nlohmann::ordered_json::array();
    for (const BucketSizes::Bin& bin : sizes.histogram)
        json["sizes"].push_back({{"from", bin.from}, {"to", bin.to}, {"buckets", bin.buckets}});
    json["each"] = nlohmann::ordered_json::array();
    for (size_t bucket = 0; bucket < round.buckets.size(); ++bucket)
        json["each"].push_back(bucketJson(round, bucket));
    return json;
}

} // namespace

std::string roundName(const RoundView& round) {
    return roundNames[static_cast<size_t>(round.round)];
}

std::string equityText(const RoundView& round, double equity) {
    return round.hasEquities() ? fmt::format("{:.4f}", equity) : "-";
}

std::array<std::string, summaryHeads.size()> summaryCells(const RoundView& round) {
    const BucketSizes sizes = sizesOf(round.buckets);
    const RoundSpread spread = spreadOf(round.buckets);
    return {roundName(round),
            describeCount(round.buckets.size()),
            describeCount(sizes.empty),
            describeCount(sizes.least),
            describeCount(sizes.median),
            describeCount(sizes.greatest),
            equityText(round, spread.mean),
            equityText(round, spread.within),
            equityText(round, spread.between)};
}

Result<AbstractionView> viewAbstraction(const AbstractionQuestion& question) {
    assert(question.round || !question.bucket);
    const auto abstraction = CardAbstraction::open(question.directory, question.name);
    if (!abstraction)
        return Error{abstraction.error()};
    AbstractionView view{
        abstractionFolder(question.directory, question.name), abstraction->description(), {}, {}};
    if (question.bucket && *question.bucket >= abstraction->buckets(*question.round))
        return Error{fmt::format("{} has no bucket {} on the {}: they are 0 to {}", view.path,
                                 *question.bucket, roundNames[static_cast<size_t>(*question.round)],
                                 abstraction->buckets(*question.round) - 1)};
    for (int round = 0; round < holdemRounds; ++round) {
        if (question.round && *question.round != round)
            continue;
        if (question.stop && question.stop())
            return stopped();
        auto one = viewRound(*abstraction, round, question);
        if (!one)
            return Error{one.error()};
        view.rounds.push_back(std::move(*one));
    }
    const auto preflop = abstraction->table(0);
    view.startingHands.assign(preflop.begin(), preflop.end());
    return view;
}

BucketSizes sizesOf(const std::vector<BucketSummary>& buckets) {
    assert(!buckets.empty());
    std::vector<uint64_t> hands;
    for (const BucketSummary& bucket : buckets)
        hands.push_back(bucket.hands);
    std::sort(hands.begin(), hands.end());
    BucketSizes sizes;
    sizes.empty = static_cast<uint64_t>(std::count(hands.begin(), hands.end(), 0));
    sizes.least = hands.front();
    sizes.median = hands[(hands.size() - 1) / 2];
    sizes.greatest = hands.back();
    const uint64_t width = (sizes.greatest - sizes.least) / sizeBins + 1;
    for (uint64_t from = sizes.least; from <= sizes.greatest; from += width)
        sizes.histogram.push_back({from, std::min(from + width - 1, sizes.greatest), 0});
    for (const uint64_t count : hands)
        ++sizes.histogram[static_cast<size_t>((count - sizes.least) / width)].buckets;
    return sizes;
}

std::string howMade(const AbstractionDescription& description) {
    const AbstractionOptions& options = description.options;
    std::string text = fmt::format("method {}", methodNames[static_cast<size_t>(options.method)]);
    if (options.method == AbstractionMethod::percentile)
        return text; // the rest is not used
    return text +
           fmt::format(", seed {}, clusters of starting hands {}, restarts {}, sample {}",
                       options.seed, options.clusters, options.restarts,
                       options.sample == 0 ? "as the counts ask" : describeCount(options.sample));
}

std::string titleOf(const AbstractionView& view, const RoundView& round) {
    return fmt::format("{}: {} bucket {} of {}", view.path, roundName(round), round.bucket->number,
                       describeCount(round.buckets.size()));
}

std::string handsTitle(const RoundView& round) {
    return fmt::format("{} of its hands, spread evenly over its {}", round.bucket->hands.size(),
                       round.hasEquities() ? "equities" : "hand indices");
}

std::string abstractionText(const AbstractionView& view) {
    if (view.rounds[0].bucket)
        return bucketText(view, view.rounds[0]);
    std::string text =
        fmt::format("{}: card abstraction\n{}\n\n", view.path, howMade(view.description)) +
        roundsTable(view);
    for (const RoundView& round : view.rounds)
        text += sizesText(round);
    if (view.rounds[0].round == 0)
        text += gridText(view.startingHands);
    return text;
}

nlohmann::ordered_json abstractionJson(const AbstractionView& view) {
    const AbstractionOptions& options = view.description.options;
    nlohmann::ordered_json json = {{"abstraction", view.path},
                                   {"method", methodNames[static_cast<size_t>(options.method)]}};
    if (options.method == AbstractionMethod::emd) {
        json["seed"] = options.seed;
        json["clusters"] = options.clusters;
        json["restarts"] = options.restarts;
        json["sample"] = options.sample;
    }
    if (view.rounds[0].bucket) {
        json["round"] = roundName(view.rounds[0]);
        json["buckets"] = view.rounds[0].buckets.size();
        json["bucket"] = oneBucketJson(view.rounds[0]);
        return json;
    }
    json["rounds"] = nlohmann::ordered_json::array();
    for (const RoundView& round : view.rounds)
        json["rounds"].push_back(roundJson(view, round));
    if (view.rounds[0].round == 0)
        for (size_t i = 0; i < view.startingHands.size(); ++i)
            json["startingHands"][startingHands()[i].name] = view.startingHands[i];
    return json;
}

} // namespace tamarin
