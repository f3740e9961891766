// Clustering the plain way: the oracle for the fast forms.
#pragma once

#include "clustering/fit_centres.h"
#include "clustering/seed_centres.h"
#include "support/split_mix.h"

#include <map>
#include <vector>

namespace tamarin::test {

template <class Metric>
using Rows = std::vector<std::array<uint8_t, Metric::width>>;

inline uint32_t plainDistance(const HistogramMetric*, const uint8_t* a, const uint8_t* b) {
    uint32_t sum = 0;
    for (size_t i = 0; i < histogramWidth; ++i)
        sum += static_cast<uint32_t>(std::abs(int{a[i]} - int{b[i]}));
    return sum;
}
inline uint32_t plainDistance(const StrengthMetric*, const uint8_t* a, const uint8_t* b) {
    uint32_t sum = 0;
    for (size_t i = 0; i < strengthWidth; ++i)
        sum += static_cast<uint32_t>((int{a[i]} - int{b[i]}) * (int{a[i]} - int{b[i]}));
    return sum;
}

// Every centre in turn.
template <class Metric>
Nearest plainNearest(const Rows<Metric>& centres, const uint8_t* row) {
    Nearest best{0, UINT32_MAX};
    for (uint32_t k = 0; k < centres.size(); ++k) {
        const uint32_t distance =
            plainDistance(static_cast<const Metric*>(nullptr), centres[k].data(), row);
        if (distance < best.distance)
            best = {k, distance};
    }
    return best;
}

// The entry that is least far from all: tried one by one, the lowest of the best.
inline uint8_t plainMiddle(const HistogramMetric*, const std::map<uint8_t, uint64_t>& weights) {
    uint64_t least = UINT64_MAX;
    uint8_t best = 0;
    for (int entry = 0; entry < 256; ++entry) {
        uint64_t sum = 0;
        for (const auto& [value, weight] : weights)
            sum += weight * static_cast<uint64_t>(std::abs(entry - int{value}));
        if (sum < least) {
            least = sum;
            best = static_cast<uint8_t>(entry);
        }
    }
    return best;
}
inline uint8_t plainMiddle(const StrengthMetric*, const std::map<uint8_t, uint64_t>& weights) {
    uint64_t least = UINT64_MAX;
    uint8_t best = 0;
    for (int entry = 0; entry < 256; ++entry) {
        uint64_t sum = 0;
        for (const auto& [value, weight] : weights)
            sum += weight * static_cast<uint64_t>((entry - int{value}) * (entry - int{value}));
        if (sum <= least) { // of two equally good ones the upper: a half goes up
            least = sum;
            best = static_cast<uint8_t>(entry);
        }
    }
    return best;
}

// One restart and nothing else of fitCentres: seeds, iterations, order.
template <class Metric>
class PlainClustering {
public:
    PlainClustering(const PointSet<Metric>& points, const FitOptions& options)
        : points_(points), options_(options) {}

    Rows<Metric> seeds(uint64_t seed) const {
        SplitMix random(mixBits(seed));
        Rows<Metric> centres;
        while (centres.size() < options_.centres) {
            std::vector<uint64_t> products;
            uint64_t total = 0;
            for (size_t i = 0; i < points_.size(); ++i) {
                const uint64_t distance =
                    centres.empty() ? 1 : plainNearest<Metric>(centres, points_.row(i)).distance;
                products.push_back(distance * points_.weight(i));
                total += products.back();
            }
            const uint64_t bits = random();
            size_t chosen = 0;
            if (total > 0) {
                __extension__ using Wide = unsigned __int128;
                auto left = static_cast<uint64_t>(Wide{bits} * total >> 64U);
                while (left >= products[chosen])
                    left -= products[chosen++];
            }
            centres.push_back(rowOf(chosen));
        }
        return centres;
    }

    // The weighted sum of the distances; centres: in and out.
    uint64_t iterate(Rows<Metric>& centres) const {
        sort(centres);
        uint64_t previous = 0;
        for (uint32_t iteration = 0;; ++iteration) {
            std::vector<Nearest> nearest;
            uint64_t sum = 0;
            for (size_t i = 0; i < points_.size(); ++i) {
                nearest.push_back(plainNearest<Metric>(centres, points_.row(i)));
                sum += uint64_t{points_.weight(i)} * nearest.back().distance;
            }
            const uint64_t won = iteration == 0 ? sum : previous - sum;
            if (iteration >= options_.iterations || won <= previous / options_.tolerance)
                return sum;
            previous = sum;
            move(centres, nearest);
            sort(centres);
        }
    }

private:
    std::array<uint8_t, Metric::width> rowOf(size_t i) const {
        std::array<uint8_t, Metric::width> row;
        std::copy_n(points_.row(i), Metric::width, row.begin());
        return row;
    }

    static void sort(Rows<Metric>& centres) {
        const auto key = [](const auto& row) {
            uint32_t sum = 0;
            for (const uint8_t entry : row)
                sum += entry;
            return std::pair(sum, row);
        };
        std::sort(centres.begin(), centres.end(),
                  [&](const auto& a, const auto& b) { return key(a) < key(b); });
    }

    void move(Rows<Metric>& centres, const std::vector<Nearest>& nearest) const {
        std::vector<uint32_t> empty;
        for (uint32_t k = 0; k < centres.size(); ++k) {
            bool any = false;
            std::array<std::map<uint8_t, uint64_t>, Metric::width> weights;
            for (size_t i = 0; i < points_.size(); ++i)
                if (nearest[i].number == k) {
                    any = true;
                    for (size_t entry = 0; entry < Metric::width; ++entry)
                        weights[entry][points_.row(i)[entry]] += points_.weight(i);
                }
            if (!any)
                empty.push_back(k);
            else
                for (size_t entry = 0; entry < Metric::width; ++entry)
                    centres[k][entry] =
                        plainMiddle(static_cast<const Metric*>(nullptr), weights[entry]);
        }
        std::vector<std::array<uint8_t, Metric::width>> used;
        for (const uint32_t k : empty) {
            size_t farthest = points_.size();
            for (size_t i = 0; i < points_.size(); ++i)
                if (nearest[i].distance > 0 &&
                    std::find(used.begin(), used.end(), rowOf(i)) == used.end() &&
                    (farthest == points_.size() ||
                     nearest[i].distance > nearest[farthest].distance))
                    farthest = i;
            if (farthest == points_.size())
                return;
            used.push_back(rowOf(farthest));
            centres[k] = rowOf(farthest);
        }
    }

    const PointSet<Metric>& points_;
    const FitOptions& options_;
};

template <class Metric>
std::vector<uint8_t> flat(const Rows<Metric>& rows) {
    std::vector<uint8_t> bytes;
    for (const auto& row : rows)
        bytes.insert(bytes.end(), row.begin(), row.end());
    return bytes;
}

// Rows in a few clumps, so that there is something to find; entries fall for HistogramMetric as
// those of histograms do.
template <class Metric>
Rows<Metric> clumpedRows(size_t count, uint64_t seed) {
    SplitMix random(mixBits(seed));
    Rows<Metric> rows(count);
    for (auto& row : rows) {
        const uint32_t clump = random.below(7);
        for (size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<uint8_t>(clump * 30 + i % (clump + 1) + random.below(25));
        if (Metric::width == histogramWidth)
            std::sort(row.rbegin(), row.rend());
    }
    return rows;
}

inline std::vector<uint8_t> someWeights(size_t count, uint64_t seed) {
    SplitMix random(mixBits(seed));
    std::vector<uint8_t> weights(count);
    for (uint8_t& weight : weights)
        weight = static_cast<uint8_t>(1 + random.below(24));
    return weights;
}

} // namespace tamarin::test
