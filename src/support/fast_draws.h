// pick_a_number(0, range - 1) for a fixed range, many times.
//
// The library's distribution divides the engine's span into range equal parts and throws away the
// draws beyond them; it works the parts out anew, with two divisions, on every call. Here they are
// worked out once, the engine's modulus 2^31 - 1 is reduced by adding the two halves of the
// product, and the division is a multiplication by a reciprocal. The numbers drawn and the state in
// which the process-wide engine is left are the library's; matchesLibrary() says whether that holds
// for the library at hand.
#pragma once

#include "support/rng.h"

#include <cstdint>
#include <random>

namespace tamarin {

class FastDraws {
public:
    // Takes the process-wide engine's state; it stands still there until store().
    explicit FastDraws(uint32_t range) : FastDraws(range, global_urng()) {}
    FastDraws(uint32_t range, const std::minstd_rand0& engine);

    // Uniform in [0, range).
    uint32_t next() {
        uint32_t draw;
        do {
            state_ = step(state_);
            draw = state_ - 1;
        } while (draw >= past_);
        return static_cast<uint32_t>(Wide{reciprocal_} * draw >> 64U);
    }

    // Puts the state back into the process-wide engine.
    void store() const { store(global_urng()); }
    void store(std::minstd_rand0& engine) const { engine.seed(state_); }

    // Whether this library's distribution draws the same numbers for the range.
    static bool matchesLibrary(uint32_t range);

private:
    __extension__ using Wide = unsigned __int128;
    static constexpr uint32_t modulus = std::minstd_rand0::modulus;

    static uint32_t step(uint32_t state) {
        const uint64_t product = uint64_t{state} * std::minstd_rand0::multiplier;
        const auto folded =
            static_cast<uint32_t>((product & modulus) + (product >> 31U)); // at most 2^31 + 16806
        return folded >= modulus ? folded - modulus : folded;
    }

    uint32_t state_;
    uint32_t past_;       // draws from here on are thrown away
    uint64_t reciprocal_; // 2^64 / part, rounded up: exact for draws and parts below 2^31
};

} // namespace tamarin
