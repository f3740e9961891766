// Small files whose bytes are vouched for: a magic, a version, a payload and a checksum of it all.
//
//   bytes   field
//   8       what it is, "tmrnabst" and the like
//   4       version of the format
//   4       0x01020304, in the writer's byte order
//   8       length of the payload, P
//   P       the payload
//   8       checksum of all bytes before it
//
// A payload is written field by field and read back in the same order; arrays go with their length
// before them.
#pragma once

#include "support/result.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tamarin {

struct CheckedKind {
    std::string_view magic; // 8 bytes
    uint32_t version;       // the only one that is read
    const char* name;       // "a card abstraction": what a file without the magic is not
};

Status writeCheckedFile(const std::string& path, const CheckedKind& kind,
                        const std::string& payload);
// The payload. Refuses, in words, what is no such file, another version or byte order, and damage.
Result<std::string> readCheckedFile(const std::string& path, const CheckedKind& kind);

// Packer and Unpacker are called with one field after another, so that one list of fields serves
// both ways. A field is a number, an enumeration or an array of bytes.
template <class Field>
concept PlainField = std::integral<Field> || std::is_enum_v<Field>;

class Packer {
public:
    template <PlainField Field>
    void operator()(const Field& field) {
        bytes_.append(reinterpret_cast<const char*>(&field), sizeof field);
    }
    void operator()(const std::vector<uint8_t>& bytes) {
        (*this)(uint64_t{bytes.size()});
        bytes_.append(bytes.begin(), bytes.end());
    }
    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

// Reads what a Packer wrote. Past the end everything is zero and whole() is false, so that a reader
// asks once, after the last field. An enumeration may be any number: that is the reader's to judge.
class Unpacker {
public:
    explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

    template <PlainField Field>
    void operator()(Field& field) {
        field = Field{};
        if (const std::string_view bytes = next(sizeof field); !bytes.empty())
            std::memcpy(&field, bytes.data(), sizeof field);
    }
    void operator()(std::vector<uint8_t>& bytes) {
        uint64_t size = 0;
        (*this)(size);
        const std::string_view field = next(size);
        bytes.assign(field.begin(), field.end());
    }
    // Everything was there, and nothing is left.
    bool whole() const { return whole_ && bytes_.empty(); }

private:
    std::string_view next(uint64_t size) {
        if (size > bytes_.size())
            whole_ = false;
        const size_t length = whole_ ? static_cast<size_t>(size) : 0;
        const std::string_view field = bytes_.substr(0, length);
        bytes_.remove_prefix(length);
        return field;
    }

    std::string_view bytes_;
    bool whole_ = true;
};

} // namespace tamarin
