// SplitMix64 (Steele, Lea and Flood 2014): a 64-bit counter, well mixed. Its whole state is one
// word, so a generator costs nothing to make, keep or give to every hand.
#pragma once

#include <cstdint>

namespace tamarin {

inline constexpr uint64_t splitMixStep = 0x9e3779b97f4a7c15U;

// A bijection that takes neighbours apart; 0 stays 0.
inline uint64_t mixBits(uint64_t z) {
    z = (z ^ z >> 30U) * 0xbf58476d1ce4e5b9U;
    z = (z ^ z >> 27U) * 0x94d049bb133111ebU;
    return z ^ z >> 31U;
}

// [0, 1) from the 53 high bits.
inline double unitInterval(uint64_t bits) {
    return static_cast<double>(bits >> 11U) * 0x1p-53;
}

class SplitMix {
public:
    explicit SplitMix(uint64_t seed) : state_(seed) {}
    uint64_t operator()() { return mixBits(state_ += splitMixStep); }
    // Uniform below n, up to a bias of n / 2^32.
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(((*this)() >> 32U) * n >> 32U); }

private:
    uint64_t state_;
};

// Random numbers that a hand has for itself, so that hands can be played by any thread in any
// order.
class HandRandom {
public:
    // The start is mixed, too: starts one step apart would be the same numbers, one place on.
    HandRandom(uint64_t seed, uint64_t hand)
        : state_(mixBits((mixBits(seed + splitMixStep) ^ hand) + splitMixStep) + splitMixStep) {}

    // Uniform in [0, 1).
    double next() { return unitInterval(mixBits((state_ += splitMixStep))); }

private:
    uint64_t state_;
};

} // namespace tamarin
