#include "abstraction/table_contents.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <omp.h>

namespace tamarin {

namespace {

constexpr size_t partBytes = size_t{1} << 26;

std::string textOf(double entry) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.17g", entry);
    return text.data();
}

// Written so that what is no number is within nothing.
template <class T>
bool isWithin(T entry, T least, T most) {
    return entry >= least && entry <= most;
}

template <class T>
bool allWithin(std::span<const T> part, T least, T most, int threads) {
    const T* const entries = part.data();
    const size_t size = part.size();
    uint8_t wrong = 0;
    // A small table is not worth a second thread.
    [[maybe_unused]] const int team = size < 100'000 ? 1
                                      : threads > 0  ? threads
                                                     : omp_get_max_threads();
    // Nothing in here throws.
#pragma omp parallel for simd reduction(| : wrong) num_threads(team)
    for (size_t i = 0; i < size; ++i)
        wrong |= static_cast<uint8_t>(!isWithin(entries[i], least, most));
    return wrong == 0;
}

template <class T>
std::string problemOf(std::span<const T> table, const EntryLimits& limits, int threads,
                      const std::function<void()>& partDone) {
    const auto least = static_cast<T>(limits.least);
    const auto most = static_cast<T>(limits.most);
    constexpr size_t partSize = partBytes / sizeof(T);
    bool same = table.size() > 1;
    for (size_t begin = 0; begin < table.size(); begin += partSize) {
        const auto part = table.subspan(begin, std::min(partSize, table.size() - begin));
        if (!allWithin(part, least, most, threads)) {
            const auto wrong = std::find_if(part.begin(), part.end(),
                                            [&](T entry) { return !isWithin(entry, least, most); });
            const size_t hand = begin + static_cast<size_t>(wrong - part.begin());
            return std::string("holds ") + limits.entry + ' ' + textOf(table[hand]) + " at hand " +
                   std::to_string(hand) + " (byte " + std::to_string(hand * sizeof(T)) + "), not " +
                   limits.range;
        }
        // Ends at the first other entry, which in a good table is among the first.
        same = same &&
               std::all_of(part.begin(), part.end(), [&](T entry) { return entry == table[0]; });
        if (partDone)
            partDone();
    }
    return same ? std::string("holds nothing but ") + limits.entry + ' ' + textOf(table[0]) : "";
}

} // namespace

std::string problemOfEntries(std::span<const double> table, const EntryLimits& limits, int threads,
                             const std::function<void()>& partDone) {
    return problemOf(table, limits, threads, partDone);
}
std::string problemOfEntries(std::span<const uint8_t> table, const EntryLimits& limits, int threads,
                             const std::function<void()>& partDone) {
    return problemOf(table, limits, threads, partDone);
}

} // namespace tamarin
