#include "support/clock.h"

#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Clock, GoesForward) {
    const TimePoint first = steadyClock().now();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const TimePoint second = steadyClock().now();
    EXPECT_GE(seconds(second - first), 0.002);
    EXPECT_LT(seconds(second - first), 10.0);
}

TEST(Clock, IsOneForTheProcess) {
    EXPECT_EQ(&steadyClock(), &steadyClock());
}

TEST(Clock, HeldDoesNotSeeWhatIsDone) {
    struct SetClock : Clock {
        TimePoint at{};
        TimePoint now() const override { return at; }
    };
    SetClock clock;
    HeldClock held(clock);
    const TimePoint start = held.now();
    clock.at += std::chrono::seconds(3);
    held.hold([&] { clock.at += std::chrono::seconds(40); });
    EXPECT_EQ(seconds(held.now() - start), 3.0);
    clock.at += std::chrono::seconds(1);
    held.hold([&] { clock.at += std::chrono::seconds(5); });
    EXPECT_EQ(seconds(held.now() - start), 4.0);
}

TEST(Clock, CountsSeconds) {
    EXPECT_EQ(seconds(std::chrono::milliseconds(1500)), 1.5);
}

} // namespace
} // namespace tamarin::test
