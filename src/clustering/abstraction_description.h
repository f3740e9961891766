// What is known of a card abstraction: how it was made, what its files must hold, how well it fits.
//
// The file `abstraction` of its folder, a checked file (checked_file.h) whose payload is, in this
// order:
//
//   4       method: 0 emd, 1 percentile
//   4       clusters of starting hands that river hands are measured against
//   8       seed
//   8       hands sampled for the turn, and as many for the river; 0: chosen by the counts
//   4       restarts
//   4       most iterations of a fit
//   4       a fit ends when an iteration wins less than one part in so many
//           (by percentile nothing depends on the six: they are AbstractionOptions')
//   then for each round:
//   4       buckets
//   8       hands
//   8       checksum of the round's file
//   8       sum of the distances of all hands of the deck from their centres
//   8       hands of the deck
//   8, N    length and bytes of the centres, one row of N / buckets bytes each, in bucket order
//   and
//   8, N    the cluster of each starting hand: 169 bytes, or none
#pragma once

#include "clustering/abstraction_name.h"
#include "support/result.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

inline constexpr uint64_t mostSample = 100'000'000;

struct AbstractionOptions {
    AbstractionMethod method = AbstractionMethod::emd;
    uint32_t clusters = 8; // 1 to 8
    uint64_t seed = 1;     // any
    uint64_t sample = 0;   // up to mostSample
    uint32_t restarts = 3; // at least 1, as are the next two
    uint32_t iterations = 50;
    uint32_t tolerance = 1000;

    bool operator==(const AbstractionOptions&) const = default;

    // With the defaults in place of what nothing depends on: by percentile, of all but the method.
    AbstractionOptions normalised() const;
};

// Bytes of one centre of the round.
size_t centreWidth(AbstractionMethod method, size_t round);

struct RoundDescription {
    uint32_t buckets = 0;
    uint64_t hands = 0;
    uint64_t checksum = 0;
    uint64_t distance = 0;
    uint64_t deckHands = 0;
    std::vector<uint8_t> centres;

    bool operator==(const RoundDescription&) const = default;
    // Of a hand of the deck from its centre.
    double meanDistance() const {
        return deckHands == 0 ? 0 : static_cast<double>(distance) / static_cast<double>(deckHands);
    }
};

struct AbstractionDescription {
    AbstractionOptions options;
    std::array<RoundDescription, holdemRounds> rounds;
    std::vector<uint8_t> startingHandClusters;

    bool operator==(const AbstractionDescription&) const = default;
    BucketCounts counts() const;
};

Status writeDescription(const std::string& path, const AbstractionDescription& description);
// Refuses a file that is not such a description, or holds numbers that none has.
Result<AbstractionDescription> readDescription(const std::string& path);

// "seed is 1 there and 2 here", for the first option or count that differs; empty when none does.
std::string differenceOf(const AbstractionOptions& there, const BucketCounts& countsThere,
                         const AbstractionOptions& here, const BucketCounts& countsHere);

// The fields in the order of the files, for a Packer or an Unpacker (checked_file.h).
template <class Options, class Archive>
requires std::same_as<std::remove_const_t<Options>, AbstractionOptions>
void eachField(Options& options, Archive& field) {
    field(options.method);
    field(options.clusters);
    field(options.seed);
    field(options.sample);
    field(options.restarts);
    field(options.iterations);
    field(options.tolerance);
}
template <class Round, class Archive>
requires std::same_as<std::remove_const_t<Round>, RoundDescription>
void eachField(Round& round, Archive& field) {
    field(round.buckets);
    field(round.hands);
    field(round.checksum);
    field(round.distance);
    field(round.deckHands);
    field(round.centres);
}

} // namespace tamarin
