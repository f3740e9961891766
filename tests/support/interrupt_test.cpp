#include "support/interrupt.h"

#include "support/child_process.h"

#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Interrupts, AreSilentAtFirst) {
    EXPECT_EQ(interruptSignal(), 0);
    EXPECT_FALSE(interrupted());
}

TEST(Interrupts, TheFirstSetsAFlag) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const ChildOutcome outcome = runInChild([signal] {
            handleInterrupts();
            if (interrupted())
                return 1;
            raise(signal);
            return interrupted() && interruptSignal() == signal ? interruptStatus() : 2;
        });
        EXPECT_TRUE(outcome.exited(128 + signal)) << outcome.status;
    }
}

// timeout(1) sends its signal to the process and to the process's group: that is one request, and
// the process was once ended by the second half of it, its report unwritten.
TEST(Interrupts, TwoAtOnceAreOne) {
    for (const int first : {SIGINT, SIGTERM, SIGHUP})
        for (const int second : {SIGINT, SIGTERM, SIGHUP}) {
            const ChildOutcome outcome = runInChild([=] {
                handleInterrupts();
                raise(first);
                raise(second);
                usleep(100'000); // the time that a report takes
                raise(second);
                return interruptStatus();
            });
            EXPECT_TRUE(outcome.exited(128 + first)) << first << ' ' << second;
        }
}

// The second one comes while the work that the first one asked to stop is still busy.
TEST(Interrupts, ALaterOneEndsTheProcessAsItWouldHaveEnded) {
    struct Stopping {
        int second;
        pid_t child;
    };
    std::vector<Stopping> all; // at once: each takes a second
    for (const int first : {SIGINT, SIGTERM, SIGHUP})
        for (const int second : {SIGINT, SIGTERM, SIGHUP})
            all.push_back({second, startChild([=] {
                               handleInterrupts();
                               raise(first);
                               usleep(1'000'000);
                               raise(second);
                               return 0;
                           })});
    for (const Stopping& stopping : all) {
        const int status = waitForChild(stopping.child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == stopping.second) << status;
    }
}

TEST(Interrupts, WakeAWaitingProcess) {
    const ChildOutcome outcome = runInChild([] {
        handleInterrupts();
        const pid_t parent = getpid();
        const pid_t child = fork();
        if (child == 0) {
            usleep(20'000);
            kill(parent, SIGTERM);
            _exit(0);
        }
        const int ready = poll(nullptr, 0, 30'000);
        return ready == -1 && errno == EINTR && interrupted() ? 0 : 1;
    });
    EXPECT_TRUE(outcome.exited(0));
}

// Work started with nohup goes on when its terminal is closed.
TEST(Interrupts, LeaveIgnoredSignalsIgnored) {
    const ChildOutcome outcome = runInChild([] {
        signal(SIGHUP, SIG_IGN);
        handleInterrupts();
        raise(SIGHUP);
        raise(SIGHUP);
        return interrupted() ? 1 : 0;
    });
    EXPECT_TRUE(outcome.exited(0));
}

// A script's background jobs ignore SIGINT, and what they start inherits that. Tests that stop a
// program by it would wait for ever.
TEST(Interrupts, ReachTestsThatWereStartedDeaf) {
    const pid_t child = startChild([] {
        sigset_t blocked; // which is inherited as well
        sigemptyset(&blocked);
        for (const int ignored : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
            signal(ignored, SIG_IGN);
            sigaddset(&blocked, ignored);
        }
        sigprocmask(SIG_BLOCK, &blocked, nullptr);
        if (std::freopen("/dev/null", "w", stdout) == nullptr)
            return 1;
        return execl("/proc/self/exe", "test_support",
                     "--gtest_filter=Interrupts.TheFirstSetsAFlag", nullptr);
    });
    const int status = waitForChild(child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(BrokenPipes, AreErrorsOfACall) {
    for (const bool withHandlers : {false, true}) {
        const ChildOutcome outcome = runInChild([=] {
            withHandlers ? handleInterrupts() : ignoreBrokenPipes();
            int ends[2];
            if (pipe(ends) != 0)
                return 1;
            close(ends[0]);
            return write(ends[1], "x", 1) == -1 && errno == EPIPE ? 0 : 2;
        });
        EXPECT_TRUE(outcome.exited(0));
    }
}

TEST(BrokenPipes, FileSizeLimitsAreErrorsOfACall) {
    const ChildOutcome outcome = runInChild([] {
        ignoreBrokenPipes();
        const rlimit none{0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        FILE* file = tmpfile();
        return write(fileno(file), "x", 1) == -1 && errno == EFBIG ? 0 : 1;
    });
    EXPECT_TRUE(outcome.exited(0));
}

TEST(BrokenPipes, LeaveCtrlCAlone) {
    const ChildOutcome outcome = runInChild([] {
        ignoreBrokenPipes();
        raise(SIGINT);
        return 0;
    });
    EXPECT_TRUE(outcome.killedBy(SIGINT));
}

} // namespace
} // namespace tamarin::test
