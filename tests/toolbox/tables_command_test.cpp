#include "eval/scratch_directory.h"
#include "toolbox/run_toolbox.h"

#include <filesystem>
#include <fstream>

namespace tamarin::test {

TEST(TablesCommand, MakesTheSevenCardTableOnce) {
    const ScratchDirectory scratch;
    const std::string directory = scratch.at("");
    ToolboxRun run =
        callTamarin({"tables", "--only", "tpt", "--dir", directory, "--dry-run", "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.json()["tables"][0]["state"], "missing");
    EXPECT_EQ(run.json()["tables"][0]["make"], true);
    EXPECT_FALSE(std::filesystem::exists(scratch.at("lookup")));

    run = callTamarin({"tables", "--only", "tpt", "--dir", directory, "--json", "--quiet"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.json()["tables"][0]["made"], true);
    EXPECT_EQ(run.json()["tables"][1]["made"], true);
    EXPECT_EQ(std::filesystem::file_size(scratch.at("lookup/tpt")), 129951336U);

    run = callTamarin({"tables", "--only", "tpt", "--dir", directory, "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.json()["tables"][0]["made"], false);

    std::filesystem::resize_file(scratch.at("lookup/tpt"), 12);
    run = callTamarin({"tables", "--only", "tpt", "--dir", directory, "--dry-run"});
    EXPECT_NE(run.out.find("has 12 bytes, not 129951336; would make"), std::string::npos)
        << run.out;
    EXPECT_EQ(std::filesystem::file_size(scratch.at("lookup/tpt")), 12U);
    run = callTamarin({"tables", "--only", "tpt", "--dir", directory, "--threads", "1", "--quiet"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("12 bytes, not 129951336: rebuilding it"), std::string::npos) << run.err;
    EXPECT_TRUE(std::filesystem::exists(scratch.at("lookup/tpt.bad")));
}

TEST(TablesCommand, SaysWhatIsWrong) {
    ToolboxRun run = callTamarin({"tables", "--only", "tpt,nonsense"});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("there is no table 'nonsense'; the tables are: tpt"), std::string::npos)
        << run.err;
    const ScratchDirectory scratch;
    std::ofstream(scratch.at("lookup"));
    run = callTamarin({"tables", "--only", "tpt", "--dir", scratch.at("")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
}

} // namespace tamarin::test
