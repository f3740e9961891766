// A playing directory of a test's own, which is also the working directory while it lasts.
#pragma once

#include "support/tree_paths.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {

class PlayingDirectory {
public:
    PlayingDirectory() : before_(std::filesystem::current_path()) {
        std::string path = testing::TempDir() + "playing.XXXXXX";
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        path_ = path;
        std::filesystem::current_path(path_);
        for (const auto& game : std::filesystem::directory_iterator(tamarin::test::inTree("games")))
            std::filesystem::copy(game.path(), path_);
    }
    PlayingDirectory(const PlayingDirectory&) = delete;
    PlayingDirectory& operator=(const PlayingDirectory&) = delete;
    ~PlayingDirectory() {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(path_);
    }

    std::string path() const { return path_.string(); }

    static void write(const std::string& name, const std::string& contents) {
        const std::filesystem::path path(name);
        if (path.has_parent_path())
            std::filesystem::create_directories(path.parent_path());
        std::ofstream(name, std::ios::binary) << contents;
    }
    static std::string read(const std::string& name) {
        std::ostringstream contents;
        contents << std::ifstream(name, std::ios::binary).rdbuf();
        return contents.str();
    }

private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};

} // namespace tamarin::test
