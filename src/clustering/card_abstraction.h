// A card abstraction as its users see it: the bucket of every hand of every round, mapped from the
// files.
//
// Below lookup/NAME/ of a playing directory lie `preflop`, `flop`, `turn` and `river`, bare arrays
// of one 16-bit number (in the machine's byte order) a hand index of the round (round_indexers.h),
// and `abstraction`, which says what they must be (abstraction_description.h). Bucket numbers rise
// with the strength of the hands.
#pragma once

#include "clustering/abstraction_description.h"
#include "support/file.h"

#include <array>
#include <cassert>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

using HandCounts = std::array<size_t, holdemRounds>; // roundSizes, but in tests

class CardAbstraction {
public:
    // What open() looks at: the description and the files' sizes, or every byte as well. Bucket
    // numbers of files that were not looked into may be any.
    enum class Check { sizes, contents };

    // Refuses files that are missing, damaged or not those of the description, in one line. With
    // all bytes checked every bucket() is below buckets(); that reads 278 MB.
    static Result<CardAbstraction> open(const std::string& directory, const std::string& name,
                                        Check check = Check::contents,
                                        const HandCounts& hands = roundSizes);

    // round: 0..3; hand: a hand index of the round.
    size_t buckets(int round) const { return at(round).buckets; }
    size_t hands(int round) const { return at(round).hands; }
    uint16_t bucket(int round, size_t hand) const {
        assert(hand < hands(round));
        return tables_[static_cast<size_t>(round)][hand];
    }
    // All of a round, by hand index.
    std::span<const uint16_t> table(int round) const { return tables_[static_cast<size_t>(round)]; }

    const AbstractionDescription& description() const { return description_; }

private:
    CardAbstraction() = default;
    const RoundDescription& at(int round) const {
        assert(round >= 0 && round < holdemRounds);
        return description_.rounds[static_cast<size_t>(round)];
    }

    AbstractionDescription description_;
    std::vector<MappedFile> files_;
    std::array<std::span<const uint16_t>, holdemRounds> tables_;
};

// The checksum of a round's file, as a description holds it.
uint64_t bucketChecksum(std::span<const uint16_t> buckets);

// Writes one round's file, and fills the description's hands and checksum.
Status writeBuckets(const std::string& folder, int round, std::span<const uint16_t> buckets,
                    RoundDescription& description);

// Writes a whole abstraction: the rounds' files, and then the description that makes it one.
// description: all but the hands and checksums, which are those of the buckets.
Status writeAbstraction(const std::string& directory, const std::string& name,
                        AbstractionDescription description,
                        const std::array<std::span<const uint16_t>, holdemRounds>& buckets);

} // namespace tamarin
