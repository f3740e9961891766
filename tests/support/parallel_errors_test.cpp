#include "support/parallel_errors.h"

#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(ParallelErrors, HasNothingToThrowWhenAllWentWell) {
    ParallelErrors errors;
    int runs = 0;
    errors.run([&] { ++runs; });
    errors.run([&] { ++runs; });
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(errors.met());
    EXPECT_NO_THROW(errors.rethrow());
}

TEST(ParallelErrors, ThrowsTheFirstAndSkipsWhatIsLeft) {
    ParallelErrors errors;
    errors.run([] { throw std::out_of_range("first"); });
    EXPECT_TRUE(errors.met());
    bool ran = false;
    errors.run([&] {
        ran = true;
        throw std::bad_alloc();
    });
    EXPECT_FALSE(ran);
    try {
        errors.rethrow();
        FAIL();
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "first");
    }
}

TEST(ParallelErrors, KeepsWhateverWasThrown) {
    ParallelErrors errors;
    errors.run([] { throw "text"; });
    EXPECT_THROW(errors.rethrow(), const char*);
}

// All throw at once: one is kept, whole.
TEST(ParallelErrors, KeepsOneOfManyThreads) {
    for (int round = 0; round < 200; ++round) {
        ParallelErrors errors;
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                for (++ready; ready < 4;) {
                }
                errors.run([t] { throw std::runtime_error("thread " + std::to_string(t)); });
            });
        for (std::thread& thread : threads)
            thread.join();
        try {
            errors.rethrow();
            FAIL();
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()).substr(0, 7), "thread ");
        }
    }
}

} // namespace
} // namespace tamarin::test
