// The hands that a clustering is fitted to: rows of bytes, each with a weight, sorted by the sum of
// their entries (rows of equal sums in the order in which they came). Hands that are alike lie near
// each other then, and whole chunks of them can be passed over at once.
#pragma once

#include "clustering/hand_features.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <numeric>
#include <vector>

namespace tamarin {

template <class Metric>
class PointSet {
public:
    using Row = std::array<uint8_t, Metric::width>;

    // weights: as many as rows, or none where all are 1.
    PointSet(std::vector<Row> rows, const std::vector<uint8_t>& weights) {
        assert(weights.empty() || weights.size() == rows.size());
        const std::vector<uint32_t> order = sorted(rows);
        rows_.resize(rows.size());
        weights_.resize(rows.size());
        for (size_t i = 0; i < order.size(); ++i) {
            rows_[i] = rows[order[i]];
            weights_[i] = weights.empty() ? uint8_t{1} : weights[order[i]];
        }
    }

    size_t size() const { return rows_.size(); }
    const uint8_t* row(size_t i) const { return rows_[i].data(); }
    uint8_t weight(size_t i) const { return weights_[i]; }
    uint32_t sum(size_t i) const { return sumOfRow<Metric>(row(i)); }

    static size_t bytesOfPoint() { return 2 * (Metric::width + 1) + sizeof(uint32_t); }

private:
    static std::vector<uint32_t> sorted(const std::vector<Row>& rows) {
        std::vector<uint32_t> start(Metric::width * 255 + 2);
        for (const Row& row : rows)
            ++start[sumOfRow<Metric>(row.data()) + 1];
        std::partial_sum(start.begin(), start.end(), start.begin());
        std::vector<uint32_t> order(rows.size());
        for (size_t i = 0; i < rows.size(); ++i)
            order[start[sumOfRow<Metric>(rows[i].data())]++] = static_cast<uint32_t>(i);
        return order;
    }

    std::vector<Row> rows_;
    std::vector<uint8_t> weights_;
};

// Points that are looked at together.
inline constexpr size_t chunkPoints = 1024;
inline size_t chunksOf(size_t points) {
    return (points + chunkPoints - 1) / chunkPoints;
}

} // namespace tamarin
