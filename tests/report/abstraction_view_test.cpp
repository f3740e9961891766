#include "report/abstraction_view.h"

#include "clustering/sparse_abstraction.h"
#include "table_builder/table_summary.h"
#include "toolbox/run_toolbox.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <atomic>
#include <set>

#include <fmt/format.h>

namespace tamarin::test {
namespace {

class AbstractionViews : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("mine");
    }
};

std::vector<BucketSummary> bucketsOf(const std::vector<uint64_t>& hands) {
    std::vector<BucketSummary> buckets;
    for (const uint64_t count : hands)
        buckets.push_back({count, 4 * count, 0, 0});
    return buckets;
}

TEST(BucketSizes, AreSpreadOverTenEqualParts) {
    const BucketSizes sizes = sizesOf(bucketsOf({7, 0, 99, 30, 31, 0}));
    EXPECT_EQ(sizes.empty, 2U);
    EXPECT_EQ(sizes.least, 0U);
    EXPECT_EQ(sizes.median, 7U);
    EXPECT_EQ(sizes.greatest, 99U);
    ASSERT_EQ(sizes.histogram.size(), 10U);
    EXPECT_EQ(sizes.histogram[0].buckets, 3U);
    EXPECT_EQ(sizes.histogram[0].to, 9U);
    EXPECT_EQ(sizes.histogram[3].from, 30U);
    EXPECT_EQ(sizes.histogram[3].buckets, 2U);
    EXPECT_EQ(sizes.histogram[9].buckets, 1U);
}

TEST(BucketSizes, ThatAreAllTheSameAreOnePart) {
    const BucketSizes sizes = sizesOf(bucketsOf({5, 5, 5}));
    ASSERT_EQ(sizes.histogram.size(), 1U);
    EXPECT_EQ(sizes.histogram[0].from, 5U);
    EXPECT_EQ(sizes.histogram[0].to, 5U);
    EXPECT_EQ(sizes.histogram[0].buckets, 3U);
}

TEST_F(AbstractionViews, TextOfPreflop) {
    std::vector<double> equities(roundSizes[0], 0.5);
    writeSparse(equityPath(2, 0), roundSizes[0], equities);
    const ToolboxRun run = callTamarin({"show", "lookup/mine", "--round", "preflop"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.starts_with(
        "lookup/mine: card abstraction\n"
        "method emd, seed 77, clusters of starting hands 8, restarts 3, sample 20,000\n\n"
        "           buckets   empty       least      median    greatest     mean   within  "
        "between\n"
        "pre-flop        20       0           8           8           9   0.5000   0.0000   0.0000"
        "\n"))
        << run.out;
    // 169 = 9 x 9 + 11 x 8 hands.
    EXPECT_NE(run.out.find("pre-flop: buckets by their hands\n"
                           "           8 ..           8      11  55.0 % "
                           "########################################\n"
                           "           9 ..           9       9  45.0 % "
                           "#################################\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(run.out.find("flop: buckets"), run.out.find("pre-flop: buckets") + 4);
    const std::string grid = run.out.substr(run.out.find("above the diagonal"));
    for (size_t i = 0; i < 169; ++i)
        EXPECT_NE(grid.find(fmt::format("{:>4}{:>4}", startingHands()[i].name, i % 20)),
                  std::string::npos)
            << startingHands()[i].name;
}

// Flop hands 0 to 5 are named by what is known of them, all others lie in bucket 0.
TEST_F(AbstractionViews, JsonOfTheFlop) {
    writeSparse<double>(equityPath(2, 1), roundSizes[1], {0.5, 0.25, 1.0, 0.75, 0.5, 0.125});
    const std::vector<std::string> arguments{"show",   "mine",      "--round", "flop",
                                             "--json", "--threads", "2"};
    const ToolboxRun run = callTamarin(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    const auto json = run.json();
    EXPECT_EQ(json["abstraction"], "lookup/mine");
    EXPECT_EQ(json["method"], "emd");
    EXPECT_EQ(json["seed"], 77);
    EXPECT_FALSE(json.contains("startingHands"));
    ASSERT_EQ(json["rounds"].size(), 1U);
    const auto& flop = json["rounds"][0];
    EXPECT_EQ(flop["round"], "flop");
    EXPECT_EQ(flop["buckets"], 7);
    EXPECT_EQ(flop["empty"], 2);
    EXPECT_EQ(flop["least"], 0);
    EXPECT_EQ(flop["median"], 1);
    EXPECT_EQ(flop["greatest"], 1286786);
    EXPECT_EQ(flop["sizes"][0]["buckets"], 6);
    EXPECT_EQ(flop["sizes"][9]["buckets"], 1);
    ASSERT_EQ(flop["each"].size(), 7U);
    EXPECT_EQ(flop["each"][2]["hands"], 3);
    EXPECT_EQ(flop["each"][6]["meanEquity"], 1.0);
    EXPECT_EQ(flop["each"][6]["spread"], 0.0);
    EXPECT_EQ(flop["each"][5]["meanEquity"], 0.125);
    double share = 0;
    uint64_t deckHands = 0;
    for (const auto& bucket : flop["each"]) {
        share += bucket["deckShare"].get<double>();
        deckHands += bucket["deckHands"].get<uint64_t>();
    }
    EXPECT_NEAR(share, 1, 1e-12);
    EXPECT_EQ(deckHands, 25989600U);
    EXPECT_GT(flop["spreadBetween"].get<double>(), 0);
    EXPECT_LE(flop["spreadBetween"].get<double>(), flop["spread"].get<double>());
    auto one = arguments;
    one.back() = "1";
    EXPECT_EQ(callTamarin(one).out, run.out);
}

TEST_F(AbstractionViews, OneBucketHasItsHandsByEquity) {
    writeSparse<double>(equityPath(2, 1), roundSizes[1], {0.5, 0.25, 1.0, 0.75, 0.5, 0.125});
    const std::vector<std::string> arguments{"show", "lookup/mine/", "--round",
                                             "flop", "--bucket",     "2"};
    const ToolboxRun run = callTamarin(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("lookup/mine: flop bucket 2 of 7\n"
                                    "3 hands that are distinct up to suits, 0.0"))
        << run.out;
    const auto equity = [](size_t hand, const std::string& text) {
        return fmt::format("  {:<15}{}\n", handAt(1, hand), text);
    };
    EXPECT_NE(run.out.find("3 of its hands, spread evenly over its equities:\n" +
                           equity(1, "0.2500") + equity(4, "0.5000") + equity(3, "0.7500")),
              std::string::npos)
        << run.out;
    auto asJson = arguments;
    asJson.push_back("--json");
    const auto json = callTamarin(asJson).json();
    EXPECT_EQ(json["round"], "flop");
    EXPECT_EQ(json["buckets"], 7);
    EXPECT_EQ(json["bucket"]["bucket"], 2);
    EXPECT_EQ(json["bucket"]["hands"], 3);
    EXPECT_EQ(json["bucket"]["examples"][2]["index"], 3);
    EXPECT_EQ(json["bucket"]["examples"][2]["equity"], 0.75);
    auto empty = arguments;
    empty.back() = "1";
    const ToolboxRun none = callTamarin(empty);
    EXPECT_EQ(none.status, 0);
    EXPECT_NE(none.out.find("\n0 hands that are distinct up to suits, 0.0000 %"),
              std::string::npos);
}

TEST_F(AbstractionViews, WithoutEquitiesSaysWhereTheyComeFrom) {
    const ToolboxRun run =
        callTamarin({"show", "lookup/mine", "--round", "1", "--bucket", "2", "--dir", "."});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(
        run.out.find("no equities: lookup/flop_2p: could not open: No such file or directory; "
                     "'tamarin tables --only equity' makes it\n"
                     "3 of its hands, spread evenly over its hand indices:\n  " +
                     handAt(1, 1) + "\n"),
        std::string::npos)
        << run.out;
    const auto json = callTamarin({"show", "mine", "--round", "0", "--json"}).json();
    EXPECT_FALSE(json["rounds"][0].contains("meanEquity"));
    EXPECT_TRUE(json["rounds"][0].contains("noEquities"));
    EXPECT_EQ(json["startingHands"][startingHands()[57].name], 17);
    const auto one =
        callTamarin({"show", "mine", "--round", "0", "--bucket", "3", "--json"}).json();
    EXPECT_FALSE(one["bucket"].contains("meanEquity"));
    EXPECT_EQ(one["bucket"]["noEquities"], json["rounds"][0]["noEquities"]);
}

// A stop within the turn, and the steps until then.
TEST_F(AbstractionViews, AreStoppedWithoutCallingAnythingDamaged) {
    writeSparse<double>(equityPath(2, 2), roundSizes[2], {0.5, 0.25});
    AbstractionQuestion question;
    question.name = "mine";
    std::atomic<bool> stop{false};
    std::set<std::string> steps;
    question.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
        EXPECT_LE(done, total);
        steps.insert(step);
        stop = step == "weighing the buckets of the turn";
    };
    question.stop = [&] { return stop.load(); };
    const auto view = viewAbstraction(question);
    ASSERT_FALSE(view.ok());
    EXPECT_EQ(view.error(), "stopped");
    EXPECT_EQ(steps, (std::set<std::string>{"weighing the buckets of the flop",
                                            "weighing the buckets of the turn"}));
    stop = true;
    question.round = 0;
    EXPECT_FALSE(viewAbstraction(question).ok());
    stop = false;
    EXPECT_TRUE(viewAbstraction(question).ok());
}

TEST_F(AbstractionViews, ShowProgressAndEndAtTheFirstCtrlC) {
    const ToolboxRun loud = callTamarin({"show", "mine", "--round", "flop"});
    EXPECT_TRUE(loud.err.starts_with("weighing the buckets of the flop: ")) << loud.err;
    EXPECT_EQ(callTamarin({"show", "mine", "--round", "flop", "--quiet"}).err, "");
    Process shown(tamarinCommand({"show", "mine", "--threads", "1"}), ".");
    ASSERT_TRUE(shown.says("weighing the buckets of the flop: ")); // the turn and the river follow
    kill(shown.pid(), SIGINT);
    EXPECT_EQ(shown.wait(), 130);
    EXPECT_EQ(shown.out(), "");
    EXPECT_EQ(shown.err().find("weighing the buckets of the river"), std::string::npos);
    EXPECT_EQ(shown.err().find("damaged"), std::string::npos) << shown.err();
}

TEST_F(AbstractionViews, SaysWhatIsWrong) {
    const auto refusal = [](const std::vector<std::string>& more, int status) {
        std::vector<std::string> arguments{"show"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ToolboxRun run = callTamarin(arguments);
        EXPECT_EQ(run.status, status) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        return run.err;
    };
    EXPECT_EQ(refusal({"mine", "--round", "flop", "--bucket", "7"}, 1),
              "tamarin: lookup/mine has no bucket 7 on the flop: they are 0 to 6\n");
    EXPECT_NE(refusal({"mine", "--round", "fourth"}, 2).find("there is no round \"fourth\""),
              std::string::npos);
    EXPECT_NE(refusal({"mine", "--bucket", "7"}, 2).find("--round"), std::string::npos);
    EXPECT_EQ(refusal({"yours", "--round", "flop"}, 1),
              "tamarin: there is no card abstraction yours, and --round is of one\n");
    writeSparse<double>(equityPath(2, 1), roundSizes[1], {0.5, 1.5});
    EXPECT_EQ(refusal({"mine", "--round", "flop"}, 1),
              "tamarin: lookup/flop_2p: damaged, hand 1 has an equity that is not from 0 to 1\n");
    writeSparse<uint16_t>("lookup/mine/turn", roundSizes[2], {2});
    EXPECT_NE(refusal({"mine", "--round", "preflop"}, 1).find("lookup/mine/turn: damaged"),
              std::string::npos);
    std::filesystem::remove("lookup/mine/abstraction");
    EXPECT_NE(refusal({"mine"}, 1).find("lookup/mine/abstraction"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
