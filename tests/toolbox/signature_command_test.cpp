#include "toolbox/run_toolbox.h"
#include "toolbox/signature_report.h"
#include "toolbox/tamarin_process.h"

#include <cstdlib>
#include <filesystem>
#include <set>

namespace tamarin::test {

namespace {

const Signature computed({{"ranks", 1}, {"match", 0xabc}});
const Signature other({{"ranks", 1}, {"match", 0xabd}});

struct Report {
    int status;
    std::string out;
    std::string err;
};
Report report(const Signature& expected, const SignatureOptions& options) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = reportSignature(computed, expected, options);
    std::fflush(stdout);
    const std::string out = testing::internal::GetCapturedStdout();
    return {status, out, testing::internal::GetCapturedStderr()};
}

} // namespace

TEST(SignatureReport, IsOneLine) {
    const Report printed = report(other, {});
    EXPECT_EQ(printed.status, 0);
    EXPECT_EQ(printed.out, signatureText(computed.whole()) + "\n");
    EXPECT_EQ(printed.err, "");
}

TEST(SignatureReport, ListsParts) {
    SignatureOptions options;
    options.parts = true;
    EXPECT_EQ(report(other, options).out,
              signatureText(computed.whole()) +
                  "\n  0000000000000001 ranks\n  0000000000000abc match\n");
}

TEST(SignatureReport, ChecksTheNumberAndNamesTheParts) {
    SignatureOptions options;
    options.check = true;
    EXPECT_EQ(report(computed, options).status, 0);
    EXPECT_EQ(report(computed, options).err, "");
    const Report wrong = report(other, options);
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.out, signatureText(computed.whole()) + "\n");
    EXPECT_EQ(wrong.err, "tamarin: the signature is not " + signatureText(other.whole()) +
                             "; what differs: match\n");
}

TEST(SignatureReport, IsJson) {
    SignatureOptions options;
    options.json = true;
    const auto json = nlohmann::json::parse(report(other, options).out);
    EXPECT_EQ(json["signature"], signatureText(computed.whole()));
    EXPECT_EQ(json["expected"], signatureText(other.whole()));
    EXPECT_EQ(json["parts"]["match"], "0000000000000abc");
    EXPECT_EQ(json["different"], nlohmann::json({"match"}));
}

// Wherever the program runs, whatever the environment says, with any number of threads.
TEST(SignatureCommand, NeedsNothingAndLeavesNothing) {
    const test::Scratch scratch;
    ::setenv("OMP_NUM_THREADS", "2", 1);
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    const test::Ended run =
        test::runTamarin({"signature", "--check", "--threads", "3"}, scratch.path());
    ::unsetenv("OMP_NUM_THREADS");
    ::unsetenv("LC_ALL");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, signatureText(expectedSignature().whole()) + "\n");
    EXPECT_EQ(run.err, "");
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path()))
        files.insert(entry.path().filename());
    EXPECT_EQ(files, (std::set<std::string>{"stdout.txt", "stderr.txt"})); // the test's own
}

} // namespace tamarin::test
