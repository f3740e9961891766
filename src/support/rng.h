// Random numbers: one process-wide minimal-standard engine, used by nearly everything that draws,
// and MT19937 generators with explicit state for dealing from a seed.
//
// The process-wide engine and its distributions are shared and unguarded: draw from one thread.
#pragma once

#include <cstdint>
#include <random>

// The process-wide engine (multiplier 16807, increment 0, modulus 2147483647). Created on first use
// with seed 1, so that without randomize() every run draws the same numbers.
std::minstd_rand0& global_urng();

// Seeds the process-wide engine with one 32-bit value from the system's random device.
void randomize();

// Uniform in the closed range [from, thru].
int pick_a_number(int from, int thru);

// Uniform in the half-open range [from, upto).
double pick_a_number(double from, double upto);

// Exchanges each of the first count positions of an array of size cards with a position drawn from
// the whole array. The draw deliberately ranges over all positions and not over those still ahead:
// sampled boards and tables depend on this exact sequence of draws. count 0 draws nothing.
void shuffle(unsigned char* cards, int count, int size);

// MT19937 (Matsumoto and Nishimura 1998): 624 words and the position of the next word to temper;
// 624 means that the words are regenerated before the next draw. Seed before the first draw.
struct rng_state_t {
    uint32_t words[624];
    int32_t next;
};

// Seeding by one word.
void init_genrand(rng_state_t* state, uint32_t seed);
// Seeding by an array of keyLength > 0 words; the first state word's top bit is forced.
void init_by_array(rng_state_t* state, uint32_t key[], int keyLength);
// The next tempered 32-bit word.
uint32_t genrand_int32(rng_state_t* state);
