// Nothing on std::cout for as long as the object lives.
//
// Training and loaders of the fixed interface say on standard output what they do. A command that
// calls them needs standard output for its own results. One thread.
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
