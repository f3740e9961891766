// Files of doubles, written side by side.
#pragma once

#include "abstraction/work.h"
#include "support/file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace tamarin {

// The two tables that one pass makes: against one and two opponents, of seat 0 and 1.
struct TableOutput {
    size_t which;
    AtomicFile file;
};

// body(output) for each of at most two, on a thread of its own where there are threads.
template <class Body>
Status onEachOutput(std::vector<TableOutput>& outputs, const Work& work, const Body& body) {
    std::array<Status, 2> results;
    assert(outputs.size() <= results.size());
    ParallelErrors errors;
#pragma omp parallel for schedule(static, 1)                                                       \
    num_threads(std::min(work.threadCount(), static_cast <int>(outputs.size())))
    for (size_t i = 0; i < outputs.size(); ++i)
        errors.run([&] { results[i] = body(outputs[i]); });
    errors.rethrow();
    for (Status& result : results)
        if (!result)
            return std::move(result);
    return {};
}

// Appends entry(i) for every i below count.
template <class Entry>
Status appendEntries(AtomicFile& file, size_t count, const Work& work, const Entry& entry) {
    constexpr size_t chunk = size_t{1} << 17; // a megabyte at a time
    std::vector<double> entries(std::min(count, chunk));
    for (size_t begin = 0; begin < count; begin += chunk) {
        if (work.shouldStop())
            return stopped();
        const size_t size = std::min(chunk, count - begin);
        for (size_t i = 0; i < size; ++i)
            entries[i] = entry(begin + i);
        if (Status written = file.write(entries.data(), size * sizeof(double)); !written)
            return written;
    }
    return {};
}

} // namespace tamarin
