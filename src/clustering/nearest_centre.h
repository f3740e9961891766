// Which centre a row is nearest to, of thousands; where several are equally near, the one with the
// lowest number.
//
// Centres are in ascending order of the sum of their entries, and rows whose sums lie far apart
// cannot be near each other (hand_features.h). So the search begins where the row's own sum lies
// and goes outwards in blocks of eight centres, until neither side can hold one that is nearer. The
// answer is exact.
#pragma once

#include "clustering/hand_features.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

struct Nearest {
    uint32_t number;
    uint32_t distance;
    bool operator==(const Nearest&) const = default;
};

// Rows of centres, one after the other, into ascending order of (sum, bytes).
template <class Metric>
void sortCentres(std::vector<uint8_t>& centres);

// Eight centres as the search compares them.
template <class Metric>
struct CentreBlock;
template <>
struct CentreBlock<HistogramMetric> {
    alignas(16) uint8_t rows[8][HistogramMetric::width];
};
template <>
struct CentreBlock<StrengthMetric> {
    alignas(32) float entries[StrengthMetric::width][8]; // whole numbers below 2^24: exact
};

template <class Metric>
class NearestCentres {
public:
    // centres: rows of Metric::width bytes in the order of sortCentres; at least one.
    explicit NearestCentres(const std::vector<uint8_t>& centres);

    size_t size() const { return size_; }
    Nearest find(const uint8_t* row) const;
    // The same; guess: any centre, the search is short where it is near.
    Nearest find(const uint8_t* row, uint32_t guess) const;

private:
    static constexpr size_t blockSize = 8;
    Nearest search(const uint8_t* row, Nearest best) const;
    void lookInto(size_t block, const uint8_t* row, Nearest& best) const;

    size_t size_;
    std::vector<uint8_t> centres_;
    std::vector<CentreBlock<Metric>> blocks_;
    std::vector<uint32_t> low_; // least and greatest sum of each block
    std::vector<uint32_t> high_;
};

} // namespace tamarin
