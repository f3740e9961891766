// File systems that go wrong on purpose, for the tests of whatever writes or reads files.
//
// Both make the real calls (so that descriptors are real and other code can look at the files) and
// add their mischief on top: FaultyFiles fails chosen calls and writes short, PowerLossFiles knows
// what the disk could hold if the power went now.
#pragma once

#include "support/file.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace tamarin::test {

struct FileCall {
    std::string name; // "open", "write", ...
    std::string path; // of the file called on, also where the call takes a descriptor
    int fd;           // -1 where the call has none
    int error;        // 0 when it went well
};

// Records all calls and fails the chosen ones. Calls are counted from 1; unmap is neither counted
// nor failed.
class FaultyFiles : public FileSystem {
public:
    // The k-th call fails with error, and with forEver every later one, too.
    void failAt(size_t k, int error, bool forEver = false) {
        failAt_ = k;
        error_ = error;
        forEver_ = forEver;
    }
    // Each call of this name fails.
    void failCall(const std::string& name, int error) {
        failName_ = name;
        error_ = error;
    }
    // No write transfers more than this many bytes.
    void writeAtMost(size_t size) { writeAtMost_ = size; }

    const std::vector<FileCall>& log() const { return log_; }
    size_t count(const std::string& name) const {
        return static_cast<size_t>(std::count_if(
            log_.begin(), log_.end(), [&](const FileCall& call) { return call.name == name; }));
    }
    bool failed(const std::string& name) const {
        return std::any_of(log_.begin(), log_.end(), [&](const FileCall& call) {
            return call.name == name && call.error != 0;
        });
    }
    // Whether the fault was met: a sweep over k ends at the first run that met none.
    bool metFault() const { return metFault_; }

    // Called before and after each call; a test kills the process or inspects the disk there.
    std::function<void(size_t)> beforeCall;
    std::function<void(size_t)> afterCall;

    int open(const char* path, int flags, mode_t mode) override {
        const bool fault = begin("open", path, -1);
        const int fd = fault ? -1 : FileSystem::open(path, flags, mode);
        if (fd >= 0)
            paths_[fd] = path;
        return end(fd);
    }
    ssize_t read(int fd, void* buffer, size_t size) override {
        return end(begin("read", paths_[fd], fd) ? -1 : FileSystem::read(fd, buffer, size));
    }
    ssize_t write(int fd, const void* buffer, size_t size) override {
        return end(begin("write", paths_[fd], fd)
                       ? -1
                       : FileSystem::write(fd, buffer, std::min(size, writeAtMost_)));
    }
    int fsync(int fd) override {
        return end(begin("fsync", paths_[fd], fd) ? -1 : FileSystem::fsync(fd));
    }
    // As on Linux, a close that fails has closed the descriptor all the same.
    int close(int fd) override {
        const bool fault = begin("close", paths_[fd], fd);
        const int cause = errno;
        const int outcome = FileSystem::close(fd);
        if (fault)
            errno = cause;
        return end(fault ? -1 : outcome);
    }
    int rename(const char* from, const char* to) override {
        return end(begin("rename", to, -1) ? -1 : FileSystem::rename(from, to));
    }
    int unlink(const char* path) override {
        return end(begin("unlink", path, -1) ? -1 : FileSystem::unlink(path));
    }
    int stat(const char* path, struct stat* status) override {
        return end(begin("stat", path, -1) ? -1 : FileSystem::stat(path, status));
    }
    int fstat(int fd, struct stat* status) override {
        return end(begin("fstat", paths_[fd], fd) ? -1 : FileSystem::fstat(fd, status));
    }
    int fchmod(int fd, mode_t mode) override {
        return end(begin("fchmod", paths_[fd], fd) ? -1 : FileSystem::fchmod(fd, mode));
    }
    int mkdir(const char* path, mode_t mode) override {
        return end(begin("mkdir", path, -1) ? -1 : FileSystem::mkdir(path, mode));
    }
    int flock(int fd, int operation) override {
        return end(begin("flock", paths_[fd], fd) ? -1 : FileSystem::flock(fd, operation));
    }
    void* map(size_t size, int fd) override {
        void* const none = reinterpret_cast<void*>(-1);
        void* address = begin("map", paths_[fd], fd) ? none : FileSystem::map(size, fd);
        end(address == none ? -1 : 0);
        return address;
    }

private:
    // Whether this call is to fail; errno is set then.
    bool begin(const char* name, const std::string& path, int fd) {
        log_.push_back({name, path, fd, 0});
        const size_t k = log_.size();
        if (beforeCall)
            beforeCall(k);
        const bool fault = (failAt_ != 0 && (k == failAt_ || (forEver_ && k > failAt_))) ||
                           (!failName_.empty() && failName_ == name);
        if (fault) {
            metFault_ = true;
            errno = error_;
        }
        return fault;
    }
    template <class Outcome>
    Outcome end(Outcome outcome) {
        const int cause = errno;
        if (outcome < 0)
            log_.back().error = cause;
        if (afterCall)
            afterCall(log_.size());
        errno = cause;
        return outcome;
    }

    size_t failAt_ = 0;
    std::string failName_;
    int error_ = 0;
    bool forEver_ = false;
    bool metFault_ = false;
    size_t writeAtMost_ = SIZE_MAX;
    std::vector<FileCall> log_;
    std::map<int, std::string> paths_;
};

// Knows what is certain to be on the disk and what is not. Bytes are certain after fsync of the
// file, names (made, renamed, removed) after fsync of their directory. Files that were there before
// count as certain. A run of the power loss keeps the certain part, applies the uncertain changes
// of names in order up to a random one, and keeps, cuts, loses or spoils each uncertain change of
// bytes by itself, so that they may also seem reordered.
class PowerLossFiles : public FileSystem {
public:
    // What the disk may hold after a power cut now: the contents of each file known, by path.
    std::map<std::string, std::string> afterPowerLoss(std::mt19937& random) const {
        std::map<std::string, std::shared_ptr<Inode>> names = certainNames_;
        const auto uncertain = static_cast<size_t>(
            std::count_if(changes_.begin(), changes_.end(),
                          [](const NameChange& change) { return !change.certain; }));
        size_t arrived = random() % (uncertain + 1);
        for (const NameChange& change : changes_) {
            if (!change.certain && arrived == 0)
                continue; // the rest of the journal is lost
            if (!change.certain)
                --arrived;
            apply(change, names);
        }
        std::map<std::string, std::string> disk;
        for (const auto& [name, inode] : names)
            disk[name] = inode->afterPowerLoss(random);
        return disk;
    }

    std::function<void()> afterCall;

    int open(const char* path, int flags, mode_t mode) override {
        const bool there = learn(path);
        const int fd = FileSystem::open(path, flags, mode);
        if (fd >= 0 && !(flags & O_DIRECTORY)) {
            if (!there && (flags & O_CREAT)) {
                const auto inode = std::make_shared<Inode>();
                change({path, "", inode, false});
            }
            if (names_.count(path)) {
                open_[fd] = {names_[path], 0};
                if (flags & O_TRUNC)
                    open_[fd].inode->pending.push_back({true, 0, ""});
            }
        }
        if (fd >= 0 && (flags & O_DIRECTORY))
            directories_[fd] = path;
        return after(fd);
    }
    ssize_t write(int fd, const void* buffer, size_t size) override {
        const ssize_t written = FileSystem::write(fd, buffer, size);
        if (const auto at = open_.find(fd); at != open_.end() && written > 0) {
            const std::string bytes(static_cast<const char*>(buffer), static_cast<size_t>(written));
            at->second.inode->pending.push_back({false, at->second.offset, bytes});
            at->second.offset += bytes.size();
        }
        return after(written);
    }
    int fsync(int fd) override {
        if (const auto at = open_.find(fd); at != open_.end())
            at->second.inode->sync();
        if (const auto at = directories_.find(fd); at != directories_.end())
            syncDirectory(at->second);
        return after(0); // the model stands for the disk; the real one need not be troubled
    }
    int close(int fd) override {
        open_.erase(fd);
        directories_.erase(fd);
        return after(FileSystem::close(fd));
    }
    int rename(const char* from, const char* to) override {
        learn(from);
        learn(to);
        const int outcome = FileSystem::rename(from, to);
        if (outcome == 0)
            change({to, from, names_[from], false});
        return after(outcome);
    }
    int unlink(const char* path) override {
        learn(path);
        const int outcome = FileSystem::unlink(path);
        if (outcome == 0)
            change({"", path, nullptr, false});
        return after(outcome);
    }

private:
    struct ByteChange {
        bool truncation;
        size_t offset;
        std::string bytes;

        void apply(std::string& contents) const {
            if (truncation) {
                contents.clear();
                return;
            }
            if (contents.size() < offset + bytes.size())
                contents.resize(offset + bytes.size(), '\0');
            contents.replace(offset, bytes.size(), bytes);
        }
    };
    struct Inode {
        std::string certain;
        std::vector<ByteChange> pending;

        void sync() {
            for (const ByteChange& change : pending)
                change.apply(certain);
            pending.clear();
        }
        std::string afterPowerLoss(std::mt19937& random) const {
            std::string contents = certain;
            for (ByteChange change : pending) {
                switch (random() % 4) {
                case 0: // lost
                    continue;
                case 1: // cut
                    change.bytes.resize(change.bytes.size() * (random() % 8) / 8);
                    break;
                case 2: // the file grew, its blocks did not arrive
                    std::fill(change.bytes.begin(), change.bytes.end(), '\0');
                    break;
                default: // arrived
                    break;
                }
                change.apply(contents);
            }
            return contents;
        }
    };
    struct OpenFile {
        std::shared_ptr<Inode> inode;
        size_t offset;
    };
    // The name to (empty: none) now leads to the file, the name from no longer.
    struct NameChange {
        std::string to;
        std::string from;
        std::shared_ptr<Inode> inode;
        bool certain;
    };

    static void apply(const NameChange& change,
                      std::map<std::string, std::shared_ptr<Inode>>& names) {
        if (!change.from.empty())
            names.erase(change.from);
        if (!change.to.empty())
            names[change.to] = change.inode;
    }
    void change(NameChange change) {
        apply(change, names_);
        changes_.push_back(std::move(change));
    }
    static std::string directoryOf(const std::string& path) {
        return path.substr(0, path.find_last_of('/'));
    }
    void syncDirectory(const std::string& directory) {
        for (NameChange& change : changes_)
            if (directoryOf(change.to.empty() ? change.from : change.to) == directory)
                change.certain = true;
    }
    // Takes note of a file that was there before; whether there is one.
    bool learn(const std::string& path) {
        if (names_.count(path))
            return true;
        struct stat about = {};
        if (::stat(path.c_str(), &about) != 0 || !S_ISREG(about.st_mode))
            return false;
        const auto inode = std::make_shared<Inode>();
        inode->certain = contentsOf(path);
        names_[path] = certainNames_[path] = inode;
        return true;
    }
    template <class Outcome>
    Outcome after(Outcome outcome) {
        const int cause = errno;
        if (afterCall)
            afterCall();
        errno = cause;
        return outcome;
    }

    std::map<std::string, std::shared_ptr<Inode>> names_;        // as running programs see them
    std::map<std::string, std::shared_ptr<Inode>> certainNames_; // as they were at first
    std::vector<NameChange> changes_;
    std::map<int, OpenFile> open_;
    std::map<int, std::string> directories_;
};

} // namespace tamarin::test
