// A file for readers that want a name, kept off the disk.
#pragma once

#include "fuzz/fuzz.h"

#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace tamarin {

// Holds the bytes; the name is good while the object lives.
class MemoryFile {
public:
    MemoryFile(const void* data, size_t size) : fd_(memfd_create("fuzz", 0)) {
        expect(fd_ >= 0 && write(fd_, data, size) == static_cast<ssize_t>(size), "memory is there");
    }
    ~MemoryFile() { close(fd_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string name() const { return "/proc/self/fd/" + std::to_string(fd_); }

private:
    int fd_;
};

} // namespace tamarin
