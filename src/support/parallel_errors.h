// Exceptions out of parallel regions.
//
// An exception that leaves the body of an OpenMP region, a loop's or a task's, ends the process at
// once; memory that runs out on a worker must instead reach the caller as it would from a plain
// loop. So each body that can throw runs through one of these:
//
//     ParallelErrors errors;
//     #pragma omp parallel for
//     for (size_t i = 0; i < count; ++i)
//         errors.run([&] { work(i); });
//     errors.rethrow();
#pragma once

#include <atomic>
#include <exception>

namespace tamarin {

class ParallelErrors {
public:
    // Runs body() and keeps the first exception of all threads. Once there is one, what is left of
    // the region's work is skipped. Any thread.
    template <class Body>
    void run(const Body& body) noexcept {
        if (met())
            return;
        try {
            body();
        } catch (...) {
            if (!met_.exchange(true))
                first_ = std::current_exception();
        }
    }

    // Whether there is one, for bodies that are long or wait for each other. Any thread.
    bool met() const noexcept { return met_.load(std::memory_order_relaxed); }

    // Throws the exception kept, if there is one. To be called after the region.
    void rethrow() const {
        if (first_)
            std::rethrow_exception(first_);
    }

private:
    std::atomic<bool> met_{false};
    std::exception_ptr first_;
};

} // namespace tamarin
