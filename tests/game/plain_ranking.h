// Showdown ranking from the definitions of the hand classes, by trying all five-card subsets: the
// slow form that the fast one is held against.
#pragma once

#include "game/showdown.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace tamarin::test {

// Class (0 high card .. 8 straight flush) and then the ranks that decide within it, best first.
using PlainRank = std::vector<int>;

inline PlainRank plainRankOfFive(const std::vector<uint8_t>& cards) {
    std::map<int, int> copies;
    bool flush = true;
    for (const uint8_t card : cards) {
        ++copies[card / 4];
        flush = flush && card % 4 == cards[0] % 4;
    }
    std::vector<std::pair<int, int>> groups; // copies, rank
    for (const auto& [rank, count] : copies)
        groups.emplace_back(count, rank);
    std::sort(groups.begin(), groups.end(), std::greater<>());
    PlainRank result = {0};
    for (const auto& [count, rank] : groups)
        result.push_back(rank);
    bool straight = groups.size() == 5 && result[1] - result[5] == 4;
    if (groups.size() == 5 && result[1] == 12 && result[2] == 3) {
        straight = true;
        result = {0, 3};
    }
    const int first = groups[0].first;
    const int second = groups.size() > 1 ? groups[1].first : 0;
    if (straight)
        result[0] = flush ? 8 : 4;
    else if (first == 4)
        result[0] = 7;
    else if (first == 3 && second == 2)
        result[0] = 6;
    else if (flush)
        result[0] = 5;
    else if (first == 3)
        result[0] = 3;
    else if (first == 2)
        result[0] = second == 2 ? 2 : 1;
    return result;
}

// The best five of five to seven cards.
inline PlainRank plainRank(const std::vector<uint8_t>& cards) {
    PlainRank best;
    const unsigned subsets = 1U << cards.size();
    for (unsigned subset = 0; subset < subsets; ++subset) {
        if (__builtin_popcount(subset) != 5)
            continue;
        std::vector<uint8_t> five;
        for (size_t i = 0; i < cards.size(); ++i)
            if (subset >> i & 1U)
                five.push_back(cards[i]);
        best = std::max(best, plainRankOfFive(five));
    }
    return best;
}

// The class of a rank of five or more cards.
inline int handClass(int value) {
    const std::array<int, 8> starts = {onePairRank,     twoPairRank,      threeOfAKindRank,
                                       straightRank,    flushRank,        fullHouseRank,
                                       fourOfAKindRank, straightFlushRank};
    return static_cast<int>(std::upper_bound(starts.begin(), starts.end(), value) - starts.begin());
}

} // namespace tamarin::test
