// The constant tables of the hand indexer: rank sets, their numbers, the orderings of the suits.
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

// Rank sets of the four suits side by side: suit s at bit laneBits * s.
inline constexpr unsigned laneBits = 16;
inline constexpr uint32_t laneMask = rankSets - 1;

struct HandIndexTables {
    HandIndexTables();

    // equal[flags][suit]: whether suit is equal to the one before it, where bit i of flags says
    // that suits i and i + 1 are equal.
    std::array<std::array<bool, indexSuits>, 8> equal;

    // nCr_ranks[n][r]: binomial coefficients, 0 where r > n.
    std::array<std::array<uint16_t, indexRanks + 1>, indexRanks + 1> nCr_ranks;

    // rank_set_to_index[set]: number of the set among those of as many ranks, in colexicographic
    // order: the sum over its ranks of C(rank, how many of its ranks lie at or below that one).
    std::array<uint16_t, rankSets> rank_set_to_index;

    // index_to_rank_set[rank_set_row[count] + index]: the inverse, for each number of ranks.
    std::array<uint16_t, rankSets> index_to_rank_set;
    std::array<uint16_t, indexRanks + 1> rank_set_row;

    // By card: its bit in the rank sets side by side, and the bits of its suit's lower ranks. Zero
    // for bytes that are not cards, which shows later as a set of too few ranks.
    std::array<uint64_t, 256> cardBit;
    std::array<uint64_t, 256> lowerRanks;

    // By bit of the rank sets side by side: the bits of its suit from that one up, and its card.
    std::array<uint64_t, 64> higherRanks;
    std::array<uint8_t, 64> cardOfBit;

    // The orderings of the four suits, in lexicographic order.
    std::array<std::array<uint8_t, indexSuits>, 24> suit_permutations;
};

extern const HandIndexTables handIndexTables;

} // namespace tamarin
