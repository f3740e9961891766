#include "holdem/deals.h"

#include "support/fnv.h"
#include "support/parallel_errors.h"
#include "support/rng.h"
#include "tree/deck.h"

#include <iterator>
#include <omp.h>

namespace tamarin {

void drawDeal(const Game& game, uint64_t seed, DealStream stream, uint64_t t, State* state) {
    uint32_t key[] = {static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32U),
                      static_cast<uint32_t>(stream), static_cast<uint32_t>(t),
                      static_cast<uint32_t>(t >> 32U)};
    rng_state_t rng;
    init_by_array(&rng, key, static_cast<int>(std::size(key)));
    ::dealCards(&game, &rng, state);
}

void fillBatch(const Game& game, const HoldemBuckets& buckets, uint64_t seed, DealStream stream,
               uint64_t first, int threads, std::span<BatchDeal> deals) {
    const int useful = deals.size() < 16 ? 1 : threads;
    ParallelErrors errors;
#pragma omp parallel for schedule(static) num_threads(useful) default(none)                        \
    shared(game, buckets, seed, stream, first, deals, errors)
    for (size_t d = 0; d < deals.size(); ++d)
        errors.run([&] {
            drawDeal(game, seed, stream, first + d, &deals[d].cards);
            fillDealBuckets(game, deals[d].cards, buckets, deals[d].buckets);
        });
    errors.rethrow();
}

uint64_t fingerprintOf(const Game& game, const HoldemBuckets& buckets) {
    constexpr uint64_t deals = 256; // thousands of look-ups
    Fnv1a hash;
    rng_state_t rng;
    init_genrand(&rng, 1);
    for (uint64_t t = 0; t < deals; ++t) {
        State cards{};
        ::dealCards(&game, &rng, &cards);
        DealBuckets of{};
        fillDealBuckets(game, cards, buckets, of);
        for (const auto& byActing : of.of)
            for (const auto& bySeat : byActing)
                for (const auto bucket : bySeat)
                    hash.add(bucket);
    }
    return hash.value();
}

int threadsOf(int threads) {
    return threads > 0 ? threads : omp_get_max_threads();
}

} // namespace tamarin
