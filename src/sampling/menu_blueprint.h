// A blueprint whose tree is that of a game and a menu, for two seats or more: version 2 of the file
// `blueprint` (blueprint/blueprint_file.h has version 1, of limit games for two).
//
// Everything is native little-endian:
//
//   bytes   field
//   8       "tmrnblue"
//   4       version of the format: 2
//   4       0x01020304, in the writer's byte order
//   8       hash of the game's definition
//   8       hash of the card abstraction's buckets
//   64      its name, padded with zeros
//   8       seed
//   8       iterations of training
//   8       decision nodes
//   4 x 4   buckets of each round; 0 for rounds that the game lacks
//   4       seats
//   4       the seat that it is made for, whose opponents have more sizes; 0xffffffff: all alike
//   4       most actions of a node
//   4       length of the menu's text, M; 0 in limit games
//   8       hash of the menu
//   8       bytes of the probabilities, P
//   M       the menu's text, padded with zeros to whole words of 8 bytes
//   8 x B   checksum of each MiB of the probabilities, the last one shorter
//   8       checksum of all bytes before it
//   P       the probabilities, round by round, seat by seat, bucket by bucket, node by node in the
//           tree's order: one byte for each edge; of a node and bucket they add up to 255
//
// What a hand needs of a round is one stretch of the file.
#pragma once

#include "blueprint/blueprint_file.h"
#include "sampling/menu_sets.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

struct MenuOrigin {
    BlueprintOrigin training;
    std::string menu; // its canonical text; empty in limit games
    std::optional<int> ownSeat;
};

// Whether blueprints of a game are of this kind: of no-limit, or for more than two seats.
bool hasMenuBlueprints(const Game& game);

// Writes the average strategy whole, or leaves what was there.
Status writeMenuBlueprint(const std::string& path, const MenuSets& sets, const MenuOrigin& origin,
                          FileSystem& files = systemFiles());

// A blueprint, mapped, with the tree of its menu.
class MenuBlueprint {
public:
    // Refuses, in words, what is no blueprint, one of another version, byte order or game, and one
    // that is cut or damaged anywhere.
    static Result<MenuBlueprint> open(const std::string& path, const Game& game,
                                      FileSystem& files = systemFiles());

    const MenuOrigin& origin() const { return origin_; }
    const MenuTree& tree() const { return *tree_; }
    // Refuses a card abstraction with other buckets.
    Status madeOver(const AbstractionDescription& description) const;

    // The parts of 255 that each edge of a node has.
    std::span<const uint8_t> parts(int32_t node, size_t bucket) const;

private:
    MenuBlueprint(std::string path, MappedFile file)
        : path_(std::move(path)), file_(std::move(file)) {}
    Error error(const std::string& what) const { return {path_ + ": " + what}; }
    Status readHead(const Game& game);
    Status readTree(const Game& game, const std::string& menu, uint64_t hash);
    Status checkSize(uint64_t bytes, uint64_t nodes, uint32_t edges);
    Status checkBlocks(std::span<const uint64_t> checksums) const;
    Status checkSums() const;

    std::string path_;
    MappedFile file_;
    MenuOrigin origin_;
    std::unique_ptr<MenuTree> tree_;
    std::array<std::array<uint64_t, MAX_PLAYERS>, MAX_ROUNDS> starts_{}; // of round and seat
    std::span<const std::byte> parts_;
};

} // namespace tamarin
