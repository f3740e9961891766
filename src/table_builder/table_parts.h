// One pass over a large table that does not keep all of it in memory.
//
// A mapped file's pages count as this process's until they are given back, and the river's tables
// of doubles have a gigabyte each.
#pragma once

#include "abstraction/quantise.h"
#include "support/file.h"

#include <algorithm>
#include <cstddef>

namespace tamarin {

inline constexpr size_t tablePart = size_t{1} << 23; // entries: 64 MB of doubles

// body(begin, count) for parts of size entries, in order.
template <class Body>
void inParts(size_t size, const Body& body) {
    for (size_t begin = 0; begin < size; begin += tablePart)
        body(begin, std::min(tablePart, size - begin));
}

// rangeOf a file of doubles.
inline TableRange rangeOfFile(const MappedFile& file, int threads) {
    TableRange range;
    const auto entries = file.as<double>();
    inParts(entries.size(), [&](size_t begin, size_t count) {
        const TableRange part = rangeOf(entries.subspan(begin, count), threads);
        range.min = std::min(range.min, part.min);
        range.max = std::max(range.max, part.max);
        file.forgetPages();
    });
    return range;
}

} // namespace tamarin
