// A value or an error, for everything that meets the outside world.
//
// Bad input (text, files, network) is reported by value: what was wrong, where, and what to do, in
// one line without a line end. A result cannot be dropped by accident: the type is [[nodiscard]].
#pragma once

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace tamarin {

// One line for a person: what was wrong, where (file, line, offset), and what to do about it.
struct Error {
    std::string message;
};

template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : held_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : held_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return held_.index() == 0; }
    explicit operator bool() const { return ok(); }

    // The value; only when ok().
    T& value() {
        assert(ok());
        return *std::get_if<0>(&held_);
    }
    const T& value() const {
        assert(ok());
        return *std::get_if<0>(&held_);
    }
    T& operator*() { return value(); }
    const T& operator*() const { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    // The message; only when not ok().
    const std::string& error() const {
        assert(!ok());
        return std::get_if<1>(&held_)->message;
    }

private:
    std::variant<T, Error> held_;
};

// Success or an error.
class [[nodiscard]] Status {
public:
    Status() = default;
    Status(Error error) : error_(std::move(error.message)), ok_(false) {}

    bool ok() const { return ok_; }
    explicit operator bool() const { return ok_; }
    const std::string& error() const {
        assert(!ok_);
        return error_;
    }

private:
    std::string error_;
    bool ok_ = true;
};

} // namespace tamarin
