#include "clustering/equity_histograms.h"

#include "abstraction/holding_index.h"
#include "abstraction/round_indexers.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <numeric>

namespace tamarin {

namespace {

constexpr size_t binStride = 64; // bins of one holding, in a row of cache lines of their own
constexpr size_t mostHoldings = numHoldings(49);

// Counts of bins to counts of "that bin or above".
template <class Count, size_t width>
void cumulate(const Count* bins, std::array<Count, width>& row) {
    Count sum = 0;
    for (size_t bin = width; bin > 0; --bin) {
        sum = static_cast<Count>(sum + bins[bin]);
        row[bin - 1] = sum;
    }
}

template <class Count>
void countBins(const BoardSet& rivers, const RiverTable<uint8_t>& table, const uint8_t* board,
               int cards, std::array<Count, histogramWidth>* rows) {
    alignas(64) std::array<Count, mostHoldings * binStride> counts{};
    visitRivers(rivers, table, board, cards, [&](size_t holding, uint8_t bin) {
        Count& count = counts[holding * binStride + bin];
        count = static_cast<Count>(count + 1);
    });
    const size_t holdings = numHoldings(deckCards - static_cast<size_t>(cards));
    for (size_t holding = 0; holding < holdings; ++holding)
        cumulate(&counts[holding * binStride], rows[holding]);
}

using PreflopCounts = std::array<std::array<uint64_t, histogramWidth>, roundSizes[0]>;

// What one flop board adds to the starting hands; weight: boards of the deck like it.
void addToPreflop(const uint8_t* board, uint64_t weight, const hand_indexer_t* indexer,
                  const EquityHistograms::Counts* counts, PreflopCounts& sums,
                  std::array<uint64_t, roundSizes[0]>& deals) {
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(board, 3, left);
    for (size_t high = 1; high < cardsLeft; ++high)
        for (size_t low = 0; low < high; ++low) {
            const uint8_t cards[] = {left[low], left[high]};
            const size_t hand = hand_index_last(indexer, cards);
            const EquityHistograms::Counts& row = counts[holdingNumber(low, high)];
            for (size_t i = 0; i < histogramWidth; ++i)
                sums[hand][i] += weight * row[i];
            deals[hand] += weight * flopRiverCount;
        }
}

} // namespace

void EquityHistograms::turnRows(const uint8_t* board, HistogramRow* rows) const {
    countBins(rivers_, bins_, board, 4, rows);
}

void EquityHistograms::flopCounts(const uint8_t* board, Counts* counts) const {
    countBins(rivers_, bins_, board, 3, counts);
}

HistogramRow EquityHistograms::turnRow(const uint8_t* cards) const {
    std::array<uint8_t, equityBins> counts{};
    uint8_t board[5];
    std::copy_n(cards + 2, 4, board);
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(cards, 6, left);
    for (size_t i = 0; i < cardsLeft; ++i) {
        board[4] = left[i];
        const BoardSet::Place place = rivers_.find(board);
        const uint8_t* const there = rivers_.board(place.number);
        // The place of a card among those that the river's board leaves: less the board's below it.
        const auto placeOf = [&](uint8_t card) {
            const auto renamed = static_cast<uint8_t>((card & ~3U) | place.suit[card & 3U]);
            return renamed - static_cast<size_t>(std::count_if(
                                 there, there + 5, [&](uint8_t other) { return other < renamed; }));
        };
        const size_t a = placeOf(cards[0]);
        const size_t b = placeOf(cards[1]);
        ++counts[bins_.row(place.number)[holdingNumber(std::min(a, b), std::max(a, b))]];
    }
    HistogramRow row;
    cumulate(counts.data(), row);
    return row;
}

HistogramRow scaledRow(const EquityHistograms::Counts& counts) {
    HistogramRow row;
    std::transform(counts.begin(), counts.end(), row.begin(),
                   [](uint16_t count) { return scaledCount(count, flopRiverCount); });
    return row;
}

Result<EarlyHistograms> earlyHistograms(const EquityHistograms& histograms, const Work& work) {
    const BoardSet flops(3);
    const RoundIndexer preflopIndexer(0);
    const RoundIndexer flopIndexer(1);
    const HoldingIndexer flopIndices(1, *flopIndexer.get());
    EarlyHistograms early;
    early.flop.resize(roundSizes[1]);
    early.flopHands.resize(roundSizes[1]);
    auto preflop = std::make_unique<PreflopCounts>();
    std::mutex adding;
    const bool done = forEach(work, flops.size(), [&](size_t b) {
        std::vector<EquityHistograms::Counts> counts(flops.holdings());
        std::vector<uint32_t> indices(flops.holdings());
        histograms.flopCounts(flops.board(b), counts.data());
        flopIndices.indices(flops.board(b), indices.data());
        // A hand index belongs to one class of boards, so no other thread writes it.
        for (size_t holding = 0; holding < counts.size(); ++holding) {
            early.flop[indices[holding]] = scaledRow(counts[holding]);
            uint8_t& hands = early.flopHands[indices[holding]];
            hands = static_cast<uint8_t>(hands + flops.multiplicity(b));
        }
        const std::lock_guard<std::mutex> lock(adding);
        addToPreflop(flops.board(b), flops.multiplicity(b), preflopIndexer.get(), counts.data(),
                     *preflop, early.preflopDeals);
    });
    if (!done)
        return stopped();
    for (size_t hand = 0; hand < early.preflop.size(); ++hand)
        for (size_t i = 0; i < histogramWidth; ++i) {
            const uint64_t count = (*preflop)[hand][i];
            early.preflop[hand][i] = scaledCount(count, early.preflopDeals[hand]);
            early.preflopStrength[hand] += count;
        }
    return early;
}

std::array<uint8_t, roundSizes[0]> startingHandCounts() {
    const RoundIndexer indexer(0);
    std::array<uint8_t, roundSizes[0]> counts{};
    for (uint8_t high = 1; high < deckCards; ++high)
        for (uint8_t low = 0; low < high; ++low) {
            const uint8_t cards[] = {low, high};
            ++counts[hand_index_last(indexer.get(), cards)];
        }
    return counts;
}

std::array<uint16_t, roundSizes[0]> ranksOfStartingHands(const EarlyHistograms& early) {
    const auto hands = startingHandCounts();
    // A starting hand's sum is that of one hand of the deck, times the hands that it stands for.
    const auto strength = [&](uint16_t hand) { return early.preflopStrength[hand] / hands[hand]; };
    std::array<uint16_t, roundSizes[0]> order;
    std::iota(order.begin(), order.end(), uint16_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](uint16_t a, uint16_t b) { return strength(a) < strength(b); });
    std::array<uint16_t, roundSizes[0]> ranks;
    for (uint16_t rank = 0; rank < order.size(); ++rank)
        ranks[order[rank]] = rank;
    return ranks;
}

} // namespace tamarin
