// Time that only goes forward.
//
// Deadlines and durations come from the steady clock alone, so setting the wall clock cannot cost
// anybody a match. Tests put a clock of their own in its place.
#pragma once

#include <chrono>

namespace tamarin {

using Duration = std::chrono::nanoseconds;
using TimePoint = std::chrono::steady_clock::time_point;

class Clock {
public:
    virtual ~Clock() = default;
    virtual TimePoint now() const { return std::chrono::steady_clock::now(); }
};

// The machine's steady clock; lives for the whole process.
const Clock& steadyClock();

// A clock that does not see what is done while it is held.
class HeldClock : public Clock {
public:
    explicit HeldClock(const Clock& clock = steadyClock()) : clock_(clock) {}
    TimePoint now() const override { return clock_.now() - held_; }

    template <class Body>
    void hold(const Body& body) {
        const TimePoint from = clock_.now();
        body();
        held_ += clock_.now() - from;
    }

private:
    const Clock& clock_;
    Duration held_{0};
};

inline double seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

} // namespace tamarin
