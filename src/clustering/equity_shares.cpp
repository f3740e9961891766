#include "clustering/equity_shares.h"

#include <cassert>
#include <numeric>

namespace tamarin {

std::vector<uint64_t> shareLimits(std::span<const uint64_t> hands, uint32_t buckets) {
    const uint64_t total = std::accumulate(hands.begin(), hands.end(), uint64_t{0});
    assert(total > 0 && total < uint64_t{1} << 47U && buckets < 1U << 16U);
    std::vector<uint64_t> limits(buckets);
    uint64_t below = 0;
    for (size_t equity = 0; equity < hands.size(); ++equity) {
        if (hands[equity] == 0)
            continue;
        const uint64_t twiceMiddle = 2 * below + hands[equity];
        const uint64_t bucket = twiceMiddle * buckets / (2 * total);
        // This equity is below the limits of its bucket and of all after it.
        limits[bucket] = equity + 1;
        below += hands[equity];
    }
    for (size_t b = 1; b < limits.size(); ++b)
        limits[b] = std::max(limits[b], limits[b - 1]);
    return limits;
}

uint32_t shareOf(const std::vector<uint64_t>& limits, uint64_t equity) {
    const auto above = std::upper_bound(limits.begin(), limits.end(), equity);
    const auto bucket = static_cast<size_t>(above - limits.begin());
    return static_cast<uint32_t>(std::min(bucket, limits.size() - 1));
}

void potSums(const BoardSet& rivers, const RiverTable<uint16_t>& pots, const uint8_t* board,
             int cards, uint32_t* sums) {
    std::fill_n(sums, numHoldings(deckCards - static_cast<size_t>(cards)), 0U);
    visitRivers(rivers, pots, board, cards,
                [&](size_t holding, uint16_t pot) { sums[holding] += pot; });
}

} // namespace tamarin
