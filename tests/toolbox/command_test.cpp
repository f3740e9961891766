#include "toolbox/command.h"

#include "support/interrupt.h"
#include "support/tree_paths.h"
#include "toolbox/tamarin_process.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace tamarin::test {

namespace {

void addSample(CLI::App& app, int& status) {
    auto number = std::make_shared<uint64_t>(7);
    CLI::App& command = addCommand(app, "sample", "Does something", "tamarin sample --seed 3");
    addSeedOption(command, *number);
    command.callback([number, &status] {
        if (*number == 1)
            throw UsageError("one is no number");
        if (*number == 2)
            throw std::runtime_error("two is trouble");
        if (*number == 4)
            throw "the solver's way";
        status = *number == 3 ? fail("three failed") : exitDone;
    });
}

struct Output {
    int status;
    std::string out;
    std::string err;
};

Output runSample(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tamarin");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status =
        runToolbox(static_cast<int>(arguments.size()), arguments.data(), {addSample});
    const std::string out = testing::internal::GetCapturedStdout();
    return {status, out, testing::internal::GetCapturedStderr()};
}

void expectWrongUsage(const std::vector<const char*>& arguments, const std::string& line) {
    const Output output = runSample(arguments);
    EXPECT_EQ(output.status, exitUsage);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, line + "\n");
}

} // namespace

// Work that a signal stopped ends as that; a disk that was full when it stopped is a failure.
TEST(Toolbox, ASignalHidesNoError) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto ending = [](bool signalled, const char* error) {
        handleInterrupts();
        if (signalled)
            std::raise(SIGINT);
        std::_Exit(stoppedOrFailed(error));
    };
    EXPECT_EXIT(ending(true, "stopped"), ::testing::ExitedWithCode(130), "^$");
    EXPECT_EXIT(ending(true, "x: no room"), ::testing::ExitedWithCode(exitFailed),
                "tamarin: x: no room");
    EXPECT_EXIT(ending(false, "stopped"), ::testing::ExitedWithCode(exitFailed),
                "tamarin: stopped");
}

TEST(Toolbox, RunsTheCommandNamed) {
    const Output output = runSample({"sample"});
    EXPECT_EQ(output.status, exitDone);
    EXPECT_EQ(output.err, "");
}

TEST(Toolbox, WrongUsageIsOneLineAndStatusTwo) {
    expectWrongUsage({}, "tamarin: a command is needed; try 'tamarin --help'");
    expectWrongUsage({"nothing"}, "tamarin: there is no command 'nothing'; try 'tamarin --help'");
    expectWrongUsage({"--wrong"}, "tamarin: The following argument was not expected: --wrong; "
                                  "try 'tamarin --help'");
    expectWrongUsage({"sample", "--wrong"},
                     "tamarin: The following argument was not expected: --wrong; "
                     "try 'tamarin sample --help'");
    expectWrongUsage({"sample", "--seed"},
                     "tamarin: --seed: 1 required N missing; try 'tamarin sample --help'");
    expectWrongUsage({"sample", "--seed", "1"},
                     "tamarin: one is no number; try 'tamarin sample --help'");
}

TEST(Toolbox, FailureIsOneLineAndStatusOne) {
    Output output = runSample({"sample", "--seed", "3"});
    EXPECT_EQ(output.status, exitFailed);
    EXPECT_EQ(output.err, "tamarin: three failed\n");
    output = runSample({"sample", "--seed", "2"});
    EXPECT_EQ(output.status, exitFailed);
    EXPECT_EQ(output.err, "tamarin: two is trouble\n");
    output = runSample({"sample", "--seed", "4"});
    EXPECT_EQ(output.status, exitFailed);
    EXPECT_TRUE(output.err.starts_with("tamarin: the solver cannot go on: the solver's way: "))
        << output.err;
}

TEST(Toolbox, HelpShowsTheExampleAndTheDefaults) {
    const Output output = runSample({"sample", "--help"});
    EXPECT_EQ(output.status, exitDone);
    EXPECT_EQ(output.err, "");
    EXPECT_NE(output.out.find("Does something"), std::string::npos);
    EXPECT_NE(output.out.find("Example:\n  tamarin sample --seed 3"), std::string::npos);
    EXPECT_NE(output.out.find("--seed N=7"), std::string::npos) << output.out;
}

TEST(Toolbox, JsonTakesAnyBytes) {
    testing::internal::CaptureStdout();
    printJson({{"name", "\xFF"}});
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "{\n  \"name\": \"\xEF\xBF\xBD\"\n}\n");
}

// One line says so, however much there was to write.
TEST(Program, HelpThatCannotBeWrittenIsAFailure) {
    const Scratch scratch;
    ASSERT_EQ(runTamarin({"prepare", "kuhn.limit.3p.game", "--quiet"}, scratch.path()).status,
              exitDone);
    for (const std::string asked :
         {"--help", "--version", "match --help", "rank AsKsQsJsTs", "rank AsKsQsJsTs --json",
          "index --sizes", "equity AA --vs KK", "tables --dry-run", "verify --quiet",
          "prepare kuhn.limit.3p.game --quiet", "show kuhn.limit.3p.game",
          "show kuhn.limit.3p.game --json", "exploit kuhn.limit.3p.game",
          "train kuhn.limit.3p.game --dry-run"}) {
        for (const std::string nowhere : {" >/dev/full", " >&-"}) {
            Process process(
                {"/bin/sh", "-c", "exec " + tamarinCommand({})[0] + " " + asked + nowhere},
                scratch.path());
            EXPECT_EQ(process.wait(), exitFailed) << asked;
            EXPECT_EQ(process.err(), "tamarin: could not write the result to standard output\n")
                << asked << nowhere;
        }
    }
}

// Progress that nobody can read is no reason to end the work.
TEST(Program, RemarksThatCannotBeWrittenAreNoFailure) {
    const Scratch scratch;
    for (const std::string asked :
         {"prepare kuhn.limit.3p.game", "train kuhn.limit.3p.game --iterations 100 --fresh",
          "train kuhn.limit.3p.game --iterations 200 --resume", "prepare kuhn.limit.3p.game",
          "verify"}) {
        Process process(
            {"/bin/sh", "-c", "exec " + tamarinCommand({})[0] + " " + asked + " 2>/dev/full"},
            scratch.path());
        EXPECT_EQ(process.wait(), exitDone) << asked;
    }
}

TEST(Program, ResultThatCannotBeWrittenIsAFailure) {
    const Scratch scratch;
    Process process({"/bin/sh", "-c",
                     "exec " + inBuild("bin/tamarin") +
                         " match "
                         "kuhn.limit.3p.game --hands 3 --quiet --seat a=bot:call "
                         "--seat b=bot:call --seat c=bot:call >/dev/full"},
                    scratch.path());
    EXPECT_EQ(process.wait(), exitFailed);
    EXPECT_EQ(process.err(), "tamarin: could not write the result to standard output\n");
}

} // namespace tamarin::test
