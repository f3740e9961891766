// Generates the seven-card table: a state machine that ranks a hand with one look-up a card.
//
// A state is what still matters of the cards so far: the multiset of cards in which a card's suit
// is kept only while five of that suit are possible among seven cards, i.e. with n cards seen,
// while at least n - 2 of them have it. The empty hand, one to six cards: 612,977 states, each a
// row of 53 entries, after one unused row of zeros.
//
//   entry  row 0      0..52        zeros: where an impossible step leads, and stays
//   entry  row 1     53            0
//                    53 + k        first entry of the state after the first card k = 1..52
//   entry  row p      p + k        first entry of the state after adding card k (sixth card and
//                                  below), or the hand's value (seventh card); 0 if the state
//                                  already holds the card
//                     p + 0        the value of a five- or six-card state, otherwise 0
//
// Card k is card byte k - 1. Values are those of hand_value.h. Rows are in order of discovery,
// smaller hands first, so the contents depend on nothing but this description.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tamarin {

inline constexpr size_t sevenCardStates = 612977;
inline constexpr size_t sevenCardRowEntries = 53;
inline constexpr size_t sevenCardEntries = (sevenCardStates + 1) * sevenCardRowEntries;
inline constexpr size_t sevenCardBytes = sevenCardEntries * sizeof(int32_t);
static_assert(sevenCardEntries == 32487834);

// Fills exactly sevenCardEntries entries. threads 0 means all cores; the result does not depend on
// it. done, if given, is called from the calling thread with the number of rows finished so far.
void generateSevenCardTable(std::span<int32_t> table, int threads = 0,
                            const std::function<void(uint64_t)>& done = {});

// The companion table: entry v is the dense rank 1..7462 of the hands with value v, 0 where no hand
// has it; handValueCount entries.
std::vector<int32_t> makeDenseRankTable();

} // namespace tamarin
