// Checkpoints made to lie, with the checksums made right again. The checksum is computed here once
// more, so that the one in the program cannot change unnoticed.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace tamarin::test {

inline constexpr size_t checkpointHeadSize = 40;
inline constexpr size_t checkpointConfigLengthAt = 24;
inline constexpr size_t checkpointPayloadLengthAt = 32;

template <class T>
T numberAt(std::string_view bytes, size_t at) {
    T number{};
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

template <class T>
void putNumber(std::string& bytes, size_t at, T number) {
    std::memcpy(bytes.data() + at, &number, sizeof number);
}

// Of some whole words; an unfinished one at the end is filled up with zeros.
inline uint64_t plainChecksum(std::string words, uint64_t length) {
    words.resize((words.size() + 7) / 8 * 8);
    uint64_t chains[4] = {1, 2, 3, 4};
    for (size_t i = 0; i < words.size() / 8; ++i)
        chains[i % 4] =
            std::rotl((chains[i % 4] ^ numberAt<uint64_t>(words, 8 * i)) * 0x9E3779B97F4A7C15U, 29);
    for (const uint64_t chain : chains)
        length = std::rotl((length ^ chain) * 0xD6E8FEB86659FD93U, 31);
    return length;
}

// With both checksums right, where the length of the configuration leaves room for them.
inline std::string mended(std::string bytes) {
    const auto configLength = numberAt<uint64_t>(bytes, checkpointConfigLengthAt);
    if (configLength > bytes.size() - checkpointHeadSize - 16)
        return bytes;
    const size_t first = checkpointHeadSize + configLength;
    const size_t last = bytes.size() - 8;
    std::string words = bytes.substr(0, first);
    putNumber(bytes, first, plainChecksum(words, first));
    words.resize((first + 7) / 8 * 8); // the configuration's last word counts filled up
    words += bytes.substr(first, last - first);
    putNumber(bytes, last, plainChecksum(words, last));
    return bytes;
}

} // namespace tamarin::test
