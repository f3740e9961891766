#include "support/file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <signal.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <climits>

namespace tamarin {
namespace {

constexpr size_t bufferSize = size_t{1} << 18;
// The system would keep gigabytes for the sync at the end, which then waits while nothing else is
// done; so it is asked to begin as soon as there is so much.
constexpr uint64_t writtenAtATime = uint64_t{1} << 24;

// Repeats a call as long as a signal interrupts it.
template <class Call>
auto uninterrupted(Call call) {
    for (;;) {
        const auto outcome = call();
        if (outcome >= 0 || errno != EINTR)
            return outcome;
    }
}

std::string message(const std::string& path, const char* what, int cause) {
    std::string text = path + ": could not " + what + ": " + std::generic_category().message(cause);
    if (cause == ENOSPC || cause == EDQUOT)
        text += ": free some space and start again";
    else if (cause == EFBIG)
        text += ": raise the limit on file sizes and start again";
    return text;
}

std::string directoryOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string baseOf(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

// The path with symbolic links in its last component followed, so that the file behind a link is
// replaced and not the link. Links that go round in circles are left for open() to refuse.
std::string followLinks(std::string path) {
    for (int depth = 0; depth < 40; ++depth) {
        char link[PATH_MAX];
        const ssize_t size = ::readlink(path.c_str(), link, sizeof link);
        if (size <= 0)
            break;
        const std::string to(link, static_cast<size_t>(size));
        path = to[0] == '/' ? to : directoryOf(path) + "/" + to;
    }
    return path;
}

// The PID of a name BASE.tmp.PID.N, or 0 for any other name.
pid_t ownerOf(const char* name, const std::string& base) {
    const std::string prefix = base + ".tmp.";
    if (std::strncmp(name, prefix.c_str(), prefix.size()) != 0)
        return 0;
    const char* at = name + prefix.size();
    const size_t pidDigits = std::strspn(at, "0123456789");
    if (pidDigits == 0 || pidDigits > 9 || at[pidDigits] != '.')
        return 0;
    const char* number = at + pidDigits + 1;
    const size_t digits = std::strspn(number, "0123456789");
    return digits > 0 && number[digits] == '\0' ? static_cast<pid_t>(std::atol(at)) : 0;
}

// This process's number counts as dead here: after a restart in a container it is often the same
// one, and a temporary file that really is ours holds its lock.
bool mayBeDead(pid_t owner) {
    return owner == ::getpid() || (::kill(owner, 0) != 0 && errno == ESRCH);
}

// Removes the temporary files of this target that nobody writes any more. Two signs must agree: the
// process number is free, and the file's lock can be had. The lock speaks for a writer in another
// container, whose process number means nothing here. Best effort: what fails is left for next
// time.
void removeStale(const std::string& target, FileSystem& files) {
    const std::string directory = directoryOf(target);
    const std::string base = baseOf(target);
    DIR* entries = ::opendir(directory.c_str());
    if (!entries)
        return;
    while (const dirent* entry = ::readdir(entries)) {
        const pid_t owner = ownerOf(entry->d_name, base);
        if (owner <= 0 || !mayBeDead(owner))
            continue;
        const std::string path = directory + "/" + entry->d_name;
        const int fd = files.open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0);
        if (fd < 0)
            continue;
        struct stat about = {};
        if (files.fstat(fd, &about) == 0 && S_ISREG(about.st_mode) &&
            files.flock(fd, LOCK_EX | LOCK_NB) == 0)
            files.unlink(path.c_str());
        files.close(fd);
    }
    ::closedir(entries);
}

// Two threads: between the making of a temporary file and its lock, no other may look for stale
// ones.
std::mutex& temporariesMutex() {
    static std::mutex mutex;
    return mutex;
}

std::atomic<unsigned> nextTemporary{0};

} // namespace

struct AtomicFile::Body {
    FileSystem& files;
    std::string path;      // as the caller named it
    std::string target;    // links followed
    std::string temporary; // empty: written in place, or already gone
    bool inPlace = false;
    bool finished = false;             // written, synced and closed
    std::optional<mode_t> permissions; // of the file that is replaced
    int fd = -1;
    // A second descriptor, for the lock alone: it must hold until the rename, after the close.
    int lockFd = -1;
    size_t used = 0;
    std::unique_ptr<std::byte[]> buffer;
    uint64_t written = 0;
    uint64_t onItsWay = 0; // of that
    std::string error;

    Body(FileSystem& calls, const std::string& name) : files(calls), path(name) {}

    ~Body() { giveUp(); }

    void giveUp() {
        if (fd >= 0)
            files.close(std::exchange(fd, -1));
        if (!temporary.empty())
            uninterrupted([&] { return files.unlink(temporary.c_str()); });
        temporary.clear();
        unlock();
    }

    void unlock() {
        if (lockFd >= 0)
            files.close(std::exchange(lockFd, -1));
    }

    // Failures of the lock itself do not matter: where a file system has none, nobody can take one
    // to remove the file either, and the process number protects it.
    bool lock() {
        const int flags = O_RDONLY | O_CLOEXEC;
        lockFd = uninterrupted([&] { return files.open(temporary.c_str(), flags, 0); });
        if (lockFd < 0)
            return false;
        uninterrupted([&] { return files.flock(lockFd, LOCK_EX | LOCK_NB); });
        return true;
    }

    Status fail(const char* what, int cause) {
        error = message(path, what, cause);
        giveUp();
        return Error{error};
    }

    Status writeAll(const std::byte* data, size_t size) {
        while (size > 0) {
            const ssize_t count = uninterrupted([&] { return files.write(fd, data, size); });
            if (count < 0)
                return fail("write", errno);
            if (count == 0) // not an error of its own, but repeated for ever it would hang
                return fail("write", ENOSPC);
            data += count;
            size -= static_cast<size_t>(count);
            written += static_cast<uint64_t>(count);
        }
        if (!inPlace && written - onItsWay >= writtenAtATime) {
            files.startWriting(fd, onItsWay, written - onItsWay);
            onItsWay = written;
        }
        return {};
    }

    Status flush() {
        Status status = writeAll(buffer.get(), used);
        used = 0;
        return status;
    }

    Status syncDirectory() {
        const std::string directory = directoryOf(target);
        const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
        const int handle = uninterrupted([&] { return files.open(directory.c_str(), flags, 0); });
        if (handle < 0)
            return fail("open its directory", errno);
        const int outcome = uninterrupted([&] { return files.fsync(handle); });
        const int cause = errno;
        files.close(handle);
        // EINVAL: a file system that has no such thing as syncing a directory.
        if (outcome != 0 && cause != EINVAL)
            return fail("sync its directory", cause);
        return {};
    }
};

AtomicFile::AtomicFile(std::unique_ptr<Body> body) : body_(std::move(body)) {}
AtomicFile::AtomicFile(AtomicFile&& other) noexcept = default;
AtomicFile& AtomicFile::operator=(AtomicFile&& other) noexcept = default;
AtomicFile::~AtomicFile() = default;

const std::string& AtomicFile::path() const {
    return body_->path;
}

Result<AtomicFile> AtomicFile::create(const std::string& path, FileSystem& files, mode_t mode) {
    auto body = std::make_unique<Body>(files, path);
    body->target = followLinks(path);
    const char* const target = body->target.c_str();

    struct stat about = {};
    const bool exists = uninterrupted([&] { return files.stat(target, &about); }) == 0;
    if (!exists && errno != ENOENT)
        return Error{message(path, "examine", errno)};
    if (exists && S_ISDIR(about.st_mode))
        return Error{path + ": could not write: it is a directory"};
    body->inPlace = exists && !S_ISREG(about.st_mode);
    body->buffer = std::make_unique_for_overwrite<std::byte[]>(bufferSize);

    if (body->inPlace) {
        const int flags = O_WRONLY | O_TRUNC | O_CLOEXEC;
        body->fd = uninterrupted([&] { return files.open(target, flags, 0); });
        if (body->fd < 0)
            return Error{message(path, "open", errno)};
        return AtomicFile(std::move(body));
    }
    if (exists) {
        body->permissions = about.st_mode & 07777U;
        mode = (*body->permissions & 0777U) | 0600U; // at no moment more than the others may read
    }

    const std::lock_guard guard(temporariesMutex());
    removeStale(body->target, files);
    for (;;) {
        const std::string name = body->target + ".tmp." + std::to_string(::getpid()) + "." +
                                 std::to_string(nextTemporary.fetch_add(1));
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
        body->fd = uninterrupted([&] { return files.open(name.c_str(), flags, mode); });
        if (body->fd >= 0) {
            body->temporary = name;
            break;
        }
        if (errno != EEXIST)
            return Error{message(path, "make a temporary file beside it", errno)};
    }
    if (!body->lock())
        return Error{message(path, "open its temporary file", errno)};
    return AtomicFile(std::move(body));
}

Status AtomicFile::write(const void* data, size_t size) {
    Body& body = *body_;
    if (!body.error.empty())
        return Error{body.error};
    if (body.fd < 0)
        return Error{body.path + ": could not write: the file is already closed"};
    const auto* bytes = static_cast<const std::byte*>(data);
    if (size >= bufferSize - body.used) {
        if (Status status = body.flush(); !status)
            return status;
        if (size >= bufferSize)
            return body.writeAll(bytes, size);
    }
    if (size > 0)
        std::memcpy(body.buffer.get() + body.used, bytes, size);
    body.used += size;
    return {};
}

Status AtomicFile::finish() {
    Body& body = *body_;
    if (!body.error.empty())
        return Error{body.error};
    if (body.fd < 0)
        return Error{body.path + ": could not write: the file is already closed"};
    if (Status status = body.flush(); !status)
        return status;
    // Where a file system knows no permissions there are none to keep.
    if (body.permissions)
        uninterrupted([&] { return body.files.fchmod(body.fd, *body.permissions); });
    // A device or a pipe may have nothing to sync.
    if (uninterrupted([&] { return body.files.fsync(body.fd); }) != 0 &&
        !(body.inPlace && (errno == EINVAL || errno == EROFS)))
        return body.fail("sync", errno);
    // After EINTR the descriptor is closed all the same, and its data is on the disk already.
    if (body.files.close(std::exchange(body.fd, -1)) != 0 && errno != EINTR)
        return body.fail("close", errno);
    body.finished = true;
    return {};
}

Status AtomicFile::commit() {
    Body& body = *body_;
    if (!body.finished)
        if (Status status = finish(); !status)
            return status;
    body.finished = false;
    if (body.inPlace)
        return {};
    const char* const temporary = body.temporary.c_str();
    if (uninterrupted([&] { return body.files.rename(temporary, body.target.c_str()); }) != 0)
        return body.fail("rename the finished file into place", errno);
    body.temporary.clear();
    body.unlock();
    return body.syncDirectory();
}

void AtomicFile::discard() {
    if (!body_->error.empty())
        return;
    body_->finished = false;
    body_->giveUp();
}

} // namespace tamarin
