#include "abstraction/quantise.h"

#include <cassert>
#include <cstddef>
#include <omp.h>

namespace tamarin {

namespace {

int threadCount(int threads, size_t size) {
    // A small table is not worth a second thread.
    return size < 100'000 ? 1 : threads > 0 ? threads : omp_get_max_threads();
}

} // namespace

TableRange rangeOf(std::span<const double> table, int threads) {
    double min = DBL_MAX;
    double max = DBL_MIN;
    const double* const entries = table.data();
    const size_t size = table.size();
    // Nothing in here throws.
#pragma omp parallel for simd reduction(min                                                        \
                                        : min) reduction(max                                       \
                                                         : max)                                    \
    num_threads(threadCount(threads, size))
    for (size_t i = 0; i < size; ++i) {
        max = entries[i] > max ? entries[i] : max;
        min = entries[i] < min ? entries[i] : min;
    }
    return {min, max};
}

void clustersOf(std::span<const double> equities, TableRange range, uint8_t* clusters,
                int threads) {
    const double* const entries = equities.data();
    const size_t size = equities.size();
    // Nothing in here throws.
#pragma omp parallel for num_threads(threadCount(threads, size))
    for (size_t i = 0; i < size; ++i)
        clusters[i] = levelOf(entries[i], range, clusterLevels);
}

void holdemBucketsOf(std::span<const double> utilities, TableRange utilityRange,
                     std::span<const double> equities, TableRange equityRange, uint8_t* buckets,
                     int threads) {
    assert(utilities.size() == equities.size());
    const double* const utility = utilities.data();
    const double* const equity = equities.data();
    const size_t size = equities.size();
    // Nothing in here throws.
#pragma omp parallel for num_threads(threadCount(threads, size))
    for (size_t i = 0; i < size; ++i) {
        const int upper = levelOf(utility[i], utilityRange, holdemUtilityLevels);
        buckets[i] = static_cast<uint8_t>((holdemEquityLevels + 1) * upper +
                                          levelOf(equity[i], equityRange, holdemEquityLevels));
    }
}

} // namespace tamarin
