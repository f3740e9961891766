// A card abstraction with as many hands as hold'em has, in sparse files: every hand is in bucket 0
// but the first few of each round.
#pragma once

#include "abstraction/sparse_tables.h"
#include "clustering/card_abstraction.h"

#include <array>
#include <string>
#include <vector>

namespace tamarin::test {

inline constexpr BucketCounts sparseCounts{20, 7, 8, 9};

// Pre-flop hand i is in bucket i % 20, flop hands 0 to 5 in 4, 2, 6, 2, 2, 5, the first hand of the
// turn in 3 and that of the river in 8.
inline std::array<std::vector<uint16_t>, holdemRounds> sparseFirstBuckets() {
    std::array<std::vector<uint16_t>, holdemRounds> first{
        {std::vector<uint16_t>(roundSizes[0]), {4, 2, 6, 2, 2, 5}, {3}, {8}}};
    for (size_t hand = 0; hand < first[0].size(); ++hand)
        first[0][hand] = static_cast<uint16_t>(hand % 20);
    return first;
}

// Below lookup/ of a directory.
inline void writeSparseAbstraction(const std::string& name, const std::string& directory = ".") {
    const std::string folder = abstractionFolder(directory, name);
    std::filesystem::create_directories(folder);
    AbstractionDescription description;
    description.options.seed = 77;
    description.options.sample = 20000;
    const auto first = sparseFirstBuckets();
    for (size_t round = 0; round < first.size(); ++round) {
        const std::string path = folder + "/" + bucketFileNames[round];
        writeSparse(path, roundSizes[round], first[round]);
        const auto file = MappedFile::open(path);
        ASSERT_TRUE(file.ok()) << file.error();
        description.rounds[round].buckets = sparseCounts[round];
        description.rounds[round].hands = roundSizes[round];
        description.rounds[round].checksum = bucketChecksum(file->as<uint16_t>());
    }
    ASSERT_TRUE(writeDescription(folder + "/" + descriptionFileName, description).ok());
}

} // namespace tamarin::test
