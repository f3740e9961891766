// Counts the decisions that the strategy did not cover and were made by a simpler rule, and says so
// once when it first happens and once, with the count, when the match is over.
#pragma once

namespace tamarin {

class FallbackCount {
public:
    // rule: what decides instead, for the message.
    explicit FallbackCount(const char* rule) : rule_(rule) {}
    FallbackCount(const FallbackCount&) = delete;
    FallbackCount& operator=(const FallbackCount&) = delete;
    ~FallbackCount();

    void add();
    long count() const { return count_; }

private:
    const char* rule_;
    long count_ = 0;
};

} // namespace tamarin
