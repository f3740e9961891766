// A real process killed at a random moment of its writing, many times.

#include "support/child_process.h"
#include "support/file.h"
#include "support/temp_directory.h"

#include <chrono>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string generation(char letter) {
    return std::string(1'000'000, letter);
}

// The child tells when it begins, so that the moment of the kill is measured from there.
pid_t startWriter(const std::string& path, char letter, int tell) {
    return startChild([=] {
        const std::string contents = generation(letter);
        const char byte = 1;
        if (write(tell, &byte, 1) != 1)
            return 2;
        return writeWholeFile(path, contents).ok() ? 0 : 1;
    });
}

TEST(KilledWriter, LeavesTheOldFileOrTheNewOne) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    using Clock = std::chrono::steady_clock;
    char byte;
    const auto begin = [&](char letter) {
        const pid_t child = startWriter(path, letter, pipeEnds[1]);
        EXPECT_EQ(read(pipeEnds[0], &byte, 1), 1);
        return child;
    };

    Clock::duration whole{};
    for (int i = 0; i < 5; ++i) {
        const pid_t child = begin('a');
        const auto started = Clock::now();
        waitForChild(child);
        whole += (Clock::now() - started) / 5;
    }

    std::random_device device;
    const unsigned seed = device();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr int rounds = 200;
    int olds = 0;
    int news = 0;
    for (int round = 0; round < rounds; ++round) {
        const char before = contentsOf(path)[0];
        const char letter = before == 'z' ? 'a' : static_cast<char>(before + 1);
        const pid_t child = begin(letter);
        std::this_thread::sleep_for(whole * (random() % 1201) / 1000);
        kill(child, SIGKILL);
        waitForChild(child);
        const std::string contents = contentsOf(path);
        ASSERT_TRUE(contents == generation(before) || contents == generation(letter)) << round;
        ++(contents[0] == before ? olds : news);
    }
    // Otherwise the kills do not fall where it matters, and the test proves nothing.
    EXPECT_GE(olds, rounds / 10);
    EXPECT_GE(news, rounds / 10);
    ASSERT_TRUE(writeWholeFile(path, "the end").ok());
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

} // namespace
} // namespace tamarin::test
