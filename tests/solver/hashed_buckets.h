// Buckets for tests without any table.
#pragma once

#include "holdem/buckets.h"
#include "holdem/sets.h"

#include <cstdint>

namespace tamarin::test {

// A bucket from the cards alone, different by players, round and seat: enough to exercise every
// table index.
class HashedBuckets : public HoldemBuckets {
public:
    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override {
        static constexpr int known[MAX_ROUNDS] = {2, 5, 6, 7};
        uint32_t hash = static_cast<uint32_t>(players * 100 + round * 10 + seat);
        for (int i = 0; i < known[round]; ++i)
            hash = hash * 2654435761U + cards[i] + 1U;
        return static_cast<uint8_t>((hash >> 16U) % holdemBuckets);
    }
};

} // namespace tamarin::test
