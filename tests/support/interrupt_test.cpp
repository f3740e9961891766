#include "support/interrupt.h"

#include "support/child_process.h"

#include <cerrno>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

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

TEST(Interrupts, TheSecondEndsTheProcessAsItWouldHaveEnded) {
    for (const int first : {SIGINT, SIGTERM, SIGHUP})
        for (const int second : {SIGINT, SIGTERM, SIGHUP}) {
            const ChildOutcome outcome = runInChild([=] {
                handleInterrupts();
                raise(first);
                raise(second);
                return 0;
            });
            EXPECT_TRUE(outcome.killedBy(second)) << first << ' ' << second;
        }
}

// The second one comes while the work that the first one asked to stop is still busy.
TEST(Interrupts, TheSecondFromOutsideEndsABusyProcess) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = startChild([&] {
        handleInterrupts();
        char byte = 1;
        if (write(ready[1], &byte, 1) != 1)
            return 1;
        while (!interrupted())
            usleep(1000);
        if (write(ready[1], &byte, 1) != 1)
            return 1;
        for (;;)
            usleep(1000);
    });
    char byte;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    kill(child, SIGINT);
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    kill(child, SIGINT);
    const int status = waitForChild(child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
    close(ready[0]);
    close(ready[1]);
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
