// Progress of long work on standard error: a bar that is redrawn on a terminal, a plain line every
// few seconds elsewhere, both with the rate and the time left.
#pragma once

#include "support/clock.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace tamarin {

class Progress {
public:
    // what: "Playing hands"; unit: "hands"; total 0 when unknown.
    Progress(std::string what, std::string unit, uint64_t total, FILE* out = stderr,
             const Clock& clock = steadyClock());
    ~Progress(); // ends the line on a terminal

    // Work taken up again where an earlier run stopped: rate and time left then count only what
    // this run does. Before the first update.
    void resumeAt(uint64_t done);
    // Tells how far the work is; cheap enough to call often (it looks at the clock and seldom
    // prints). One thread only. note is shown at the end of the line.
    void update(uint64_t done, const std::string& note = {});
    // Prints the final state with the total time and average rate, once.
    void finish(uint64_t done, const std::string& note = {});

private:
    void print(uint64_t done, const std::string& note, bool last);

    std::string what_;
    std::string unit_;
    uint64_t total_;
    FILE* out_;
    const Clock& clock_;
    bool terminal_;
    bool drawn_ = false;
    bool finished_ = false;
    uint64_t resumedAt_ = 0;
    TimePoint start_;
    TimePoint lastPrint_;
};

// "1.2 s", "3 min 20 s", "2 h 05 min", "3 d 04 h".
std::string describeDuration(double seconds);
// "12 bytes", "12.3 MB", "10.5 GB" (powers of ten).
std::string describeBytes(uint64_t bytes);
// "1,286,792".
std::string describeCount(uint64_t count);

} // namespace tamarin
