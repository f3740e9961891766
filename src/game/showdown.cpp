#include "game/showdown.h"

#include <algorithm>
#include <bit>

namespace {

constexpr int numRanks = 13;
constexpr unsigned wheelMask = 1U << 12U | 0xFU; // ace, two, three, four, five

constexpr int choose(int n, int k) {
    if (k > n)
        return 0;
    int result = 1;
    for (int i = 1; i <= k; ++i)
        result = result * (n - k + i) / i;
    return result;
}

static_assert(onePairRank == choose(numRanks, 5));
static_assert(twoPairRank == 5005 && straightRank == 9620 && flushRank == 9633);
static_assert(fullHouseRank == 10920 && fourOfAKindRank == 11934 && straightFlushRank == 12103);

int highestBit(unsigned mask) {
    return mask == 0 ? 0 : std::countl_zero(1U) - std::countl_zero(mask);
}

// Colexicographic index of the highest min(count, size) ranks of the mask among all sets of as many
// ranks: the sum over its ranks r1 < r2 < ... of ri choose i.
int colexOfHighest(unsigned mask, int count) {
    while (std::popcount(mask) > count)
        mask &= mask - 1;
    int index = 0;
    for (int i = 1; mask != 0; ++i, mask &= mask - 1)
        index += choose(std::countr_zero(mask), i);
    return index;
}

// Top rank of the highest straight in the mask, or -1. The ace-low one has top rank 3.
int straightTop(unsigned mask) {
    for (int top = numRanks - 1; top >= 4; --top) {
        const unsigned five = 0x1FU << static_cast<unsigned>(top - 4);
        if ((mask & five) == five)
            return top;
    }
    return (mask & wheelMask) == wheelMask ? 3 : -1;
}

tamarin::ShowdownTables makeTables() {
    tamarin::ShowdownTables t{};
    for (unsigned mask = 0; mask < tamarin::ShowdownTables::masks; ++mask) {
        const int top = straightTop(mask);
        const int five = colexOfHighest(mask, 5);
        t.topBit[mask] = static_cast<uint8_t>(highestBit(mask));
        t.anySuitVal[mask] = static_cast<uint16_t>(top >= 0 ? straightRank + top : five);
        if (std::popcount(mask) >= 5) {
            t.oneSuitVal[mask] =
                static_cast<uint16_t>(top >= 0 ? straightFlushRank + top : flushRank + five);
        }
        t.pairOtherVal[mask] = static_cast<uint16_t>(colexOfHighest(mask, 3));
        t.tripsOtherVal[mask] = static_cast<uint8_t>(colexOfHighest(mask, 2));
    }
    for (int rank = 0; rank < numRanks; ++rank) {
        const auto r = static_cast<size_t>(rank);
        t.pairsVal[r] = static_cast<uint16_t>(onePairRank + choose(numRanks, 3) * rank);
        t.twoPairOtherVal[r] =
            static_cast<uint16_t>(choose(numRanks, 3) * numRanks + numRanks * rank);
        t.tripsVal[r] = static_cast<uint16_t>(threeOfAKindRank + choose(numRanks, 2) * rank);
        t.quadsVal[r] = static_cast<uint16_t>(fourOfAKindRank + numRanks * rank);
    }
    return t;
}

const tamarin::ShowdownTables tables = makeTables();

// Full houses are numbered as three of a kind with the pair as kicker, moved up above the flushes.
constexpr int fullHouseShift = fullHouseRank - threeOfAKindRank;
static_assert(fullHouseShift == 2314);

unsigned without(unsigned mask, int rank) {
    return mask & ~(1U << static_cast<unsigned>(rank));
}

int valueOfTrips(unsigned trips, unsigned pairs, unsigned any, int flush) {
    const int k = tables.topBit[trips];
    const auto rank = static_cast<size_t>(k);
    if (const unsigned rest = without(pairs, k))
        return tables.tripsVal[rank] + tables.topBit[rest] + fullHouseShift;
    if (flush != 0)
        return flush;
    const int value = tables.anySuitVal[any];
    if (value >= straightRank)
        return value;
    return tables.tripsVal[rank] + tables.tripsOtherVal[without(any, k)];
}

int valueOfPairs(unsigned pairs, unsigned any) {
    const int k = tables.topBit[pairs];
    const auto rank = static_cast<size_t>(k);
    const unsigned others = without(any, k);
    if (const unsigned rest = without(pairs, k)) {
        const int k2 = tables.topBit[rest];
        return tables.pairsVal[rank] + tables.twoPairOtherVal[static_cast<size_t>(k2)] +
               tables.topBit[without(others, k2)];
    }
    return tables.pairsVal[rank] + tables.pairOtherVal[others];
}

} // namespace

const tamarin::ShowdownTables& tamarin::showdownTables() {
    return tables;
}

int rankCardSet(CardSet cards) {
    constexpr unsigned rankMask = tamarin::ShowdownTables::masks - 1;
    const unsigned s0 = cards & rankMask;
    const unsigned s1 = cards >> 16U & rankMask;
    const unsigned s2 = cards >> 32U & rankMask;
    const unsigned s3 = cards >> 48U & rankMask;

    const int flush = std::max(std::max(tables.oneSuitVal[s0], tables.oneSuitVal[s1]),
                               std::max(tables.oneSuitVal[s2], tables.oneSuitVal[s3]));
    if (flush >= straightFlushRank)
        return flush;

    const unsigned either01 = s0 | s1;
    const unsigned either23 = s2 | s3;
    const unsigned both01 = s0 & s1;
    const unsigned both23 = s2 & s3;
    const unsigned any = either01 | either23;
    const unsigned pairs = both01 | both23 | (either01 & either23);
    const unsigned trips = (both01 & either23) | (both23 & either01);
    if (trips != 0) {
        if (const unsigned quads = both01 & both23) {
            const int k = tables.topBit[quads];
            return tables.quadsVal[static_cast<size_t>(k)] + tables.topBit[without(any, k)];
        }
        return valueOfTrips(trips, pairs, any, flush);
    }
    if (flush != 0)
        return flush;
    const int value = tables.anySuitVal[any];
    if (value >= straightRank || pairs == 0)
        return value;
    return valueOfPairs(pairs, any);
}
