// Suit-isomorphic hand indexing: a dense number for every hand that is distinct up to a renaming of
// the suits, and a representative hand for every number.
//
// A hand is the cards dealt in each of up to four rounds, the rounds one after the other in one
// array; the order of the cards within a round does not matter. Two hands get the same index
// exactly when a renaming of the suits turns one into the other, and the indices of a round are 0
// to its size - 1 without a gap. Rounds of 2, 3, 1 and 1 cards have 169; 1,286,792; 55,190,538 and
// 2,428,287,420 hands; rounds of 2 and 5 end in 123,156,254.
//
// Files hold one entry an index, in index order, so neither the order of the configurations nor the
// way in which suit indices are combined may ever change:
//
//   - The configuration of a hand is how many cards of each round each suit holds: one word a suit,
//     the four words in falling order. The configurations of a round lie one behind the other, in
//     ascending order of their words.
//   - The index of a suit counts its rank sets round by round, the first round fastest, each set by
//     its colexicographic number among the ranks still free in the suit.
//   - Suits with equal words are interchangeable: m of them are a multiset of m suit indices, which
//     counts as one digit of C(size + m - 1, m) values. The first such group is the fastest digit.
//
// Source: Waugh, "A Fast and Optimal Hand Isomorphism Algorithm", 2013.
//
// Cards: one byte, rank * 4 + suit, 0 to 51. An indexer is read-only once it is built, so any
// number of threads may index through it at once; a state belongs to one thread. Nothing here
// allocates after hand_indexer_init. Broken promises of the caller (a card of 52 or more, a card
// dealt twice, a round too many) end the process by assertion.
#pragma once

#include <cstdint>

using hand_index_t = uint64_t;

namespace tamarin {
struct RoundPlan;
} // namespace tamarin

// Everything that depends on the structure alone. Filled by hand_indexer_init, released by
// hand_indexer_free; an all-zero record is an indexer of no rounds.
//
// A permutation is the suits' card counts as dealt, before the suits are sorted; a configuration is
// what remains when they are. Tables are indexed [round][permutation] or [round][configuration].
struct hand_indexer_t {
    uint8_t cards_per_round[4];
    uint8_t round_start[4];     // position of the round's first card in the card array
    uint64_t rounds;            // 1 to 4
    uint64_t configurations[4]; // how many
    uint64_t permutations[4];   // how many; includes some that no deck can deal
    uint64_t round_size[4];     // distinct indices

    uint32_t* permutation_to_configuration[4];
    uint8_t* permutation_to_order[4];   // which of the 24 suit orderings sorts the suits
    uint8_t* configuration_to_equal[4]; // bit i: suits i and i + 1 hold equal counts in every round
    uint32_t (*configuration[4])[4];    // the four words; round r at bit 4 * (rounds - 1 - r)
    uint32_t (*configuration_to_suit_size[4])[4]; // rank sets one suit can hold
    uint64_t* configuration_to_offset[4];         // index of the configuration's first hand

    tamarin::RoundPlan* plan[4]; // the same facts laid out for speed; private to hand_index.cpp
};

// A hand being indexed round by round.
struct hand_indexer_state_t {
    uint64_t suit_index[4];
    uint64_t suit_multiplier[4];
    uint64_t round; // the next one to index
    uint64_t permutation_index;
    uint64_t permutation_multiplier;
    uint32_t used_ranks[4]; // per suit, the ranks of the rounds so far
};

// Builds the indexer. False, with nothing left allocated and the record all zero, when rounds is 0
// or above 4, when the cards exceed 52 after any round, when the hands of a round outnumber 64
// bits, or when memory runs out. A structure in which one suit can hold 2^20 - 3 rank sets or more
// (four rounds of three cards, say) ends the process by assertion.
[[nodiscard]] bool hand_indexer_init(unsigned rounds, const uint8_t cardsPerRound[],
                                     hand_indexer_t* indexer);

// Releases the tables and leaves an indexer of no rounds; harmless on one.
void hand_indexer_free(hand_indexer_t* indexer);

// How many indices the round has; round must be below the number of rounds.
hand_index_t hand_indexer_size(const hand_indexer_t* indexer, unsigned round);

// Makes the state ready for the first round of a new hand.
void hand_indexer_state_init(const hand_indexer_t* indexer, hand_indexer_state_t* state);

// Takes the cards of the state's next round (those alone) and returns the index of the hand so far.
hand_index_t hand_index_next_round(const hand_indexer_t* indexer, const uint8_t cards[],
                                   hand_indexer_state_t* state);

// The index of every round of a complete hand, into indices[0] to indices[rounds - 1]; returns the
// last, or 0 for an indexer of no rounds.
hand_index_t hand_index_all(const hand_indexer_t* indexer, const uint8_t cards[],
                            hand_index_t indices[]);

// The last round's index of a complete hand; 0 for an indexer of no rounds.
hand_index_t hand_index_last(const hand_indexer_t* indexer, const uint8_t cards[]);

// Writes a hand with that index in that round: the cards of rounds 0 to round, within a round suit
// by suit and rank by rank upwards. False, with cards untouched, when there is no such index.
[[nodiscard]] bool hand_unindex(const hand_indexer_t* indexer, unsigned round, hand_index_t index,
                                uint8_t cards[]);
