// A clock set by hand and a stream that can be read back, for tests of progress displays.
#pragma once

#include "support/clock.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tamarin::test {

class ManualClock : public Clock {
public:
    TimePoint now() const override { return time; }
    void advance(double by) {
        time += std::chrono::duration_cast<Duration>(std::chrono::duration<double>(by));
    }
    TimePoint time{std::chrono::hours(1)};
};

// A stream into memory; not a terminal.
class MemoryStream {
public:
    MemoryStream() : stream_(open_memstream(&text_, &size_)) {}
    ~MemoryStream() {
        fclose(stream_);
        std::free(text_);
    }
    FILE* stream() { return stream_; }
    std::string text() {
        fflush(stream_);
        return {text_, size_};
    }

private:
    char* text_ = nullptr;
    size_t size_ = 0;
    FILE* stream_;
};

} // namespace tamarin::test
