#include "support/fast_draws.h"

#include <cassert>

namespace tamarin {

namespace {

// The engine gives its state away only by stepping; the inverse of the multiplier (by Fermat, its
// power modulus - 2) steps back.
uint32_t stateOf(std::minstd_rand0 engine) {
    constexpr uint64_t modulus = std::minstd_rand0::modulus;
    static_assert(std::minstd_rand0::increment == 0);
    uint64_t inverse = 1;
    uint64_t base = std::minstd_rand0::multiplier;
    for (uint64_t power = modulus - 2; power != 0; power >>= 1U) {
        if (power & 1U)
            inverse = inverse * base % modulus;
        base = base * base % modulus;
    }
    return static_cast<uint32_t>(engine() * inverse % modulus);
}

} // namespace

FastDraws::FastDraws(uint32_t range, const std::minstd_rand0& engine) : state_(stateOf(engine)) {
    assert(range > 0 && range < 1U << 16U); // a deck, with room to spare
    constexpr uint32_t span = std::minstd_rand0::max() - std::minstd_rand0::min();
    const uint32_t part = span / range;
    past_ = part * range;
    reciprocal_ = UINT64_MAX / part + 1;
}

bool FastDraws::matchesLibrary(uint32_t range) {
    std::minstd_rand0 engine(20011);
    std::uniform_int_distribution<int> distribution(0, static_cast<int>(range) - 1);
    FastDraws draws(range, engine);
    for (int i = 0; i < 64; ++i)
        if (static_cast<uint32_t>(distribution(engine)) != draws.next())
            return false;
    std::minstd_rand0 left;
    draws.store(left);
    return left == engine;
}

} // namespace tamarin
