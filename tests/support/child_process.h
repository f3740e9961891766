// Runs a function in a forked child, for tests that end processes or change what belongs to the
// whole process (limits, signal actions, descriptors).
#pragma once

#include <functional>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {

struct ChildOutcome {
    int status = 0;     // as waitpid gives it
    std::string errors; // what it wrote on standard error

    bool exited(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
    bool killedBy(int signal) const { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }
};

inline int waitForChild(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

// body's value is the exit status; the child leaves without the cleaning-up of the parent.
inline pid_t startChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60); // a child that hangs must not outlive the test
        _exit(body());
    }
    EXPECT_GT(child, 0);
    return child;
}

inline ChildOutcome runInChild(const std::function<int()>& body) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = startChild([&] {
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        return body();
    });
    close(ends[1]);
    ChildOutcome outcome;
    char buffer[4096];
    for (;;) {
        const ssize_t got = read(ends[0], buffer, sizeof buffer);
        if (got > 0)
            outcome.errors.append(buffer, static_cast<size_t>(got));
        else if (got == 0 || errno != EINTR)
            break;
    }
    close(ends[0]);
    outcome.status = waitForChild(child);
    return outcome;
}

} // namespace tamarin::test
