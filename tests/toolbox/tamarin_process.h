// The `tamarin` program as a person runs it.
#pragma once

#include "driver/process.h"
#include "support/tree_paths.h"

#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

// An empty directory of a test's own.
class Scratch {
public:
    Scratch() {
        std::string path = ::testing::TempDir() + "toolbox.XXXXXX";
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        path_ = path;
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { std::filesystem::remove_all(path_); }
    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

struct Ended {
    int status;
    std::string out;
    std::string err;
};

inline std::vector<std::string> tamarinCommand(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {inBuild("bin/tamarin")};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

// Runs tamarin in the directory to its end.
inline Ended runTamarin(const std::vector<std::string>& arguments, const std::string& directory) {
    Process process(tamarinCommand(arguments), directory);
    const int status = process.wait();
    return {status, process.out(), process.err()};
}
inline Ended runTamarin(const std::vector<std::string>& arguments) {
    const Scratch scratch;
    return runTamarin(arguments, scratch.path());
}

// The same on a directory that nobody can write to, root included; nothing where the system does
// not let a test mount one.
inline std::optional<Ended> runOnReadOnly(const std::string& directory,
                                          const std::vector<std::string>& arguments) {
    const Scratch scratch;
    const auto mounted = [&](const std::vector<std::string>& command) {
        std::vector<std::string> all = {
            "unshare",
            "-rm",
            "sh",
            "-c",
            R"(mount --bind "$0" "$0" && mount -o remount,bind,ro "$0" && exec "$@")",
            directory};
        all.insert(all.end(), command.begin(), command.end());
        Process process(all, scratch.path());
        const int status = process.wait();
        return Ended{status, process.out(), process.err()};
    };
    if (mounted({"sh", "-c", R"(test ! -w "$1")", "sh", directory}).status != 0)
        return std::nullopt;
    return mounted(tamarinCommand(arguments));
}

} // namespace tamarin::test
