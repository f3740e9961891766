#include "table_builder/sampling_estimate.h"

#include "abstraction/sparse_tables.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Estimate = PlayingDirectory;

// Goes on by a tenth of a second whenever it is asked.
struct TickingClock : Clock {
    TimePoint now() const override {
        time += std::chrono::milliseconds(100);
        return time;
    }
    mutable TimePoint time{};
};

TEST_F(Estimate, ScalesWhatASliceTook) {
    const SamplingEstimate estimate = estimateSampling(".", 0.35, TickingClock());
    double sum = 0;
    for (size_t r = 0; r < estimate.rounds.size(); ++r) {
        EXPECT_EQ(estimate.rounds[r].hands, 4U);
        EXPECT_NEAR(estimate.rounds[r].handSeconds, 0.1, 1e-9);
        EXPECT_NEAR(estimate.rounds[r].roundSeconds, 0.1 * static_cast<double>(roundSizes[r]),
                    1e-3);
        sum += estimate.rounds[r].roundSeconds;
    }
    EXPECT_EQ(estimate.seconds(), sum);
}

TEST(ProcessorClock, CountsWorkAndNotSleep) {
    const TimePoint start = processorClock().now();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_LT(seconds(processorClock().now() - start), 0.1);
    uint64_t sum = 0;
    while (seconds(processorClock().now() - start) < 0.11)
        ++sum;
    EXPECT_GT(sum, 0U);
}

} // namespace
} // namespace tamarin::test
