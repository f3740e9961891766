// A checksum for files of gigabytes, at memory speed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tamarin {

// A 64-bit checksum over whole words, four chains at a time; the last bytes of a call count as a
// padded word. Any changed bit changes a chain for good, since every step is a bijection of it.
class WordChecksum {
public:
    void add(std::span<const std::byte> bytes);
    uint64_t value() const;

private:
    std::array<uint64_t, 4> chains_ = {1, 2, 3, 4};
    size_t next_ = 0;
    uint64_t length_ = 0;
};

} // namespace tamarin
