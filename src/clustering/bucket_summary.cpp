#include "clustering/bucket_summary.h"

#include "abstraction/boards.h"
#include "abstraction/holding_index.h"
#include "abstraction/round_indexers.h"
#include "clustering/equity_histograms.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cmath>
#include <string>
#include <utility>

namespace tamarin {

namespace {

using Buckets = std::vector<BucketSummary>;

// Hands that are looked at together.
constexpr size_t pieceHands = size_t{1} << 16U;

bool isEquity(double equity) {
    return equity >= 0 && equity <= 1; // which no NaN is
}

uint64_t stepOf(double equity) {
    return static_cast<uint64_t>(equity * static_cast<double>(equitySteps) + 0.5);
}

// One sum for each thread, since sums of whole numbers are the same in any order.
class Parts {
public:
    Parts(size_t count, const Work& work)
        : parts_(static_cast<size_t>(work.threadCount()), Buckets(count)) {}

    Buckets& own() { return parts_[static_cast<size_t>(omp_get_thread_num())]; }
    Buckets sum() const {
        Buckets all(parts_[0].size());
        for (const Buckets& part : parts_)
            for (size_t bucket = 0; bucket < all.size(); ++bucket)
                all[bucket].add(part[bucket]);
        return all;
    }

private:
    std::vector<Buckets> parts_;
};

// Counts the hands. Refuses the first that has no equity.
Status countHands(std::span<const uint16_t> table, std::span<const double> equities,
                  const Work& work, Parts& parts) {
    std::atomic<size_t> wrong{table.size()};
    Work quiet = work; // the boards after it are what takes its time
    quiet.progress = nullptr;
    const size_t pieces = (table.size() + pieceHands - 1) / pieceHands;
    const bool done = forEach(quiet, pieces, [&](size_t piece) {
        Buckets& own = parts.own();
        const size_t end = std::min(table.size(), (piece + 1) * pieceHands);
        for (size_t hand = piece * pieceHands; hand < end; ++hand) {
            ++own[table[hand]].hands;
            if (equities.empty() || isEquity(equities[hand]))
                continue;
            size_t first = wrong;
            while (hand < first && !wrong.compare_exchange_weak(first, hand)) {
            }
        }
    });
    if (!done)
        return stopped();
    if (wrong < table.size())
        return Error{"hand " + std::to_string(wrong) + " has an equity that is not from 0 to 1"};
    return {};
}

// The hands of the deck on so many boards of it, each of which holds them all.
void weigh(std::span<const uint32_t> hands, uint64_t boards, std::span<const uint16_t> table,
           std::span<const double> equities, Buckets& own) {
    for (const uint32_t hand : hands) {
        BucketSummary& bucket = own[table[hand]];
        bucket.deckHands += boards;
        if (equities.empty())
            continue;
        const uint64_t step = stepOf(equities[hand]);
        bucket.equity += boards * step;
        bucket.square += boards * step * step;
    }
}

void weighStartingHands(std::span<const uint16_t> table, std::span<const double> equities,
                        Buckets& own) {
    const auto counts = startingHandCounts();
    for (uint32_t hand = 0; hand < counts.size(); ++hand)
        weigh({&hand, 1}, counts[hand], table, equities, own);
}

// False when the work was stopped.
bool weighBoards(int round, std::span<const uint16_t> table, std::span<const double> equities,
                 const Work& work, Parts& parts) {
    const BoardSet boards(roundBoardCards[static_cast<size_t>(round)]);
    const RoundIndexer indexer(round);
    const HoldingIndexer holdings(round, *indexer.get());
    return forEach(work, boards.size(), [&](size_t board) {
        thread_local std::vector<uint32_t> hands;
        hands.resize(boards.holdings());
        holdings.indices(boards.board(board), hands.data());
        weigh(hands, boards.multiplicity(board), table, equities, parts.own());
    });
}

double rootOf(double square) {
    return std::sqrt(std::max(square, 0.0)); // below 0 by rounding alone
}

} // namespace

void BucketSummary::add(const BucketSummary& other) {
    hands += other.hands;
    deckHands += other.deckHands;
    equity += other.equity;
    square += other.square;
}

double BucketSummary::meanEquity() const {
    return deckHands == 0 ? 0
                          : static_cast<double>(equity) / static_cast<double>(deckHands) /
                                static_cast<double>(equitySteps);
}

double BucketSummary::spread() const {
    if (deckHands == 0)
        return 0;
    const auto steps = static_cast<double>(equitySteps);
    const double mean = meanEquity();
    return rootOf(static_cast<double>(square) / static_cast<double>(deckHands) / (steps * steps) -
                  mean * mean);
}

RoundSpread spreadOf(std::span<const BucketSummary> buckets) {
    BucketSummary all;
    for (const BucketSummary& bucket : buckets)
        all.add(bucket);
    RoundSpread spread;
    spread.mean = all.meanEquity();
    spread.all = all.spread();
    double between = 0;
    for (const BucketSummary& bucket : buckets) {
        if (bucket.deckHands == 0)
            continue;
        const double share =
            static_cast<double>(bucket.deckHands) / static_cast<double>(all.deckHands);
        const double off = bucket.meanEquity() - spread.mean;
        spread.within += share * bucket.spread();
        between += share * off * off;
    }
    spread.between = rootOf(between);
    return spread;
}

Result<Buckets> summariseBuckets(int round, std::span<const uint16_t> table, size_t count,
                                 std::span<const double> equities, const Work& work) {
    assert(table.size() == roundSizes[static_cast<size_t>(round)]);
    assert(equities.empty() || equities.size() == table.size());
    Parts parts(count, work);
    if (const Status counted = countHands(table, equities, work, parts); !counted)
        return Error{counted.error()};
    if (round == 0)
        weighStartingHands(table, equities, parts.own());
    else if (!weighBoards(round, table, equities, work, parts))
        return stopped();
    return parts.sum();
}

std::vector<uint64_t> handsSpreadOver(std::span<const uint16_t> table, uint16_t bucket,
                                      std::span<const double> equities, size_t most) {
    const auto stepAt = [&](size_t hand) { return equities.empty() ? 0 : stepOf(equities[hand]); };
    std::vector<uint64_t> atStep(equitySteps + 1);
    uint64_t total = 0;
    for (size_t hand = 0; hand < table.size(); ++hand)
        if (table[hand] == bucket) {
            ++atStep[stepAt(hand)];
            ++total;
        }
    // Where the first hand of each step comes in the whole order.
    uint64_t before = 0;
    for (uint64_t& place : atStep)
        before += std::exchange(place, before);
    const size_t wanted = static_cast<size_t>(std::min<uint64_t>(most, total));
    std::vector<uint64_t> places(wanted);
    for (size_t i = 0; i < wanted; ++i)
        places[i] = (2 * i + 1) * total / (2 * wanted);
    std::vector<uint64_t> hands(wanted);
    for (size_t hand = 0; hand < table.size(); ++hand) {
        if (table[hand] != bucket)
            continue;
        const uint64_t place = atStep[stepAt(hand)]++;
        const auto found = std::lower_bound(places.begin(), places.end(), place);
        if (found != places.end() && *found == place)
            hands[static_cast<size_t>(found - places.begin())] = hand;
    }
    return hands;
}

} // namespace tamarin
