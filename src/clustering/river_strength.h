// The rows of river hands (hand_features.h): pot equity against each cluster of starting hands.
//
// Entry c is the equity against an opponent whose hole cards are one of cluster c's, each as likely
// as any other that the board and the hand leave. Where they leave none, it is the equity against
// all hands. Clusters that there are not have entry 0.
#pragma once

#include "clustering/hand_features.h"
#include "clustering/river_equities.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tamarin {

using StrengthRow = std::array<uint8_t, strengthWidth>;

// wins: in halves, of 2 x deals. Cut to a whole number it is the equity as 0..255, rounded to the
// nearest, a half up. A floating-point division, which the compiler has in vectors: the numerator
// stays below 2^24, so it is exact, and a quotient that is not whole is at least 1 / 1980 below the
// next whole number, far more than the division rounds off: cutting gives what whole numbers give.
inline float scaledEquity(int32_t wins, int32_t deals) {
    return static_cast<float>(255 * wins + deals) / static_cast<float>(2 * deals);
}

class RiverStrength {
public:
    // clusterOf: of each starting hand (169), below clusters, which is 1 to 8.
    RiverStrength(const std::vector<uint8_t>& clusterOf, uint32_t clusters);

    // One row for each of a river board's 1,081 holdings, numbered as in boards.h.
    void rows(const uint8_t* board, StrengthRow* rows) const;

    // Of one hand: two hole cards, then five board cards, any cards in any order.
    StrengthRow row(const uint8_t* cards) const;

private:
    uint32_t clusters_;
    std::array<std::array<uint8_t, deckCards>, deckCards> clusterOf_{}; // by hole cards
};

} // namespace tamarin
