// A library to be loaded in front of the C library: closing a file named unclosable.log fails, as a
// file system on another machine may let it.
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" int close(int fd) {
    char link[40];
    char target[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t size = ::readlink(link, target, sizeof target);
    const int result = static_cast<int>(::syscall(SYS_close, fd));
    if (size < 0 ||
        !std::string_view(target, static_cast<size_t>(size)).ends_with("/unclosable.log"))
        return result;
    errno = EIO;
    return -1;
}
