// A number for many bytes, so that a long result can be pinned in a line.
#pragma once

#include <cstdint>
#include <string_view>

namespace tamarin {

inline uint64_t fnv1a(std::string_view bytes) {
    uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    return hash;
}

} // namespace tamarin
