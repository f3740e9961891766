// Large arrays that come and go whole.
//
// Taken from the system as zero pages and, where it offers them, as huge ones: tables are filled by
// index, in no order, and with small pages the translation of addresses would cost more than the
// work.
#pragma once

#include "support/result.h"

#include <cstddef>
#include <utility>

namespace tamarin {

// Null when the system has no memory of that size; zeroed.
void* takePages(size_t bytes);
void releasePages(void* address, size_t bytes);

template <class T>
class LargeBuffer {
public:
    LargeBuffer() = default;
    LargeBuffer(LargeBuffer&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    LargeBuffer& operator=(LargeBuffer&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~LargeBuffer() { releasePages(data_, size_ * sizeof(T)); }

    // what: for the message ("the river's win counts").
    static Result<LargeBuffer> take(size_t size, const char* what) {
        LargeBuffer buffer;
        buffer.data_ = static_cast<T*>(takePages(size * sizeof(T)));
        if (buffer.data_ == nullptr)
            return Error{"no memory for " + std::string(what) + " (" +
                         std::to_string(size * sizeof(T)) + " bytes)"};
        buffer.size_ = size;
        return buffer;
    }

    T* data() { return data_; }
    const T* data() const { return data_; }
    size_t size() const { return size_; }
    T& operator[](size_t i) { return data_[i]; }
    const T& operator[](size_t i) const { return data_[i]; }

private:
    T* data_ = nullptr;
    size_t size_ = 0;
};

} // namespace tamarin
