#include "clustering/nearest_centre.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace tamarin {

namespace {

using Distances = std::array<uint32_t, 8>;

void fill(CentreBlock<HistogramMetric>& block, size_t lane, const uint8_t* centre) {
    std::memcpy(block.rows[lane], centre, HistogramMetric::width);
}

void fill(CentreBlock<StrengthMetric>& block, size_t lane, const uint8_t* centre) {
    for (size_t i = 0; i < StrengthMetric::width; ++i)
        block.entries[i][lane] = centre[i];
}

void measure(const CentreBlock<HistogramMetric>& block, const uint8_t* row, Distances& distances) {
    for (size_t lane = 0; lane < distances.size(); ++lane)
        distances[lane] = HistogramMetric::distance(block.rows[lane], row);
}

void measure(const CentreBlock<StrengthMetric>& block, const uint8_t* row, Distances& distances) {
    std::array<float, 8> sums{};
    for (size_t i = 0; i < StrengthMetric::width; ++i) {
        const float entry = row[i];
        for (size_t lane = 0; lane < sums.size(); ++lane) {
            const float difference = block.entries[i][lane] - entry;
            sums[lane] += difference * difference;
        }
    }
    for (size_t lane = 0; lane < sums.size(); ++lane)
        distances[lane] = static_cast<uint32_t>(static_cast<int32_t>(sums[lane]));
}

uint32_t least(const Distances& distances) {
    uint32_t least = distances[0];
    for (size_t lane = 1; lane < distances.size(); ++lane)
        least = std::min(least, distances[lane]);
    return least;
}

} // namespace

template <class Metric>
void sortCentres(std::vector<uint8_t>& centres) {
    using Row = std::array<uint8_t, Metric::width>;
    const size_t count = centres.size() / Metric::width;
    std::vector<std::pair<uint32_t, Row>> keyed(count);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* const row = &centres[i * Metric::width];
        keyed[i].first = sumOfRow<Metric>(row);
        std::copy_n(row, Metric::width, keyed[i].second.begin());
    }
    std::sort(keyed.begin(), keyed.end());
    for (size_t i = 0; i < count; ++i)
        std::copy(keyed[i].second.begin(), keyed[i].second.end(),
                  centres.begin() + static_cast<ptrdiff_t>(i * Metric::width));
}

template <class Metric>
NearestCentres<Metric>::NearestCentres(const std::vector<uint8_t>& centres)
    : size_(centres.size() / Metric::width), centres_(centres) {
    assert(size_ > 0 && size_ * Metric::width == centres.size());
    const size_t blocks = (size_ + blockSize - 1) / blockSize;
    blocks_.resize(blocks);
    low_.resize(blocks);
    high_.resize(blocks);
    uint32_t before = 0;
    for (size_t i = 0; i < blocks * blockSize; ++i) {
        // Copies of the last centre fill the last block: of equals the first is taken.
        const uint8_t* const centre = &centres_[std::min(i, size_ - 1) * Metric::width];
        fill(blocks_[i / blockSize], i % blockSize, centre);
        const uint32_t sum = sumOfRow<Metric>(centre);
        assert(sum >= before);
        before = sum;
        if (i % blockSize == 0)
            low_[i / blockSize] = sum;
        high_[i / blockSize] = sum;
    }
}

template <class Metric>
void NearestCentres<Metric>::lookInto(size_t block, const uint8_t* row, Nearest& best) const {
    alignas(32) Distances distances;
    measure(blocks_[block], row, distances);
    const uint32_t distance = least(distances);
    if (distance > best.distance)
        return;
    const auto lane = static_cast<size_t>(std::find(distances.begin(), distances.end(), distance) -
                                          distances.begin());
    const auto number = static_cast<uint32_t>(block * blockSize + lane);
    if (distance < best.distance || number < best.number)
        best = {number, distance};
}

template <class Metric>
Nearest NearestCentres<Metric>::search(const uint8_t* row, Nearest best) const {
    const uint32_t sum = sumOfRow<Metric>(row);
    const auto start =
        static_cast<size_t>(std::lower_bound(high_.begin(), high_.end(), sum) - high_.begin());
    size_t right = start; // the next block on this side; low_ is at least sum from start + 1 on
    size_t left = start;  // one above the next block on this side
    for (bool more = true; more;) {
        more = false;
        if (right < blocks_.size() &&
            Metric::canBeWithin(low_[right] > sum ? low_[right] - sum : 0, best.distance)) {
            lookInto(right++, row, best);
            more = true;
        }
        if (left > 0 && Metric::canBeWithin(sum - high_[left - 1], best.distance)) {
            lookInto(--left, row, best);
            more = true;
        }
    }
    return best;
}

template <class Metric>
Nearest NearestCentres<Metric>::find(const uint8_t* row) const {
    // Farther than any centre can be; the bounds' arithmetic has room for it.
    return search(row, {UINT32_MAX, Metric::width * 255 * 255});
}

template <class Metric>
Nearest NearestCentres<Metric>::find(const uint8_t* row, uint32_t guess) const {
    assert(guess < size_);
    return search(row, {guess, Metric::distance(&centres_[guess * Metric::width], row)});
}

template void sortCentres<HistogramMetric>(std::vector<uint8_t>&);
template void sortCentres<StrengthMetric>(std::vector<uint8_t>&);
template class NearestCentres<HistogramMetric>;
template class NearestCentres<StrengthMetric>;

} // namespace tamarin
