// A flag that is on for a scope and off, or as it was, behind it, also when an exception ends it.
#pragma once

namespace tamarin {

class FlagGuard {
public:
    enum class After { off, asBefore };

    FlagGuard(bool& flag, After after) : flag_(flag), after_(after == After::asBefore && flag) {
        flag = true;
    }
    ~FlagGuard() { flag_ = after_; }
    FlagGuard(const FlagGuard&) = delete;
    FlagGuard& operator=(const FlagGuard&) = delete;

private:
    bool& flag_;
    bool after_;
};

} // namespace tamarin
