#include "support/lock.h"

#include "support/child_process.h"
#include "support/temp_directory.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string thisHost() {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    return name;
}

TEST(FileLock, ExcludesASecondTakerAndNamesTheHolder) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    const Result<FileLock> first = FileLock::take(path);
    ASSERT_TRUE(first.ok()) << first.error();
    EXPECT_EQ(contentsOf(path), std::to_string(getpid()) + " " + thisHost() + "\n");
    const Result<FileLock> second = FileLock::take(path);
    ASSERT_FALSE(second.ok());
    EXPECT_NE(second.error().find(path), std::string::npos);
    EXPECT_NE(second.error().find("process " + std::to_string(getpid()) + " on " + thisHost()),
              std::string::npos)
        << second.error();
}

TEST(FileLock, IsFreeAfterItsEnd) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    for (int round = 0; round < 3; ++round) {
        const Result<FileLock> lock = FileLock::take(path);
        EXPECT_TRUE(lock.ok());
    }
}

TEST(FileLock, MovesWithItsLock) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    Result<FileLock> first = FileLock::take(path);
    {
        const FileLock moved(std::move(*first));
        EXPECT_FALSE(FileLock::take(path).ok());
    }
    Result<FileLock> second = FileLock::take(path);
    EXPECT_TRUE(second.ok());
    Result<FileLock> other = FileLock::take(directory.file("other"));
    *second = std::move(*other);
    other = Error{"gone"}; // and with it what it got in exchange
    EXPECT_TRUE(FileLock::take(path).ok());
    EXPECT_FALSE(FileLock::take(directory.file("other")).ok());
}

TEST(FileLock, SaysWhyItCannotBeTaken) {
    const Result<FileLock> lock = FileLock::take("/no/such/directory/lock");
    ASSERT_FALSE(lock.ok());
    EXPECT_NE(lock.error().find("/no/such/directory/lock"), std::string::npos);
    EXPECT_NE(lock.error().find("No such file"), std::string::npos);
}

// Nobody ever removes a lock by hand: the kernel frees it when its holder dies, however it dies.
TEST(FileLock, IsFreedWhenItsHolderIsKilled) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    for (int round = 0; round < 10; ++round) {
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t holder = startChild([&] {
            const Result<FileLock> lock = FileLock::take(path);
            const char taken = lock.ok();
            if (write(ready[1], &taken, 1) == 1)
                pause();
            return 0;
        });
        char taken = 0;
        ASSERT_EQ(read(ready[0], &taken, 1), 1);
        ASSERT_EQ(taken, 1);
        const Result<FileLock> refused = FileLock::take(path);
        ASSERT_FALSE(refused.ok());
        EXPECT_NE(refused.error().find("process " + std::to_string(holder) + " "),
                  std::string::npos)
            << refused.error();
        kill(holder, SIGKILL);
        waitForChild(holder);
        EXPECT_TRUE(FileLock::take(path).ok());
        close(ready[0]);
        close(ready[1]);
    }
}

TEST(FileLock, LetsExactlyOneOfEightStartersIn) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    for (int round = 0; round < 20; ++round) {
        int start[2];
        int result[2];
        ASSERT_EQ(pipe(start), 0);
        ASSERT_EQ(pipe(result), 0);
        std::vector<pid_t> starters;
        for (int i = 0; i < 8; ++i)
            starters.push_back(startChild([&] {
                close(start[1]);
                char byte;
                if (read(start[0], &byte, 1) != 0) // all are let go by closing the other end
                    return 1;
                const Result<FileLock> lock = FileLock::take(path);
                const bool named = !lock.ok() && lock.error().find("process ") != std::string::npos;
                byte = lock.ok() ? 'o' : named ? 'n' : '?';
                if (write(result[1], &byte, 1) != 1)
                    return 1;
                if (lock.ok())
                    pause();
                return 0;
            }));
        close(start[0]);
        close(start[1]);
        std::string outcomes;
        while (outcomes.size() < starters.size()) {
            char byte;
            ASSERT_EQ(read(result[0], &byte, 1), 1);
            outcomes.push_back(byte);
        }
        EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), 'o'), 1) << outcomes;
        EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), 'n'), 7) << outcomes;
        for (const pid_t starter : starters) {
            kill(starter, SIGKILL);
            waitForChild(starter);
        }
        close(result[0]);
        close(result[1]);
    }
}

// ---- Waiting

std::atomic<int> patience{0};
bool whilePatient() {
    return patience-- > 0;
}

TEST(FileLock, WaitsAsLongAsItIsTold) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    const Result<FileLock> holder = FileLock::take(path);
    patience = 3;
    const Result<FileLock> waiter = FileLock::wait(path, whilePatient);
    EXPECT_FALSE(waiter.ok());
    EXPECT_EQ(patience, -1);
}

TEST(FileLock, WaitsForTheHolder) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    Result<FileLock> holder = FileLock::take(path);
    std::thread releaser([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        holder = Error{"released"};
    });
    const Result<FileLock> waiter = FileLock::wait(path, [] { return true; });
    EXPECT_TRUE(waiter.ok());
    releaser.join();
    EXPECT_FALSE(FileLock::take(path).ok());
}

// Whoever cleans the directory while others wait must not thereby let two in.
TEST(FileLock, DoesNotTrustAFileThatWasReplaced) {
    const TempDirectory directory;
    const std::string path = directory.file("lock");
    Result<FileLock> first = FileLock::take(path);
    patience = 5;
    std::thread cleaner([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        std::filesystem::rename(path, path + ".away");
        const Result<FileLock> second = FileLock::take(path);
        EXPECT_TRUE(second.ok());
        first = Error{"released"};
        while (patience >= 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    const Result<FileLock> waiter = FileLock::wait(path, whilePatient);
    EXPECT_FALSE(waiter.ok());
    patience = -1; // lets the cleaner go, whatever happened
    cleaner.join();
}

} // namespace
} // namespace tamarin::test
