#include "support/file.h"
#include "support/tree_paths.h"
#include "toolbox/command.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <set>

namespace tamarin::test {

namespace {

std::vector<std::string> commandNames() {
    CLI::App app;
    int status = 0;
    for (const AddCommand add : allCommands())
        add(app, status);
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({}))
        names.push_back(command->get_name());
    return names;
}

} // namespace

TEST(Commands, HaveNamesOfTheirOwn) {
    const auto names = commandNames();
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
    EXPECT_GE(names.size(), 2U);
}

TEST(Commands, AreListedWithAnExampleEach) {
    const Ended list = runTamarin({"--help"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.err, "");
    for (const std::string& name : commandNames()) {
        EXPECT_NE(list.out.find("\n  " + name + " "), std::string::npos) << name;
        const Ended help = runTamarin({name, "--help"});
        EXPECT_EQ(help.status, 0) << name;
        EXPECT_EQ(help.err, "") << name;
        EXPECT_NE(help.out.find("Example:\n  tamarin " + name), std::string::npos) << name;
    }
}

TEST(Commands, RefuseUnknownOptionsInOneLine) {
    for (const std::string& name : commandNames()) {
        const Ended run = runTamarin({name, "--no-such-option"});
        EXPECT_EQ(run.status, 2) << name;
        EXPECT_EQ(run.out, "") << name;
        EXPECT_TRUE(run.err.starts_with("tamarin: ")) << run.err;
        EXPECT_TRUE(run.err.ends_with("try 'tamarin " + name + " --help'\n")) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
}

TEST(Program, TellsItsVersion) {
    const Ended run = runTamarin({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.starts_with("tamarin "));
}

// A log would otherwise take the number of the closed standard error, and hold what belongs there.
TEST(Program, KeepsItsFilesApartFromClosedStreams) {
    const Scratch scratch;
    const auto match = [&](const std::string& closed) {
        Process process(
            {"/bin/sh", "-c",
             "exec " + inBuild("bin/tamarin") +
                 " match kuhn.limit.3p.game --hands 20 --seed 1 --verbose "
                 "--log m.log --seat a=bot:rule --seat b=bot:call --seat c=bot:random " +
                 closed},
            scratch.path());
        (void)process.wait();
        const Result<std::string> log = readWholeFile(scratch / "m.log");
        return log ? *log : log.error();
    };
    const std::string whole = match("");
    EXPECT_EQ(std::count(whole.begin(), whole.end(), '\n'),
              std::count(whole.begin(), whole.end(), '#') + 20)
        << whole;
    EXPECT_EQ(match("2>&-"), whole);
    EXPECT_EQ(match("<&- 2>&-"), whole);
}

} // namespace tamarin::test
