// A number for many bytes, so that a long result can be pinned in a line.
#pragma once

#include "support/fnv.h"

#include <cstdint>
#include <string_view>

namespace tamarin {

inline uint64_t fnv1a(std::string_view bytes) {
    Fnv1a hash;
    hash.add(bytes);
    return hash.value();
}

} // namespace tamarin
