#include "table_builder/table_summary.h"

#include "abstraction/quantise.h"
#include "abstraction/round_indexers.h"
#include "abstraction/work.h"
#include "game/text.h"
#include "support/file.h"
#include "support/parallel_errors.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <span>

namespace tamarin {

namespace {

// Entries are read in parts of this size, and the parts put together in their order: sums of
// doubles are then the same however the parts are shared out.
constexpr size_t part = size_t{1} << 16;

struct Range {
    uint64_t numbers = 0;
    TableSummary::Extreme least{std::numeric_limits<double>::infinity(), 0};
    TableSummary::Extreme greatest{-std::numeric_limits<double>::infinity(), 0};
    double sum = 0;

    void add(double value, uint64_t index) {
        if (!std::isfinite(value))
            return;
        ++numbers;
        sum += value;
        if (value < least.value)
            least = {value, index};
        if (value > greatest.value)
            greatest = {value, index};
    }
    void add(const Range& later) {
        numbers += later.numbers;
        sum += later.sum;
        if (later.least.value < least.value)
            least = later.least;
        if (later.greatest.value > greatest.value)
            greatest = later.greatest;
    }
};

// body(own, begin, end) for every part, each with an `own` of its own; all of them, in order.
template <class Own, class Body>
std::vector<Own> overParts(size_t size, const Own& fresh, int threads, const Body& body) {
    std::vector<Own> results((size + part - 1) / part, fresh);
    Work work;
    work.threads = threads;
    ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 4) num_threads(work.threadCount())
    for (size_t p = 0; p < results.size(); ++p)
        errors.run([&] { body(results[p], p * part, std::min(size, (p + 1) * part)); });
    errors.rethrow();
    return results;
}

template <class T>
void spread(std::span<const T> entries, TableSummary& summary, int threads) {
    Range range;
    for (const Range& of :
         overParts(entries.size(), Range{}, threads, [&](Range&own, size_t begin, size_t end) {
             for (size_t i = begin; i < end; ++i)
                 own.add(static_cast<double>(entries[i]), i);
         }))
        range.add(of);
    summary.entries = entries.size();
    summary.notNumbers = entries.size() - range.numbers;
    if (range.numbers == 0)
        return;
    summary.least = range.least;
    summary.greatest = range.greatest;
    summary.mean = range.sum / static_cast<double>(range.numbers);

    const EntryKind kind = kindOf(*summary.file);
    const bool quantised = kind == EntryKind::cluster || kind == EntryKind::bucket;
    const double from = quantised ? 0 : range.least.value;
    const double last = kind == EntryKind::cluster ? clusterLevels : holdemBuckets - 1;
    const double to = quantised ? std::max(last, range.greatest.value) : range.greatest.value;
    const size_t bins = quantised ? static_cast<size_t>(to) + 1 : from < to ? summaryBins : 1;
    const double width = (to - from) / static_cast<double>(quantised ? bins - 1 : bins);
    std::vector<uint64_t> counts(bins);
    for (const std::vector<uint64_t>&of :
         overParts(entries.size(), std::vector<uint64_t>(bins), threads,
                   [&](std::vector<uint64_t>&own, size_t begin, size_t end) {
                       for (size_t i = begin; i < end; ++i) {
                           const auto value = static_cast<double>(entries[i]);
                           if (!std::isfinite(value))
                               continue;
                           const double place = bins == 1 ? 0 : (value - from) / width;
                           ++own[std::min(bins - 1, static_cast<size_t>(place))];
                       }
                   }))
        for (size_t b = 0; b < bins; ++b)
            counts[b] += of[b];
    for (size_t b = 0; b < bins; ++b) {
        const double begin = from + static_cast<double>(b) * width;
        summary.histogram.push_back(
            {begin, quantised || bins == 1 ? begin : begin + width, counts[b]});
    }
    if (summary.file->round == 0 && kind != EntryKind::value)
        for (const T entry : entries)
            summary.all.push_back(static_cast<double>(entry));
}

std::array<StartingHand, 169> makeStartingHands() {
    std::array<StartingHand, 169> hands;
    const RoundIndexer indexer(0);
    for (size_t i = 0; i < hands.size(); ++i) {
        uint8_t cards[2];
        [[maybe_unused]] const bool known = hand_unindex(indexer.get(), 0, i, cards);
        assert(known);
        const int a = cards[0] / MAX_SUITS;
        const int b = cards[1] / MAX_SUITS;
        const bool suited = cards[0] % MAX_SUITS == cards[1] % MAX_SUITS;
        const int high = std::max(a, b);
        const int low = std::min(a, b);
        StartingHand& hand = hands[i];
        hand.row = MAX_RANKS - 1 - (suited ? high : low);
        hand.column = MAX_RANKS - 1 - (suited ? low : high);
        hand.name = {rankChars[high], rankChars[low]};
        if (a != b)
            hand.name += suited ? 's' : 'o';
        hand.combinations = a == b ? 6 : suited ? 4 : 12;
    }
    return hands;
}

} // namespace

EntryKind kindOf(const TableFile& file) {
    switch (file.group) {
    case TableGroup::sevenCards:
        return EntryKind::value;
    case TableGroup::clusters:
        return EntryKind::cluster;
    case TableGroup::holdem:
        return EntryKind::bucket;
    case TableGroup::equities:
    case TableGroup::utilities:
        break;
    }
    return EntryKind::number;
}

Result<TableSummary> summarise(const TableFile& file, const std::string& path, int threads) {
    const auto mapped = MappedFile::open(path, file.bytes);
    if (!mapped)
        return Error{mapped.error()};
    TableSummary summary;
    summary.file = &file;
    switch (kindOf(file)) {
    case EntryKind::number:
        spread(mapped->as<double>(), summary, threads);
        break;
    case EntryKind::cluster:
    case EntryKind::bucket:
        spread(mapped->as<uint8_t>(), summary, threads);
        break;
    case EntryKind::value:
        spread(mapped->as<int32_t>(), summary, threads);
        break;
    }
    return summary;
}

const TableFile* tableNamed(const std::string& path) {
    const auto base = [](const std::string& name) { return name.substr(name.rfind('/') + 1); };
    for (const TableFile& file : allTables())
        if (base(file.path) == base(path))
            return &file;
    return nullptr;
}

const std::array<StartingHand, 169>& startingHands() {
    static const std::array<StartingHand, 169> hands = makeStartingHands();
    return hands;
}

std::string handAt(int round, uint64_t index) {
    const RoundIndexer indexer(round);
    uint8_t cards[7];
    if (!hand_unindex(indexer.get(), lastIndexRound(round), index, cards))
        return "";
    std::string text;
    for (int i = 0; i < 2 + roundBoardCards[static_cast<size_t>(round)]; ++i) {
        char card[8];
        printCard(cards[i], sizeof card, card);
        text += (i == 2 ? " " : "") + std::string(card);
    }
    return text;
}

} // namespace tamarin
