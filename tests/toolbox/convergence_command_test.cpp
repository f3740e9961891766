#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"

#include <filesystem>
#include <fstream>

namespace tamarin::test {
namespace {

TEST(ConvergenceCommand, ShowsTheLogsOfTrainings) {
    const TempDirectory directory;
    const std::string trained = directory.file("kuhn");
    ASSERT_EQ(callTamarin({"train", "kuhn.limit.3p.game", "--iterations", "40", "--out", trained,
                           "--quiet"})
                  .status,
              exitDone);
    const ToolboxRun text = callTamarin({"convergence", trained + "/"});
    EXPECT_EQ(text.status, exitDone) << text.err;
    EXPECT_EQ(text.out.rfind(trained + "/convergence.jsonl: NashConv, chips/hand\n", 0), 0U)
        << text.out;
    const ToolboxRun json =
        callTamarin({"convergence", trained + "/convergence.jsonl", trained, "--json"});
    ASSERT_EQ(json.json()["curves"].size(), 2U);
    EXPECT_EQ(json.json()["curves"][1]["points"].back()["iteration"], 40);

    const std::string page = directory.file("page.html");
    const ToolboxRun drawn = callTamarin({"convergence", trained, "--html", page});
    EXPECT_EQ(drawn.out, "wrote " + page + "\n");
    EXPECT_GT(std::filesystem::file_size(page), 1000U);
    EXPECT_EQ(callTamarin({"convergence", trained, "--html", page}).status, exitDone);
    const ToolboxRun slip =
        callTamarin({"convergence", trained, "--html", trained + "/convergence.jsonl"});
    EXPECT_EQ(slip.status, exitFailed); // it is no page, and stays
    EXPECT_EQ(callTamarin({"convergence", trained}).out, text.out);
}

TEST(ConvergenceCommand, SaysWhichLogIsNone) {
    const TempDirectory directory;
    const std::string log = directory.file("log");
    std::ofstream(log) << "nonsense\n";
    EXPECT_EQ(callTamarin({"convergence", log}).err,
              "tamarin: " + log + ":1: not a line of a training's log\n");
    const ToolboxRun missing = callTamarin({"convergence", directory.file("none")});
    EXPECT_EQ(missing.status, exitFailed);
    EXPECT_NE(missing.err.find(directory.file("none")), std::string::npos);
    EXPECT_EQ(callTamarin({"convergence"}).status, exitUsage);
}

} // namespace
} // namespace tamarin::test
