// How long work in this room is shared out, watched and stopped.
#pragma once

#include "support/parallel_errors.h"
#include "support/result.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <omp.h>

namespace tamarin {

struct Work {
    int threads = 0; // 0: as many as there are cores
    // Told now and then how much of the step is done; on the thread that started the work.
    std::function<void(uint64_t done, uint64_t total)> progress;
    // Asked often, on any thread; true ends the work as soon as possible, with the error stopped().
    std::function<bool()> stop;

    int threadCount() const { return threads > 0 ? threads : omp_get_max_threads(); }
    bool shouldStop() const { return stop && stop(); }
    void report(uint64_t done, uint64_t total) const {
        if (progress)
            progress(done, total);
    }
};

inline Error stopped() {
    return Error{"stopped"};
}

// body(i) for every i below count, on all threads, in no fixed order. Reports how many of count are
// done, at the end all. False when the work was stopped.
template <class Body>
bool forEach(const Work& work, size_t count, const Body& body) {
    std::atomic<size_t> done{0};
    std::atomic<bool> stopping{false};
    ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 16) num_threads(work.threadCount())
    for (size_t i = 0; i < count; ++i) {
        if (stopping.load(std::memory_order_relaxed))
            continue;
        errors.run([&] {
            body(i);
            const size_t now = done.fetch_add(1, std::memory_order_relaxed) + 1;
            if (i % 64 == 0) {
                if (work.shouldStop())
                    stopping = true;
                if (omp_get_thread_num() == 0)
                    work.report(now, count);
            }
        });
    }
    errors.rethrow();
    if (!stopping)
        work.report(count, count);
    return !stopping;
}

} // namespace tamarin
