#include "support/rng.h"

#include <algorithm>
#include <cassert>
#include <utility>

std::minstd_rand0& global_urng() {
    static std::minstd_rand0 engine(1);
    return engine;
}

void randomize() {
    static std::random_device device("default");
    global_urng().seed(device());
}

int pick_a_number(int from, int thru) {
    static std::uniform_int_distribution<int> distribution;
    using Range = std::uniform_int_distribution<int>::param_type;
    return distribution(global_urng(), Range(from, thru));
}

double pick_a_number(double from, double upto) {
    static std::uniform_real_distribution<double> distribution;
    using Range = std::uniform_real_distribution<double>::param_type;
    return distribution(global_urng(), Range(from, upto));
}

void shuffle(unsigned char* cards, int count, int size) {
    for (int i = 0; i < count; ++i)
        std::swap(cards[i], cards[pick_a_number(0, size - 1)]);
}

namespace {

constexpr int wordCount = 624;
constexpr int middle = 397;
constexpr uint32_t upperMask = 0x80000000u;
constexpr uint32_t lowerMask = 0x7FFFFFFFu;

// One step of the recurrence: the top bit of one word joined to the rest of the next, multiplied by
// the companion matrix. The subtraction makes a mask of the low bit without a branch.
uint32_t twist(uint32_t word, uint32_t following) {
    constexpr uint32_t matrix = 0x9908B0DFu;
    const uint32_t joined = (word & upperMask) | (following & lowerMask);
    return (joined >> 1) ^ ((0u - (joined & 1u)) & matrix);
}

// Three runs instead of one with two remainders: the words read and written never wrap inside one.
void regenerate(uint32_t* words) {
    for (int i = 0; i < wordCount - middle; ++i)
        words[i] = words[i + middle] ^ twist(words[i], words[i + 1]);
    for (int i = wordCount - middle; i < wordCount - 1; ++i)
        words[i] = words[i + middle - wordCount] ^ twist(words[i], words[i + 1]);
    words[wordCount - 1] = words[middle - 1] ^ twist(words[wordCount - 1], words[0]);
}

uint32_t temper(uint32_t word) {
    word ^= word >> 11;
    word ^= (word << 7) & 0x9D2C5680u;
    word ^= (word << 15) & 0xEFC60000u;
    return word ^ (word >> 18);
}

} // namespace

void init_genrand(rng_state_t* state, uint32_t seed) {
    uint32_t* words = state->words;
    words[0] = seed;
    for (uint32_t i = 1; i < wordCount; ++i)
        words[i] = 1812433253u * (words[i - 1] ^ (words[i - 1] >> 30)) + i;
    state->next = wordCount;
}

void init_by_array(rng_state_t* state, uint32_t key[], int keyLength) {
    assert(keyLength > 0);
    init_genrand(state, 19650218u);
    uint32_t* words = state->words;
    int i = 1;
    // Word 0 is skipped: before the walk wraps, it takes the value of the last word.
    const auto advance = [&] {
        if (++i == wordCount) {
            words[0] = words[wordCount - 1];
            i = 1;
        }
    };
    int j = 0;
    for (int steps = std::max(wordCount, keyLength); steps > 0; --steps) {
        const uint32_t mixed = (words[i - 1] ^ (words[i - 1] >> 30)) * 1664525u;
        words[i] = (words[i] ^ mixed) + key[j] + static_cast<uint32_t>(j);
        advance();
        if (++j == keyLength)
            j = 0;
    }
    for (int steps = wordCount - 1; steps > 0; --steps) {
        const uint32_t mixed = (words[i - 1] ^ (words[i - 1] >> 30)) * 1566083941u;
        words[i] = (words[i] ^ mixed) - static_cast<uint32_t>(i);
        advance();
    }
    // The recurrence uses only the top bit of the first word: with it set, no state is all zero.
    words[0] = upperMask;
}

uint32_t genrand_int32(rng_state_t* state) {
    if (state->next >= wordCount) {
        regenerate(state->words);
        state->next = 0;
    }
    return temper(state->words[state->next++]);
}
