// A directory of a test's own, removed with all it holds; the test may make it the working
// directory.
#pragma once

#include <cassert>
#include <cstdlib>
#include <filesystem>
#include <string>

class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tamarin.XXXXXX").string();
        assert(mkdtemp(pattern.data()) != nullptr);
        path_ = pattern;
    }
    ~ScratchDirectory() {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(path_);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    void enter() const { std::filesystem::current_path(path_); }
    std::string at(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};
