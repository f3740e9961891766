// How many ways there are to choose k of n things.
#pragma once

#include <cstdint>

namespace tamarin {

// Every product on the way must have room in 64 bits, as those of a deck's cards do.
constexpr uint64_t choose(uint64_t n, uint64_t k) {
    uint64_t result = 1;
    for (uint64_t i = 0; i < k; ++i)
        result = result * (n - i) / (i + 1);
    return result;
}

} // namespace tamarin
