// The file that a checkpoint of any kind is. Everything is native little-endian:
//
//   bytes   field
//   8       what it is a checkpoint of, "tmrnckpt" or "tmrnhold"
//   4       version of the format
//   4       0x01020304, in the writer's byte order
//   8       iteration
//   8       length of the configuration text, L
//   8       length of the payload, P
//   L       the configuration: one "field = value" a line, so that a refusal can name the field
//   8       checksum of all bytes before it: damage is not taken for another configuration
//   P       the payload, whole words of 8 bytes
//   8       checksum of all bytes before it
//
// Three-player limit hold'em has a payload of 4.7 GB, so it is written from and read into its
// place, and the checksum runs at memory speed. Threads are no part of a configuration: the numbers
// do not depend on them.
#pragma once

#include "game/definition.h"
#include "support/file.h"
#include "support/word_checksum.h"

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace tamarin {

struct CheckpointKind {
    std::string_view magic; // 8 bytes
    uint32_t version;       // the only one that is read
    const char* name;       // "a checkpoint": what a file without the magic is not
};

// The fields of a configuration that say which game it is: "game.numPlayers = 3" and so on.
std::string gameConfig(const Game& game);

// Writes a checkpoint whole, or leaves what was there. The parts of the payload follow each other.
Status writeCheckpointFile(const std::string& path, const CheckpointKind& kind,
                           const std::string& config, uint64_t iteration,
                           std::initializer_list<std::span<const std::byte>> payload,
                           FileSystem& files = systemFiles());

// A checkpoint, mapped.
class CheckpointFile {
public:
    // Refuses, in words: what is no checkpoint of this kind, one of an older or newer version or of
    // another byte order, one whose lengths are not the file's, and a damaged head.
    static Result<CheckpointFile> open(const std::string& path, const CheckpointKind& kind,
                                       FileSystem& files = systemFiles());

    uint64_t iteration() const { return iteration_; }
    uint64_t payloadSize() const { return payload_.size(); }

    // Refuses one that was made with another configuration, naming the first field that differs,
    // its value there and the one wanted here.
    Status madeWith(const std::string& config) const;

    // Fills the parts, one after the other, with the payload. Refuses one of another size, or that
    // its checksum does not fit, and leaves the parts alone then: numbers in use are replaced by
    // sound ones only, so it goes through the file twice.
    Status read(std::initializer_list<std::span<std::byte>> parts) const;

private:
    CheckpointFile(std::string path, MappedFile file)
        : path_(std::move(path)), file_(std::move(file)) {}
    Error error(const std::string& what) const { return {path_ + ": " + what}; }

    std::string path_;
    MappedFile file_;
    uint64_t iteration_ = 0;
    std::string_view config_;
    std::span<const std::byte> payload_;
    WordChecksum checksum_; // of what stands before the payload
};

} // namespace tamarin
