#include "report/count_of.h"
#include "toolbox/kuhn_game.h"
#include "toolbox/program.h"

#include <nlohmann/json.hpp>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

const std::string file = "strategies/kuhn.limit.3p/strategy0";

class Show : public ProgramTest {
protected:
    Show() { EXPECT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0); }
};

TEST_F(Show, PrintsTheDump) {
    const Outcome ofFile = run({"show", file});
    ASSERT_EQ(ofFile.status, 0) << ofFile.err;
    EXPECT_TRUE(ofFile.out.starts_with("0:0:0: \xC2\xBB ( call: ")) << ofFile.out.substr(0, 80);
    EXPECT_EQ(countOf(ofFile.out, "\n"), 49U);
    EXPECT_EQ(run({"show", kuhnGame}).out, ofFile.out); // the seats' files are one strategy
    EXPECT_EQ(run({"show", file, "--game", kuhnGame}).out, ofFile.out);
}

TEST_F(Show, PrintsEachFileWhereTheyDiffer) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "5", "--out", "other", "--quiet"}).status, 0);
    fs::copy_file(directory / "other/strategy1", directory / "strategies/kuhn.limit.3p/strategy1",
                  fs::copy_options::overwrite_existing);
    const Outcome outcome = run({"show", kuhnGame});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(countOf(outcome.out, "strategy0:\n"), 1U);
    EXPECT_EQ(countOf(outcome.out, "strategy2:\n"), 1U);
}

TEST_F(Show, PrintsJson) {
    const Outcome outcome = run({"show", kuhnGame, "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    ASSERT_EQ(json["informationSets"].size(), 48U);
    EXPECT_LT(json["nashConv"].get<double>(), 1e-6);
    double reach = 0.0;
    for (const auto& set : json["informationSets"]) {
        double total = 0.0;
        for (const auto& share : set["strategy"])
            total += share.get<double>();
        EXPECT_NEAR(total, 1.0, 1e-9);
        if (set["actions"] == "")
            reach += set["reach"].get<double>();
    }
    EXPECT_NEAR(reach, 1.0, 1e-9);
    EXPECT_EQ(json["informationSets"][3]["key"], "0:0:3:");
    EXPECT_EQ(json["informationSets"][3]["card"], "A");
}

TEST_F(Show, WritesAPageThatNeedsNothingElse) {
    ASSERT_EQ(run({"show", kuhnGame, "--html", "page.html"}).status, 0);
    const std::string page = contentsOf(directory / "page.html");
    EXPECT_TRUE(page.starts_with("<!doctype html>"));
    for (const char* fetched : {"http", "<script", "src=", "@import", "url("})
        EXPECT_EQ(page.find(fetched), std::string::npos) << fetched;
    EXPECT_EQ(countOf(page, "<details"), 12U); // decisions
    EXPECT_EQ(countOf(page, "</details>"), 12U);
    EXPECT_EQ(countOf(page, "class=bar"), 48U); // information sets
    EXPECT_EQ(countOf(page, "<div class=end>"), 13U);
}

// "--html" and a strategy's name once was the end of the strategy.
TEST_F(Show, WritesPagesOverPagesOnly) {
    ASSERT_EQ(run({"show", kuhnGame, "--html", "page.html"}).status, 0);
    EXPECT_EQ(run({"show", kuhnGame, "--html", "page.html"}).status, 0);
    const std::string strategy = contentsOf(directory / file);
    const Outcome outcome = run({"show", kuhnGame, "--html", file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "tamarin: " + file +
                               " is there and is not a page: give --html another "
                               "name, or move the file away\n");
    EXPECT_EQ(contentsOf(directory / file), strategy);
}

TEST_F(Show, RefusesWhatIsNoStrategy) {
    writeFile(directory / file, "rubbish");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"show", file},
                                                      {"show", file, "--json"},
                                                      {"show", kuhnGame, "--html", "page.html"},
                                                      {"show", "absent", "--game", kuhnGame}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_FALSE(fs::exists(directory / "page.html"));
}

// It once said that there is no game of the directory's name.
TEST_F(Show, NamesTheFileThatIsNotThere) {
    const Outcome outcome = run({"show", "absent"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "tamarin: absent is not there; name a file, or a game as NAME.game\n");
}

} // namespace
} // namespace tamarin::test
