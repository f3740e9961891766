// A clock that is a second further at each look at it.
#pragma once

#include "support/clock.h"

namespace tamarin::test {

class SlowClock : public Clock {
public:
    TimePoint now() const override {
        time_ += std::chrono::seconds(1);
        return time_;
    }

private:
    mutable TimePoint time_{};
};

} // namespace tamarin::test
