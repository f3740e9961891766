#include "index/hand_index_tables.h"

#include <bit>
#include <cstddef>

namespace tamarin {

// The priority puts the tables before the static initialisers of other files, some of which may
// build indexers.
[[gnu::init_priority(200)]] const HandIndexTables handIndexTables;

HandIndexTables::HandIndexTables() {
    for (unsigned flags = 0; flags < equal.size(); ++flags)
        for (unsigned suit = 0; suit < indexSuits; ++suit)
            equal[flags][suit] = suit > 0 && (flags >> (suit - 1) & 1U);

    for (unsigned n = 0; n <= indexRanks; ++n)
        for (unsigned r = 0; r <= indexRanks; ++r)
            nCr_ranks[n][r] =
                r == 0   ? 1
                : n == 0 ? 0
                         : static_cast<uint16_t>(nCr_ranks[n - 1][r - 1] + nCr_ranks[n - 1][r]);

    for (unsigned count = 0, row = 0; count <= indexRanks; row += nCr_ranks[indexRanks][count++])
        rank_set_row[count] = static_cast<uint16_t>(row);

    for (unsigned set = 0; set < rankSets; ++set) {
        unsigned index = 0;
        unsigned count = 0;
        for (unsigned rest = set; rest != 0; rest &= rest - 1)
            index += nCr_ranks[static_cast<size_t>(std::countr_zero(rest))][++count];
        rank_set_to_index[set] = static_cast<uint16_t>(index);
        index_to_rank_set[rank_set_row[count] + index] = static_cast<uint16_t>(set);
    }

    cardBit.fill(0);
    lowerRanks.fill(0);
    for (unsigned card = 0; card < indexSuits * indexRanks; ++card) {
        const unsigned lane = card % indexSuits * laneBits;
        cardBit[card] = uint64_t{1} << (lane + card / indexSuits);
        lowerRanks[card] = cardBit[card] - (uint64_t{1} << lane);
    }
    for (unsigned bit = 0; bit < higherRanks.size(); ++bit) {
        const uint64_t lane = uint64_t{laneMask} << bit / laneBits * laneBits;
        higherRanks[bit] = lane & ~((uint64_t{1} << bit) - 1);
        cardOfBit[bit] = static_cast<uint8_t>(bit % laneBits * indexSuits + bit / laneBits);
    }

    unsigned slot = 0;
    for (unsigned a = 0; a < indexSuits; ++a)
        for (unsigned b = 0; b < indexSuits; ++b)
            for (unsigned c = 0; c < indexSuits; ++c)
                if (a != b && a != c && b != c)
                    suit_permutations[slot++] = {static_cast<uint8_t>(a), static_cast<uint8_t>(b),
                                                 static_cast<uint8_t>(c),
                                                 static_cast<uint8_t>(0 + 1 + 2 + 3 - a - b - c)};
}

} // namespace tamarin
