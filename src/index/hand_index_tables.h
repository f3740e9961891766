// The constant tables of the hand indexer: rank sets and their numbers, and the orderings of the
// suits.
//
// Built once before main, ahead of every ordinary static initialiser, and read-only afterwards:
// about 0.2 MB and a fraction of a millisecond. Rank sets are 13-bit masks, bit 0 the deuce.
#pragma once

#include <array>
#include <cstdint>

namespace tamarin {

inline constexpr unsigned indexSuits = 4;
inline constexpr unsigned indexRanks = 13;
inline constexpr unsigned rankSets = 1U << indexRanks;

struct HandIndexTables {
    HandIndexTables();

    // nth_unset[set][n]: position of the n-th rank (from 0) that set leaves free; past the last
    // free rank it runs on to 13 and up.
    std::array<std::array<uint8_t, indexRanks>, rankSets> nth_unset;

    // equal[flags][suit]: whether suit is equal to the one before it, where bit i of flags says
    // that suits i and i + 1 are equal.
    std::array<std::array<bool, indexSuits>, 8> equal;

    // nCr_ranks[n][r]: binomial coefficients, 0 where r > n.
    std::array<std::array<uint16_t, indexRanks + 1>, indexRanks + 1> nCr_ranks;

    // rank_set_to_index[set]: number of the set among those of as many ranks, in colexicographic
    // order: the sum over its ranks of C(rank, how many of its ranks lie at or below that one).
    std::array<uint16_t, rankSets> rank_set_to_index;

    // index_to_rank_set[count][index]: the inverse. Only the first C(13, count) entries of a row
    // are used; the rest is address space that is never touched.
    std::array<std::array<uint16_t, rankSets>, indexRanks + 1> index_to_rank_set;

    // The orderings of the four suits, in lexicographic order.
    std::array<std::array<uint8_t, indexSuits>, 24> suit_permutations;
};

extern const HandIndexTables handIndexTables;

} // namespace tamarin
