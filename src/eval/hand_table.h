// Ranking and sampled equity against a seven-card table that the caller holds: the family that
// fills the equity tables.
//
// table: the 32,487,834 entries of lookup/tpt (seven_card_generator.h), not null. Cards are bytes
// 0..51, all different; nothing is checked.
#pragma once

#include <cstdint>

// The value of seven cards (category << 12 | rank within it; larger is better): seven look-ups.
uint32_t rankHand(int* table, unsigned char* cards);

// The share of 1,000 sampled deals in which the hand beats players - 1 random opponents; ties lose.
// The number in the name is that of the known cards: two hole cards, then the board. players counts
// the hand itself; 0 and 1 give 1.0 without a draw. Draws from the process-wide engine, so from one
// thread only.
double evaluateHand2(unsigned char* cards, unsigned int players, int* table);
double evaluateHand5(unsigned char* cards, unsigned int players, int* table);
double evaluateHand6(unsigned char* cards, unsigned int players, int* table);
double evaluateHand7(unsigned char* cards, unsigned int players, int* table);
