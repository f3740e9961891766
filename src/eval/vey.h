// The older evaluator module: it holds its own tables, ranks five to seven cards, samples equities
// with its own shuffle and prints its self-tests.
//
// loadLookupTables() before everything else; setVEYRNG() before the sampling functions. The
// module's tables are shared and unguarded: load, release and sample from one thread. Cards are
// bytes 0..51, all different; nothing is checked. Values: category << 12 | rank within it, larger
// is better, equal is a tie; the categories run from 1 ("High card") to 9 ("Straight flush").
#pragma once

#include "game/state.h"
#include "support/rng.h"

#include <cstdint>

// Reads the module's seven tables from lookup/. A file that cannot be read, is of another size or
// (lookup/tpt) leads outside of itself gives a table of zeros, with one line on standard error;
// ranking by such a table means nothing. Nothing uses the five vey.* tables.
void loadLookupTables();
// Releases them; once, and nothing may be ranked afterwards.
void freeLookupTables();

uint32_t rankHand5(unsigned char* cards);
uint32_t rankHand6(unsigned char* cards);
uint32_t rankHand7(unsigned char* cards);

// The substitute rank that lookup/tpt.indexes holds for the value: 1..7462 as generated here, 0
// where there is no such value.
int rankHand5C(unsigned char* cards);
int rankHand6C(unsigned char* cards);
int rankHand7C(unsigned char* cards);

// Rank every strictly increasing tuple of the numbers 1..52 and print the least and greatest value,
// the number of tuples and the hands of each category. The ranking functions add one to each number
// themselves, so these tuples deliberately lie one card too high, and a 52 is not a card. Such a
// tuple is counted, but in a category only if the table's entry belongs to one.
void testRankHand5();
void testRankHand6();
void testRankHand7();

// The generator that the sampling functions draw from; only the pointer is kept.
void setVEYRNG(rng_state_t* rng);

// The share of 10,000 sampled deals in which the hand beats players - 1 random opponents; ties
// lose. The number in the name is that of the known cards: two hole cards, then the board. players
// counts the hand itself (2 when not given); 0 and 1 give 1.0 without a draw.
double evaluateHand2(unsigned char* cards, unsigned int players);
double evaluateHand5(unsigned char* cards, unsigned int players);
double evaluateHand6(unsigned char* cards, unsigned int players);
double evaluateHand7(unsigned char* cards, unsigned int players);
double evaluateHand2(unsigned char* cards);
double evaluateHand5(unsigned char* cards);
double evaluateHand6(unsigned char* cards);
double evaluateHand7(unsigned char* cards);

// The viewing player's sampled equity in result[1], result[2], result[3] among one, two and three
// players; result[0] is left alone. Zeros for a round beyond the river.
void winProb(MatchState* state, double* result);

// Prints up to 14 cards and a line end on standard output.
void printHand(unsigned char* cards, int count);
