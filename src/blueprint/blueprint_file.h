// The file `blueprint` of a game's strategies: the average strategy of training over a card
// abstraction, in 8 bits a probability.
//
// Everything is native little-endian:
//
//   bytes   field
//   8       "tmrnblue"
//   4       version of the format
//   4       0x01020304, in the writer's byte order
//   8       hash of the game's definition
//   8       hash of the card abstraction's buckets
//   64      its name, padded with zeros
//   8       seed
//   8       steps of training
//   8       decision nodes
//   4 x 4   buckets of each round; 0 for rounds that the game lacks
//   8       bytes of the probabilities, P
//   8 x B   checksum of each MiB of the probabilities, the last one shorter
//   8       checksum of all bytes before it
//   P       the probabilities: node by node in the tree's order, bucket by bucket, one byte for
//           each action that the rules allow (fold, call, raise); of a bucket they add up to 255
#pragma once

#include "blueprint/blueprint_sets.h"
#include "clustering/abstraction_description.h"
#include "game/game.h"
#include "support/file.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

// What a blueprint was trained on, and how long.
struct BlueprintOrigin {
    uint64_t game = 0; // hash
    std::string abstraction;
    uint64_t abstractionHash = 0;
    std::vector<uint32_t> buckets; // of each round
    uint64_t seed = 0;
    uint64_t steps = 0;
};

uint64_t hashOfGame(const Game& game);
// Of the buckets of all hands: how they were found makes no difference.
uint64_t hashOfBuckets(const AbstractionDescription& description);

// Probabilities as whole 255ths with the sum 255: rounded down, and what is left goes to the
// largest remainders, of equal ones to the first.
std::vector<uint8_t> inParts(std::span<const double> shares);

// Writes the average strategy whole, or leaves what was there.
Status writeBlueprint(const std::string& path, const BlueprintSets& sets,
                      const BlueprintOrigin& origin, FileSystem& files = systemFiles());

// The hash of the game that a file is said to be made for, by its head alone, of which nothing else
// is looked at. Refuses what is no blueprint.
Result<uint64_t> gameOfBlueprint(const std::string& path, FileSystem& files = systemFiles());

// A blueprint, mapped.
class BlueprintFile {
public:
    // Refuses, in words, what is no blueprint, one of another version, byte order or game, and one
    // that is cut or damaged anywhere. The tree is the game's, and must outlive the object.
    static Result<BlueprintFile> open(const std::string& path, const Game& game,
                                      const CompiledTree& tree, FileSystem& files = systemFiles());

    const BlueprintOrigin& origin() const { return origin_; }
    // Refuses a card abstraction with other buckets.
    Status madeOver(const AbstractionDescription& description) const;

    // The probabilities of fold, call and raise.
    ActionShares shares(int32_t node, size_t bucket) const;

private:
    BlueprintFile(std::string path, const CompiledTree& tree, MappedFile file)
        : path_(std::move(path)), tree_(&tree), file_(std::move(file)) {}
    Error error(const std::string& what) const { return {path_ + ": " + what}; }
    Status readHead(const Game& game);
    Status checkSize(uint64_t bytes, uint64_t nodes);
    Status checkBlocks(std::span<const uint64_t> checksums) const;
    Status checkSums() const;

    std::string path_;
    const CompiledTree* tree_;
    MappedFile file_;
    BlueprintOrigin origin_;
    std::span<const std::byte> shares_;
    std::vector<uint64_t> starts_; // of each node's bytes, and their end
};

} // namespace tamarin
