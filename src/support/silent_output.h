// Nothing on std::cout for as long as the object lives.
//
// The solver (CFR) says on standard output how its training gets on, and its fixed interface has no
// place for another stream. Whoever trains with it and needs standard output for results of his own
// wraps it in one of these. The card tables are told where to write instead (EquityTables). One
// thread: std::cout is the whole process's.
#pragma once

#include <iostream>

namespace tamarin {

class SilentOutput {
public:
    SilentOutput() : before_(std::cout.rdbuf(nullptr)) {}
    ~SilentOutput() {
        std::cout.rdbuf(before_);
        std::cout.clear(); // writing to no buffer is an error of the stream
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

private:
    std::streambuf* before_;
};

} // namespace tamarin
