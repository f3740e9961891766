// The method percentile: hands cut by pot equity alone into equal shares of the deck's hands.
#include "clustering/abstraction_run.h"
#include "clustering/equity_histograms.h"
#include "clustering/equity_shares.h"

#include <cstring>
#include <functional>
#include <numeric>

namespace tamarin {

namespace {

// Rivers of a round's hand, so that its equities lie in 0..rivers x riverPotMost.
constexpr std::array<uint64_t, holdemRounds> riversOf{0, 1081, 46, 1};

std::vector<uint8_t> bytesOf(const std::vector<uint64_t>& limits) {
    std::vector<uint8_t> bytes(limits.size() * sizeof(uint64_t));
    std::memcpy(bytes.data(), limits.data(), bytes.size());
    return bytes;
}

using MakeSums = std::function<void(const uint8_t* board, uint32_t* sums)>;

// What the flop adds up to for starting hands: by hand, over all hands of the deck like it.
using PreflopSums = std::array<uint64_t, roundSizes[0]>;

// How many hands of the deck have each equity.
Result<std::vector<uint64_t>> countEquities(int round, const Work& work, const MakeSums& makeSums) {
    const BoardSet boards(roundBoardCards[static_cast<size_t>(round)]);
    std::vector<std::atomic<uint64_t>> counts(riversOf[static_cast<size_t>(round)] * riverPotMost +
                                              1);
    const bool done = forEach(work, boards.size(), [&](size_t b) {
        std::vector<uint32_t> sums(boards.holdings());
        makeSums(boards.board(b), sums.data());
        for (const uint32_t sum : sums)
            counts[sum].fetch_add(boards.multiplicity(b), std::memory_order_relaxed);
    });
    if (!done)
        return stopped();
    return std::vector<uint64_t>(counts.begin(), counts.end());
}

Status makeRound(AbstractionRun& run, int round, const MakeSums& makeSums) {
    const std::string hands = std::string(roundNames[static_cast<size_t>(round)]) + " hands";
    const auto counts = countEquities(round, run.beginStep("counting " + hands), makeSums);
    if (!counts)
        return Error{counts.error()};
    run.endStep();
    const std::vector<uint64_t> limits = shareLimits(*counts, run.buckets(round));
    auto buckets = AbstractionRun::takeBuckets(round);
    if (!buckets)
        return Error{buckets.error()};
    const std::span<uint16_t> all(buckets->data(), buckets->size());
    const Work work = run.beginStep("placing " + hands);
    const auto totals = passOverRound<uint32_t>(round, all, work, makeSums, [&](uint32_t sum) {
        return BucketChoice{shareOf(limits, sum), 0};
    });
    if (!totals)
        return stopped();
    const Status finished = run.finishRound(round, all, *totals, bytesOf(limits));
    run.endStep();
    return finished;
}

// The pot equity of a starting hand, summed over all flops and all that follows.
Result<PreflopSums> preflopSums(const Work& work, const MakeSums& flopSums) {
    const BoardSet flops(3);
    const RoundIndexer indexer(0);
    std::array<std::atomic<uint64_t>, roundSizes[0]> sums{};
    const bool done = forEach(work, flops.size(), [&](size_t b) {
        std::vector<uint32_t> own(flops.holdings());
        flopSums(flops.board(b), own.data());
        uint8_t left[deckCards];
        const size_t cardsLeft = cardsWithout(flops.board(b), 3, left);
        for (size_t high = 1; high < cardsLeft; ++high)
            for (size_t low = 0; low < high; ++low) {
                const uint8_t cards[] = {left[low], left[high]};
                sums[hand_index_last(indexer.get(), cards)] +=
                    uint64_t{flops.multiplicity(b)} * own[holdingNumber(low, high)];
            }
    });
    if (!done)
        return stopped();
    PreflopSums plain;
    std::copy(sums.begin(), sums.end(), plain.begin());
    return plain;
}

Status makePreflop(AbstractionRun& run, const MakeSums& flopSums) {
    const auto sums = preflopSums(run.beginStep("counting pre-flop hands"), flopSums);
    if (!sums)
        return Error{sums.error()};
    run.endStep();
    const auto hands = startingHandCounts();
    std::array<uint16_t, roundSizes[0]> order;
    std::iota(order.begin(), order.end(), uint16_t{0});
    const auto equity = [&](uint16_t hand) { return (*sums)[hand] / hands[hand]; };
    std::stable_sort(order.begin(), order.end(),
                     [&](uint16_t a, uint16_t b) { return equity(a) < equity(b); });
    // The ranks take the place of the equities. Where every hand has a bucket of its own, hands of
    // the deck do not count.
    std::array<uint64_t, roundSizes[0]> weights;
    for (size_t rank = 0; rank < order.size(); ++rank)
        weights[rank] = run.buckets(0) == roundSizes[0] ? 1 : hands[order[rank]];
    const std::vector<uint64_t> limits = shareLimits(weights, run.buckets(0));
    std::array<uint16_t, roundSizes[0]> buckets;
    for (size_t rank = 0; rank < order.size(); ++rank)
        buckets[order[rank]] = static_cast<uint16_t>(shareOf(limits, rank));
    return run.finishRound(0, buckets, {0, numHoldings(deckCards)}, bytesOf(limits));
}

} // namespace

Status makeByPercentile(AbstractionRun& run) {
    if (run.state.done(0) && run.state.done(1) && run.state.done(2) && run.state.done(3))
        return {};
    const Work work = run.beginStep("counting river equities");
    const BoardSet rivers(5);
    const auto pots = riverPotTable(rivers, work);
    if (!pots)
        return Error{pots.error()};
    run.endStep();
    const auto sumsOf = [&](int cards) -> MakeSums {
        return [&rivers, &pots, cards](const uint8_t* board, uint32_t* sums) {
            potSums(rivers, *pots, board, cards, sums);
        };
    };
    if (!run.state.done(0))
        if (Status made = makePreflop(run, sumsOf(3)); !made)
            return made;
    for (int round = 1; round < 3; ++round)
        if (!run.state.done(round))
            if (Status made = makeRound(run, round, sumsOf(round + 2)); !made)
                return made;
    if (run.state.done(3))
        return {};
    return makeRound(run, 3, [&](const uint8_t* board, uint32_t* sums) {
        const uint16_t* const row = pots->row(rivers.find(board).number);
        std::copy_n(row, riverHoldings, sums);
    });
}

} // namespace tamarin
