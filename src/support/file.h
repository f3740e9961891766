// Files that are whole or absent.
//
// Every file this system leaves behind is written beside its place, flushed to the disk and renamed
// into it, so that a reader, a kill or a power cut sees the old file or the new one and never a
// part. All calls go through FileSystem, so that a test can fail the k-th of them.
#pragma once

#include "support/result.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace tamarin {

// The operating system's calls on files, one virtual function each, with the return values and
// errno of the calls they stand for. The base class makes the real calls; a test derives from it.
class FileSystem {
public:
    virtual ~FileSystem() = default;
    virtual int open(const char* path, int flags, mode_t mode);
    virtual ssize_t read(int fd, void* buffer, size_t size);
    virtual ssize_t write(int fd, const void* buffer, size_t size);
    virtual int fsync(int fd);
    // Asks for bytes that were written to go to the disk from now on, and waits for nothing.
    virtual void startWriting(int fd, uint64_t begin, uint64_t size);
    virtual int close(int fd);
    virtual int rename(const char* from, const char* to);
    virtual int unlink(const char* path);
    virtual int stat(const char* path, struct stat* status);
    virtual int fstat(int fd, struct stat* status);
    virtual int fchmod(int fd, mode_t mode);
    virtual int mkdir(const char* path, mode_t mode);
    virtual int flock(int fd, int operation);
    virtual void* map(size_t size, int fd); // read-only, shared; MAP_FAILED on error
    virtual int unmap(void* address, size_t size);
};

// The real file system; lives for the whole process.
FileSystem& systemFiles();

// Writes one file atomically. Nothing appears under the final name before commit() has returned
// success; an object destroyed without a commit removes its temporary file and leaves whatever the
// path held before. A file that replaces another keeps its permissions; a new one has those of
// create(), less the umask. The temporary file is PATH.tmp.PID.N in the same directory, opened
// exclusively and locked while it is written; create() removes those that a process no longer alive
// has left there. A symbolic link is followed and stays. A target that exists and is not a regular
// file (a device, a pipe) is written in place. Short writes and EINTR are retried. One object
// belongs to one thread; two processes or threads writing the same path leave one whole file of the
// two.
class AtomicFile {
public:
    static Result<AtomicFile> create(const std::string& path, FileSystem& files = systemFiles(),
                                     mode_t mode = 0666);

    AtomicFile(AtomicFile&& other) noexcept;
    AtomicFile& operator=(AtomicFile&& other) noexcept;
    ~AtomicFile();

    // Appends; data is buffered. After a failure every later call fails with the same message.
    Status write(const void* data, size_t size);
    Status write(std::span<const std::byte> data) { return write(data.data(), data.size()); }
    Status write(const std::string& text) { return write(text.data(), text.size()); }

    // Flushes, syncs and closes: from here on only commit() is left to do, which needs no more room
    // on the disk. A failed sync is final: it is not tried again on the same descriptor, because
    // the kernel may then claim success.
    Status finish();

    // Finishes where that is still to do, renames into place and syncs the directory.
    Status commit();

    // Gives the file up at once: what the destructor does when there was no commit.
    void discard();

    const std::string& path() const;

private:
    struct Body;
    explicit AtomicFile(std::unique_ptr<Body> body);
    std::unique_ptr<Body> body_;
};

// Writes a whole small file atomically.
Status writeWholeFile(const std::string& path, const std::string& contents,
                      FileSystem& files = systemFiles());

// Reads a whole file of at most maxSize bytes; directories, pipes and devices are refused.
Result<std::string> readWholeFile(const std::string& path, size_t maxSize = size_t{1} << 30,
                                  FileSystem& files = systemFiles());

// A regular file mapped read-only. The bytes live as long as the object; a file replaced by rename
// meanwhile does not disturb them. Directories, pipes and devices are refused.
class MappedFile {
public:
    static constexpr size_t anySize = SIZE_MAX;

    // Refuses a file whose size is not expectedSize bytes, unless that is anySize:
    // "PATH has N bytes, not M".
    static Result<MappedFile> open(const std::string& path, size_t expectedSize = anySize,
                                   FileSystem& files = systemFiles());

    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    ~MappedFile();

    std::span<const std::byte> bytes() const { return {data_, size_}; }
    size_t size() const { return size_; }

    // Gives the pages read so far back to the system, so that going through a large file once does
    // not keep all of it in memory. The bytes stay valid; the system reads them again when needed.
    void forgetPages() const;

    // The contents as an array of T; the size must be a multiple of T's.
    template <class T>
    std::span<const T> as() const {
        assert(size_ % sizeof(T) == 0);
        return {reinterpret_cast<const T*>(data_), size_ / sizeof(T)};
    }

private:
    MappedFile(const std::byte* data, size_t size, FileSystem& files);
    const std::byte* data_ = nullptr;
    size_t size_ = 0;
    FileSystem* files_ = nullptr;
};

// Makes a directory and those above it; an existing one is success.
Status makeDirectories(const std::string& path, FileSystem& files = systemFiles());

// Moves a bad file out of the way, for a person to look at, and returns its new name: PATH.bad, or
// PATH.bad.2, PATH.bad.3 and so on. Nothing is ever replaced: what is bad to one program may be
// what a person wants back.
Result<std::string> setAsideBadFile(const std::string& path);

// The same for a file that is about to be replaced: it gets the new name and keeps its own until
// then, so that a stop in between loses nothing. Where there are no hard links it is moved.
Result<std::string> keepBeside(const std::string& path);

} // namespace tamarin
