// A card abstraction of a few hands, for tests of what reads one.
#pragma once

#include "clustering/card_abstraction.h"

#include <vector>

namespace tamarin::test {

inline constexpr HandCounts fakeHands{169, 40, 50, 60};
inline constexpr BucketCounts fakeCounts{169, 3, 4, 5};

// Different in every round, and every bucket is used.
inline std::array<std::vector<uint16_t>, holdemRounds> fakeBuckets() {
    std::array<std::vector<uint16_t>, holdemRounds> buckets;
    for (size_t round = 0; round < buckets.size(); ++round)
        for (size_t hand = 0; hand < fakeHands[round]; ++hand)
            buckets[round].push_back(
                static_cast<uint16_t>((hand * (round + 2) + round) % fakeCounts[round]));
    return buckets;
}

inline AbstractionDescription fakeDescription() {
    AbstractionDescription description;
    description.options.seed = 7;
    for (size_t round = 0; round < fakeCounts.size(); ++round) {
        RoundDescription& at = description.rounds[round];
        at.buckets = fakeCounts[round];
        at.distance = 1000 + round;
        at.deckHands = 10 + round;
        for (uint32_t i = 0; i < 2 * at.buckets; ++i)
            at.centres.push_back(static_cast<uint8_t>(i + round));
    }
    for (uint8_t hand = 0; hand < 169; ++hand)
        description.startingHandClusters.push_back(hand % 8);
    return description;
}

inline Status writeFake(const std::string& directory, const std::string& name) {
    const auto buckets = fakeBuckets();
    return writeAbstraction(directory, name, fakeDescription(),
                            {buckets[0], buckets[1], buckets[2], buckets[3]});
}

} // namespace tamarin::test
