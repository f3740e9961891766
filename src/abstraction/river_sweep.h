// How often each of a river board's 1,081 holdings wins against one and against two random
// opponents, counted exactly.
//
// The hands are ranked and sorted once; a sweep from the weakest group up keeps, for each card, how
// many beaten holdings contain it. A holding {a, b} beats, of the B holdings below it, those that
// share no card with it:
//
//   one opponent    w = B - n[a] - n[b]
//   two opponents   ordered pairs of beaten holdings that share no card: w^2 + w - sum of m[c]^2,
//                   where m[c] counts the beaten holdings with card c that have neither a nor b
//
// (of the w^2 ordered pairs, m[c]^2 share card c; a pair of equal holdings shares two cards and is
// taken off twice). Wins only: who ties has not won.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tamarin {

// Deals that one river holding can meet: 45 choose 2 opponents, and ordered pairs of them.
inline constexpr uint32_t riverDeals2 = 45 * 44 / 2;
inline constexpr uint32_t riverDeals3 = riverDeals2 * (43 * 42 / 2);

// Both counts of a river holding in one word: wins over one opponent above wins over two.
using RiverWins = uint32_t;
inline constexpr unsigned riverWinsShift = 20;
static_assert(riverDeals3 < 1U << riverWinsShift);
static_assert(riverDeals2 < 1U << (32 - riverWinsShift));

constexpr uint32_t winsOverOne(RiverWins wins) {
    return wins >> riverWinsShift;
}
constexpr uint32_t winsOverTwo(RiverWins wins) {
    return wins & ((1U << riverWinsShift) - 1);
}

inline constexpr size_t riverHoldings = 47 * 46 / 2;

// wins receives riverHoldings entries, numbered as in boards.h. board: five different cards.
void sweepRiver(const uint8_t* board, RiverWins* wins);

} // namespace tamarin
