#include "toolbox/token_option.h"

#include "toolbox/command.h"
#include "toolbox/tamarin_process.h"

#include <fstream>

namespace tamarin::test {

using tamarin::test::runTamarin;
using tamarin::test::Scratch;

namespace {

std::string readFrom(const std::string& contents) {
    const Scratch scratch;
    std::ofstream(scratch / "token") << contents;
    return readToken({"", scratch / "token"});
}

std::string usageErrorOf(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"bot", "call", "kuhn.limit.3p.game", "127.0.0.1", "1"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const auto run = runTamarin(arguments);
    EXPECT_EQ(run.status, 2);
    return run.err;
}

} // namespace

TEST(TokenOption, IsReadFromTheCommandLineOrAFile) {
    EXPECT_EQ(readToken({"", ""}), "");
    EXPECT_EQ(readToken({"s3cret", ""}), "s3cret");
    for (const char* contents : {"s3cret", "s3cret\n", "s3cret\r\n"})
        EXPECT_EQ(readFrom(contents), "s3cret");
}

TEST(TokenOption, RefusesAFileThatHoldsNone) {
    for (const char* contents : {"", "\n", "two words\n", "two\nlines\n", "s3cret\n\n"})
        EXPECT_THROW(readFrom(contents), UsageError) << contents;
    EXPECT_THROW(readFrom(std::string(201, 'x')), UsageError);
    EXPECT_THROW(readToken({"", "/nonexistent"}), UsageError);
    EXPECT_THROW(readToken({"", "/dev/zero"}), UsageError);
}

TEST(TokenOption, WrongUsage) {
    for (const char* token : {"", "two words", "\t"})
        EXPECT_EQ(usageErrorOf({"--token", token}),
                  "tamarin: --token: a token is 1 to 200 printable ASCII characters without a "
                  "space; try 'tamarin bot --help'\n");
    EXPECT_EQ(usageErrorOf({"--token", "a", "--token-file", "b"}),
              "tamarin: --token excludes --token-file; try 'tamarin bot --help'\n");
}

} // namespace tamarin::test
