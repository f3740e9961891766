// A lock on a directory between processes.
//
// An flock on an open descriptor of a small file that holds the owner's process number and host:
// the kernel frees it the moment its holder dies, so nobody ever has to remove a lock by hand.
#pragma once

#include "support/result.h"

#include <functional>
#include <string>

namespace tamarin {

class FileLock {
public:
    // Takes the lock at once or fails at once; the error names the holder's process and host.
    static Result<FileLock> take(const std::string& path);
    // Waits for it; false from keepWaiting (asked a few times a second) gives up with an error.
    static Result<FileLock> wait(const std::string& path, const std::function<bool()>& keepWaiting);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    ~FileLock(); // releases

private:
    explicit FileLock(int fd) : fd_(fd) {}
    int fd_ = -1;
};

} // namespace tamarin
