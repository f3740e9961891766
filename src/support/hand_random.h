// Random numbers that a hand has for itself, so that hands can be played by any thread in any
// order.
#pragma once

#include <cstdint>

namespace tamarin {

// Uniform in [0, 1), with 53 bits (Steele, Lea and Flood 2014).
class HandRandom {
public:
    // The start is mixed, too: starts one step apart would be the same numbers, one place on.
    HandRandom(uint64_t seed, uint64_t hand) : state_(mixed(mixed(seed) ^ hand)) {}

    double next() {
        state_ += 0x9E3779B97F4A7C15U;
        return static_cast<double>(mixed(state_) >> 11U) * 0x1p-53;
    }

private:
    static uint64_t mixed(uint64_t z) {
        z += 0x9E3779B97F4A7C15U; // 0 would stay 0
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    uint64_t state_;
};

} // namespace tamarin
