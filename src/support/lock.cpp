#include "support/lock.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace tamarin {
namespace {

void pause(long milliseconds) {
    const timespec duration{milliseconds / 1000, milliseconds % 1000 * 1'000'000};
    nanosleep(&duration, nullptr);
}

Error failure(const std::string& path, const char* what) {
    return Error{path + ": could not " + what + ": " + std::generic_category().message(errno)};
}

std::string hostName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0 || name[0] == '\0')
        return "localhost";
    return name;
}

// "process PID on HOST", from the lock file. The owner writes its name just after it has taken the
// lock, so the name may be absent, or that of an owner that died: then look again a little later.
std::string holder(int fd) {
    constexpr int attempts = 100; // half a second, on a machine too busy to let the owner write
    for (int attempt = 0;; ++attempt) {
        char text[512];
        const ssize_t size = pread(fd, text, sizeof text - 1, 0);
        if (size > 0) {
            text[size] = '\0';
            char* host = nullptr;
            const long pid = std::strtol(text, &host, 10);
            std::string name(host + (*host == ' '));
            if (const auto end = name.find('\n'); end != std::string::npos)
                name.resize(end);
            const bool dead = name == hostName() && pid > 0 &&
                              kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
            if (pid > 0 && (!dead || attempt == attempts))
                return "process " + std::to_string(pid) + " on " + name;
        }
        if (attempt == attempts)
            return "another process";
        pause(5);
    }
}

// 0 taken, EWOULDBLOCK held by another, else an errno.
int tryLock(int fd) {
    while (flock(fd, LOCK_EX | LOCK_NB) != 0)
        if (errno != EINTR)
            return errno;
    return 0;
}

bool stillNamed(int fd, const std::string& path) {
    struct stat held = {};
    struct stat named = {};
    return fstat(fd, &held) == 0 && stat(path.c_str(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

// The name is for people only, so a disk too full to hold it does not cost the lock.
void writeHolder(int fd) {
    const std::string text = std::to_string(getpid()) + " " + hostName() + "\n";
    if (ftruncate(fd, 0) != 0 || pwrite(fd, text.data(), text.size(), 0) < 0)
        return;
}

} // namespace

Result<FileLock> FileLock::wait(const std::string& path, const std::function<bool()>& keepWaiting) {
    for (;;) {
        const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (fd < 0) {
            if (errno == EINTR)
                continue;
            return failure(path, "open the lock file");
        }
        FileLock lock(fd);
        int error;
        while ((error = tryLock(fd)) == EWOULDBLOCK) {
            if (!keepWaiting || !keepWaiting())
                return Error{path + ": locked by " + holder(fd) +
                             ": wait until it is done, or stop it"};
            pause(100);
        }
        if (error != 0) {
            errno = error;
            return failure(path, "lock");
        }
        // Somebody may have removed or replaced the file while this process waited: a lock on a
        // file without a name would exclude nobody.
        if (!stillNamed(fd, path))
            continue;
        writeHolder(fd);
        return lock;
    }
}

Result<FileLock> FileLock::take(const std::string& path) {
    return wait(path, nullptr);
}

FileLock::FileLock(FileLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
}

// The file stays: to remove it would let a third process lock a new file of the same name while a
// second still waits on the old one.
FileLock::~FileLock() {
    if (fd_ >= 0)
        close(fd_);
}

} // namespace tamarin
