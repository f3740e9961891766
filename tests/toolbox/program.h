// Runs the `tamarin` program in a directory of its own.
#pragma once

#include "support/tree_paths.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

struct Outcome {
    int status; // exit status, or -signal
    std::string out;
    std::string err;
};

inline std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline void writeFile(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

// A test with an empty playing directory, in which the program runs.
class ProgramTest : public ::testing::Test {
protected:
    ProgramTest() {
        directory =
            std::filesystem::path(::testing::TempDir()) / ("program." + std::to_string(getpid()));
        std::filesystem::remove_all(directory);
        std::filesystem::create_directories(directory);
    }
    ~ProgramTest() override { std::filesystem::remove_all(directory); }

    // Starts it and returns its process; ended with finish().
    pid_t start(const std::vector<std::string>& arguments) {
        const pid_t child = fork();
        if (child != 0)
            return child;
        std::filesystem::current_path(directory);
        if (std::freopen((directory / "out.txt").c_str(), "w", stdout) == nullptr ||
            std::freopen((directory / "err.txt").c_str(), "w", stderr) == nullptr)
            _exit(127);
        std::vector<std::string> all = {test::inBuild("bin/tamarin")};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& argument : all)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    Outcome finish(pid_t child) {
        int status = 0;
        waitpid(child, &status, 0);
        Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
                        contentsOf(directory / "out.txt"), contentsOf(directory / "err.txt")};
        std::filesystem::remove(directory / "out.txt");
        std::filesystem::remove(directory / "err.txt");
        return outcome;
    }
    Outcome run(const std::vector<std::string>& arguments) { return finish(start(arguments)); }

    std::filesystem::path directory;
};

} // namespace tamarin::test
