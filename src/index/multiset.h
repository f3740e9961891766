// Multisets of up to four numbers, ranked densely. A group of interchangeable suits is one.
//
// m numbers below size, their order forgotten, can be chosen in C(size + m - 1, m) ways; the
// multiset x1 <= x2 <= ... <= xm has rank x1 + C(x2 + 1, 2) + C(x3 + 2, 3) + C(x4 + 3, 4). Sizes
// stay below 2^20. Binomials are taken in closed form: a table of them for every size is 42 MB, its
// look-ups miss the cache, and one or two multiplications are faster than a hit.
#pragma once

#include <cassert>
#include <cmath>
#include <cstdint>

namespace tamarin {

// Sizes, with room for the group above them, lie below this bound.
inline constexpr uint64_t maxGroupIndex = 0x100000;

// C(n, k) modulo 2^64, for n below maxGroupIndex and k up to 4. For k below 4 it is always exact.
constexpr uint64_t groupBinomial(uint64_t n, unsigned k) {
    __extension__ using Wide = unsigned __int128;
    // Dividing by 3 exactly is multiplying by its inverse modulo 2^64; a real division of the
    // 80-bit product would be a library call.
    constexpr uint64_t inverseOf3 = 0xAAAAAAAAAAAAAAABU;
    assert(n < maxGroupIndex);
    if (n < k)
        return 0;
    switch (k) {
    case 0:
        return 1;
    case 1:
        return n;
    case 2:
        return n * (n - 1) / 2;
    case 3:
        return n * (n - 1) / 2 * (n - 2) / 3;
    case 4: {
        const Wide product = Wide{n * (n - 1) / 2} * ((n - 2) * (n - 3) / 2); // 6 C(n, 4)
        return static_cast<uint64_t>(product >> 1U) * inverseOf3;
    }
    default:
        assert(k <= 4);
        return 0;
    }
}

// Reads like a table of binomials for groups, nCr_groups[n][k], but stores nothing.
struct GroupBinomials {
    struct Row {
        uint64_t n;
        constexpr uint64_t operator[](unsigned k) const { return groupBinomial(n, k); }
    };
    constexpr Row operator[](uint64_t n) const { return {n}; }
};
inline constexpr GroupBinomials nCr_groups;

// How many multisets of m numbers below size there are, modulo 2^64.
constexpr uint64_t multisetCount(uint64_t size, unsigned m) {
    return nCr_groups[size + m - 1][m];
}

// Rank of the m numbers x[0] <= x[1] <= ....
constexpr uint64_t multisetRank(const uint32_t x[], unsigned m) {
    uint64_t rank = x[0];
    for (unsigned k = 2; k <= m; ++k)
        rank += nCr_groups[uint64_t{x[k - 1]} + k - 1][k];
    return rank;
}

// The largest x with x (x + 1) / 2 <= rank, for ranks of two numbers (below 2^39). The square root
// is correctly rounded, its argument exact, and every root that is not a step lies 10^-6 or more
// from one: no correction is needed.
inline uint64_t pairTop(uint64_t rank) {
    // A signed integer converts in one instruction.
    return static_cast<uint64_t>(static_cast<int64_t>(
        std::sqrt(static_cast<double>(static_cast<int64_t>(rank)) * 2 + 0.25) - 0.5));
}

// The largest x with C(x + k - 1, k) <= rank, for k of 3 and 4. The root that floating point gives
// is at most one or two off, and is set right in whole numbers.
inline uint64_t multisetTop(uint64_t rank, unsigned k) {
    const auto p = static_cast<double>(rank);
    const double root = k == 3 ? std::cbrt(6 * p) - 1 : std::sqrt(std::sqrt(24 * p)) - 1.5;
    uint64_t x = root > 0 ? static_cast<uint64_t>(root) : 0;
    while (nCr_groups[x + k - 1][k] > rank)
        --x;
    while (nCr_groups[x + k][k] <= rank)
        ++x;
    return x;
}

// The inverse of multisetRank: fills x[0] <= ... <= x[m - 1].
inline void multisetUnrank(uint64_t rank, unsigned m, uint32_t x[]) {
    for (unsigned k = m; k > 2; --k) {
        const uint64_t top = multisetTop(rank, k);
        rank -= nCr_groups[top + k - 1][k];
        x[k - 1] = static_cast<uint32_t>(top);
    }
    if (m > 1) {
        const uint64_t top = pairTop(rank);
        rank -= top * (top + 1) / 2;
        x[1] = static_cast<uint32_t>(top);
    }
    x[0] = static_cast<uint32_t>(rank);
}

} // namespace tamarin
