#include "abstraction/work.h"

#include <new>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(ForEach, VisitsEachOnceWhateverTheThreads) {
    for (const int threads : {1, 3}) {
        Work work;
        work.threads = threads;
        std::vector<int> visits(1000);
        EXPECT_TRUE(forEach(work, visits.size(), [&](size_t i) { ++visits[i]; }));
        EXPECT_EQ(visits, std::vector<int>(1000, 1));
    }
}

TEST(ForEach, IsFalseWhenStopped) {
    Work work;
    work.threads = 2;
    work.stop = [] { return true; };
    std::atomic<size_t> visits{0};
    EXPECT_FALSE(forEach(work, 100'000, [&](size_t) { ++visits; }));
    EXPECT_LT(visits, 100'000U);
}

// An exception on a worker would end the process if it left the parallel region there.
TEST(ForEach, AnExceptionReachesTheCallerAndEndsTheWork) {
    for (const int threads : {1, 3}) {
        Work work;
        work.threads = threads;
        std::atomic<size_t> visits{0};
        EXPECT_THROW(forEach(work, 1'000'000,
                             [&](size_t i) {
                                 ++visits;
                                 if (i == 700)
                                     throw std::bad_alloc();
                             }),
                     std::bad_alloc);
        EXPECT_LT(visits, 1'000'000U);
        work.stop = []() -> bool { throw std::runtime_error("stop"); };
        EXPECT_THROW(forEach(work, 1000, [](size_t) {}), std::runtime_error);
        work.stop = nullptr;
        work.progress = [](uint64_t, uint64_t) { throw std::runtime_error("progress"); };
        EXPECT_THROW(forEach(work, 1000, [](size_t) {}), std::runtime_error);
    }
}

TEST(ForEach, ReportsTheEndWhoeverDidTheWork) {
    for (const size_t count : {1U, 65U, 1000U}) {
        Work work;
        work.threads = 3;
        uint64_t last = 0;
        work.progress = [&](uint64_t done, uint64_t total) {
            EXPECT_GE(done, last);
            EXPECT_EQ(total, count);
            last = done;
        };
        EXPECT_TRUE(forEach(work, count, [](size_t) {}));
        EXPECT_EQ(last, count);
    }
}

} // namespace
} // namespace tamarin::test
