#include "support/file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tamarin {

int FileSystem::open(const char* path, int flags, mode_t mode) {
    return ::open(path, flags, mode);
}
ssize_t FileSystem::read(int fd, void* buffer, size_t size) {
    return ::read(fd, buffer, size);
}
ssize_t FileSystem::write(int fd, const void* buffer, size_t size) {
    return ::write(fd, buffer, size);
}
int FileSystem::fsync(int fd) {
    return ::fsync(fd);
}
void FileSystem::startWriting(int fd, uint64_t begin, uint64_t size) {
    // What fails here fails the sync, too, and is told there.
    ::sync_file_range(fd, static_cast<off_t>(begin), static_cast<off_t>(size),
                      SYNC_FILE_RANGE_WRITE);
}
int FileSystem::close(int fd) {
    return ::close(fd);
}
int FileSystem::rename(const char* from, const char* to) {
    return ::rename(from, to);
}
int FileSystem::unlink(const char* path) {
    return ::unlink(path);
}
int FileSystem::stat(const char* path, struct stat* status) {
    return ::stat(path, status);
}
int FileSystem::fstat(int fd, struct stat* status) {
    return ::fstat(fd, status);
}
int FileSystem::fchmod(int fd, mode_t mode) {
    return ::fchmod(fd, mode);
}
int FileSystem::mkdir(const char* path, mode_t mode) {
    return ::mkdir(path, mode);
}
int FileSystem::flock(int fd, int operation) {
    return ::flock(fd, operation);
}
void* FileSystem::map(size_t size, int fd) {
    return ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
}
int FileSystem::unmap(void* address, size_t size) {
    return ::munmap(address, size);
}

FileSystem& systemFiles() {
    static FileSystem files;
    return files;
}

namespace {

Error failure(const std::string& path, const char* what, int cause) {
    return Error{path + ": could not " + what + ": " + std::generic_category().message(cause)};
}

// An open descriptor on a regular file, closed at the end of the scope.
class RegularFile {
public:
    RegularFile(const std::string& path, FileSystem& files) : files_(files) {
        // Without blocking: the open of a pipe that nobody writes would wait for ever.
        const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
        while ((fd = files.open(path.c_str(), flags, 0)) < 0 && errno == EINTR) {
        }
        if (fd < 0) {
            status = failure(path, "open", errno);
            return;
        }
        struct stat about = {};
        int outcome;
        while ((outcome = files.fstat(fd, &about)) != 0 && errno == EINTR) {
        }
        if (outcome != 0)
            status = failure(path, "examine", errno);
        else if (!S_ISREG(about.st_mode))
            status = Error{path + ": not a regular file"};
        else
            size = static_cast<size_t>(about.st_size);
    }
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;
    ~RegularFile() {
        if (fd >= 0)
            files_.close(fd);
    }

    int fd = -1;
    size_t size = 0;
    Status status;

private:
    FileSystem& files_;
};

// Gives the file the first name of PATH.bad, PATH.bad.2, ... that is free. take(name) is a call
// that fails with EEXIST where it is not.
template <class Take>
Result<std::string> asBadFile(const std::string& path, const Take& take) {
    for (int number = 1;; ++number) {
        std::string name = path + ".bad";
        if (number > 1)
            name += "." + std::to_string(number);
        if (take(name.c_str()) == 0)
            return name;
        if (errno != EEXIST)
            return failure(path, ("move it to " + name).c_str(), errno);
    }
}

// rename() that replaces nothing, which some file systems cannot do in one step.
int moveToFreeName(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return -1;
    struct stat about = {};
    if (::lstat(to, &about) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(from, to);
}

} // namespace

Status writeWholeFile(const std::string& path, const std::string& contents, FileSystem& files) {
    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    if (Status status = file->write(contents); !status)
        return status;
    return file->commit();
}

Result<std::string> readWholeFile(const std::string& path, size_t maxSize, FileSystem& files) {
    const RegularFile file(path, files);
    if (!file.status)
        return Error{file.status.error()};
    const Error tooLarge{path + ": more than " + std::to_string(maxSize) + " bytes"};
    if (file.size > maxSize)
        return tooLarge;

    // The size is only a first guess: the file may grow or shrink meanwhile, and some (below /proc)
    // say 0. One byte more than expected is asked for, to see the end without another round.
    std::string contents;
    size_t used = 0;
    contents.resize(file.size + 1);
    for (;;) {
        const ssize_t got = files.read(file.fd, contents.data() + used, contents.size() - used);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return failure(path, "read", errno);
        if (got == 0)
            break;
        used += static_cast<size_t>(got);
        if (used > maxSize)
            return tooLarge;
        if (used == contents.size())
            contents.resize(std::min(maxSize, used + std::max<size_t>(used, 4096)) + 1);
    }
    contents.resize(used);
    return contents;
}

MappedFile::MappedFile(const std::byte* data, size_t size, FileSystem& files)
    : data_(data), size_(size), files_(&files) {}

Result<MappedFile> MappedFile::open(const std::string& path, size_t expectedSize,
                                    FileSystem& files) {
    const RegularFile file(path, files);
    if (!file.status)
        return Error{file.status.error()};
    if (expectedSize != anySize && file.size != expectedSize)
        return Error{path + " has " + std::to_string(file.size) + " bytes, not " +
                     std::to_string(expectedSize)};
    if (file.size == 0)
        return MappedFile(nullptr, 0, files); // an empty mapping does not exist
    void* data = files.map(file.size, file.fd);
    if (data == MAP_FAILED)
        return failure(path, "map", errno);
    return MappedFile(static_cast<const std::byte*>(data), file.size, files);
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)),
      files_(other.files_) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(files_, other.files_);
    return *this;
}

void MappedFile::forgetPages() const {
    if (data_) // advice: nothing is lost where it is not taken
        ::madvise(const_cast<std::byte*>(data_), size_, MADV_DONTNEED);
}

MappedFile::~MappedFile() {
    if (data_)
        files_->unmap(const_cast<std::byte*>(data_), size_);
}

// Each new directory is synced into its parent: a file committed in it would otherwise be lost with
// the directory's own name.
Status makeDirectories(const std::string& path, FileSystem& files) {
    for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string part = path.substr(0, end);
        if (files.mkdir(part.c_str(), 0777) == 0) {
            const size_t slash = part.find_last_of('/');
            const std::string parent = slash == std::string::npos ? "."
                                       : slash == 0               ? "/"
                                                                  : part.substr(0, slash);
            const int fd = files.open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
            if (fd >= 0) {
                files.fsync(fd);
                files.close(fd);
            }
        } else {
            const int cause = errno;
            struct stat about = {};
            const bool there = files.stat(part.c_str(), &about) == 0;
            if (there && !S_ISDIR(about.st_mode))
                return Error{part + ": could not make the directory: a file of that name is there"};
            if (!there)
                return failure(part, "make the directory", cause);
        }
        if (end == std::string::npos)
            return {};
    }
}

Result<std::string> setAsideBadFile(const std::string& path) {
    return asBadFile(path, [&](const char* name) { return moveToFreeName(path.c_str(), name); });
}

Result<std::string> keepBeside(const std::string& path) {
    return asBadFile(path, [&](const char* name) {
        // A link is followed: the file behind it is what will be replaced.
        if (::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0)
            return 0;
        return errno == EEXIST || errno == ENOENT ? -1 : moveToFreeName(path.c_str(), name);
    });
}

} // namespace tamarin
