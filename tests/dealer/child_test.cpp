#include "dealer/child.h"

#include "dealer/fake_player.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>

#include <gtest/gtest.h>

namespace tamarin::test {

using tamarin::test::pause;

namespace {

Child::Command shell(const std::string& script) {
    Child::Command command;
    command.file = "/bin/sh";
    command.arguments = {"sh", "-c", script};
    return command;
}

bool waitForEnd(Child& child) {
    for (int i = 0; i < 5000 && !child.ended(); ++i) {
        child.output().take();
        pause(1);
    }
    return child.ended();
}

bool waitForLine(Child& child, const std::string& line) {
    for (int i = 0; i < 5000; ++i) {
        child.output().take();
        if (!child.output().lastLines().empty() && child.output().lastLines().back() == line)
            return true;
        pause(1);
    }
    return false;
}

} // namespace

TEST(Child, TellsHowItEnded) {
    auto child = Child::start(shell("echo one; echo two >&2; printf three; exit 3"));
    ASSERT_TRUE(child.ok());
    ASSERT_TRUE(waitForEnd(*child));
    EXPECT_EQ(child->describe(), "ended with status 3");
    EXPECT_EQ(child->explain(), "ended with status 3; its last output: one | two | three");
}

TEST(Child, KeepsTheLastLines) {
    auto child = Child::start(shell("for i in 1 2 3 4 5 6; do echo $i; done"));
    ASSERT_TRUE(waitForEnd(*child));
    EXPECT_EQ(child->explain(), "ended with status 0; its last output: 3 | 4 | 5 | 6");
}

TEST(Child, ThatWritesALotNeverWaits) {
    // More than the pipe holds, and less than a player may print at once.
    auto child = Child::start(shell("head -c 900000 /dev/zero | tr '\\0' x; echo; echo end"));
    ASSERT_TRUE(waitForEnd(*child));
    child->output().takeRest();
    ASSERT_EQ(child->output().lastLines().size(), 2U);
    EXPECT_LT(child->output().lastLines().front().size(), 1000U);
    EXPECT_EQ(child->output().lastLines().back(), "end");
}

// Two processes that write without end, one of which nobody would ever have been done with.
TEST(Child, ThatWritesWithoutEndIsExplained) {
    auto child = Child::start(shell("yes & exec yes no"));
    ASSERT_TRUE(child.ok());
    const TimePoint start = steadyClock().now();
    for (int i = 0; i < 1000 && child->output().lastLines().empty(); ++i) {
        child->output().take();
        pause(1);
    }
    EXPECT_TRUE(child->explain().starts_with("is running; its last output: "));
    EXPECT_LT(steadyClock().now() - start, std::chrono::seconds(5));
}

TEST(Child, RunsInItsDirectoryWithThePathInFront) {
    Child::Command command = shell("pwd; echo $PATH | cut -d: -f1");
    command.directory = "/";
    command.firstPath = "/some/where";
    auto child = Child::start(command);
    ASSERT_TRUE(waitForEnd(*child));
    EXPECT_EQ(child->explain(), "ended with status 0; its last output: / | /some/where");
}

TEST(Child, ThatCannotStartSaysWhy) {
    Child::Command command;
    command.file = "/nonexistent/program";
    command.arguments = {"program"};
    const auto missing = Child::start(command);
    ASSERT_FALSE(missing.ok());
    EXPECT_EQ(missing.error(), "could not start /nonexistent/program: No such file or directory");
    command.directory = "/nonexistent";
    const auto nowhere = Child::start(command);
    ASSERT_FALSE(nowhere.ok());
    EXPECT_EQ(nowhere.error(), "could not enter /nonexistent: No such file or directory");
}

TEST(Child, IsKilledWithEverythingItStarted) {
    pid_t grandchild = 0;
    {
        auto child =
            Child::start(shell("trap '' TERM; sleep 1000 & echo $!; echo ready; wait; wait"));
        ASSERT_TRUE(child.ok());
        ASSERT_TRUE(waitForLine(*child, "ready"));
        grandchild = static_cast<pid_t>(std::stol(child->output().lastLines().front()));
        EXPECT_FALSE(child->ended());
        EXPECT_EQ(child->describe(), "is running");
        EXPECT_EQ(::kill(grandchild, 0), 0);
    }
    // The grandchild is no child of ours: somebody else takes it off the list, if anybody.
    const std::string status = "/proc/" + std::to_string(grandchild) + "/stat";
    for (int i = 0; i < 2000 && ::kill(grandchild, 0) == 0; ++i) {
        FILE* file = std::fopen(status.c_str(), "r");
        char state = 'Z';
        if (file) {
            if (std::fscanf(file, "%*d %*s %c", &state) != 1)
                state = 'Z';
            std::fclose(file);
        }
        if (state == 'Z')
            return;
        pause(1);
    }
    EXPECT_NE(::kill(grandchild, 0), 0);
}

TEST(Child, SignalsReachIt) {
    auto child = Child::start(shell("echo ready; sleep 1000"));
    ASSERT_TRUE(waitForLine(*child, "ready"));
    child->signalGroup(SIGTERM);
    ASSERT_TRUE(waitForEnd(*child));
    EXPECT_EQ(child->describe(), "was killed by signal 15 (Terminated)");
}

TEST(Child, LeavesNoZombies) {
    {
        auto child = Child::start(shell("exit 0"));
        ASSERT_TRUE(waitForEnd(*child));
        auto running = Child::start(shell("sleep 1000"));
        ASSERT_TRUE(running.ok());
    }
    int status;
    EXPECT_EQ(::waitpid(-1, &status, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

} // namespace tamarin::test
