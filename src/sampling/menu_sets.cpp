#include "sampling/menu_sets.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace tamarin {

namespace {

LargeBuffer<int32_t> takeNumbers(size_t count) {
    auto taken = LargeBuffer<int32_t>::take(count, "regrets or strategy sums");
    if (!taken)
        throw std::bad_alloc();
    return std::move(*taken);
}

// Whether some number is positive; then shares of the positive ones.
bool sharesOf(const int32_t* numbers, size_t count, double* shares) {
    int64_t total = 0;
    for (size_t i = 0; i < count; ++i)
        total += std::max(numbers[i], 0);
    for (size_t i = 0; i < count && total > 0; ++i)
        shares[i] = std::max(numbers[i], 0) / static_cast<double>(total);
    return total > 0;
}

} // namespace

MenuSets::MenuSets(const MenuTree& tree, int seats, std::span<const uint32_t> buckets)
    : tree_(tree), seats_(seats), buckets_(buckets.begin(), buckets.end()) {
    assert(buckets.size() <= MAX_ROUNDS);
    for (size_t round = 0; round < buckets.size(); ++round)
        for (size_t seat = 0; seat < static_cast<size_t>(seats); ++seat) {
            starts_[round][seat] = numNumbers_;
            strides_[round][seat] = tree.numbersOf(static_cast<int>(round), static_cast<int>(seat));
            numNumbers_ += strides_[round][seat] * buckets[round];
        }
    regrets_ = takeNumbers(numNumbers_ + numNumbers_ % 2);
    sums_ = takeNumbers(numNumbers_ + numNumbers_ % 2);
}

uint64_t MenuSets::memoryFor(const MenuTree& tree, std::span<const uint32_t> buckets) {
    uint64_t numbers = 0;
    for (size_t round = 0; round < buckets.size(); ++round)
        for (int seat = 0; seat < MAX_PLAYERS; ++seat)
            numbers += uint64_t{buckets[round]} * tree.numbersOf(static_cast<int>(round), seat);
    return 2 * sizeof(int32_t) * (numbers + numbers % 2);
}

uint64_t MenuSets::numSets() const {
    uint64_t sets = 0;
    for (size_t round = 0; round < buckets_.size(); ++round)
        sets += uint64_t{tree_.nodesIn(static_cast<int>(round))} * buckets_[round];
    return sets;
}

void MenuSets::average(size_t place, size_t count, double* shares) const {
    if (sharesOf(sums_.data() + place, count, shares) ||
        sharesOf(regrets_.data() + place, count, shares))
        return;
    std::fill_n(shares, count, 1.0 / static_cast<double>(count));
}

} // namespace tamarin
