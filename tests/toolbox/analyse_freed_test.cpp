// Results freed of luck, through the commands: of the whole deck, which takes some seconds to
// prepare.
#include "toolbox/tamarin_process.h"

#include <cmath>
#include <fstream>

#include <nlohmann/json.hpp>

namespace tamarin::test {
namespace {

constexpr const char* limit = "holdem.limit.2p.reverse_blinds.game";

// The match frees its hands as the analysis of its log does; and the results are right.
TEST(AnalyseCommand, FreesWhatAMatchLogged) {
    const Scratch scratch;
    const Ended match = runTamarin({"match", limit, "--hands", "400", "--duplicate", "--json",
                                    "--quiet", "--luck-free", "--log", "hands.log", "--seat",
                                    "a=bot:rule", "--seat", "b=bot:random"},
                                   scratch.path());
    ASSERT_EQ(match.status, 0) << match.err;
    const auto played = nlohmann::json::parse(match.out);
    const Ended run = runTamarin({"analyse", "hands.log", "--json", "--quiet", "--strategy",
                                  "a=rule", "--strategy", "b=uniform", "--html", "page.html"},
                                 scratch.path());
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["hands"], 400);
    EXPECT_EQ(json["duplicateBlocks"], 200);
    const auto& byBlock = json["players"][0]["byBlock"];
    EXPECT_EQ(byBlock["asPlayed"]["mean"], played["players"][0]["chipsPerHand"]["mean"]);
    EXPECT_EQ(byBlock["luckFree"]["mean"], played["players"][0]["luckFreeChipsPerHand"]["mean"]);
    EXPECT_EQ(byBlock["worthOfDeals"]["mean"], played["players"][0]["worthOfDealsPerHand"]["mean"]);
    // Three counts of one thing, within four times what chance allows either.
    const auto mean = [&](const char* name) { return byBlock[name]["mean"].get<double>(); };
    const auto error = [&](const char* name) {
        return byBlock[name]["plusMinus95"].get<double>() / 2;
    };
    EXPECT_LT(std::abs(mean("luckFree") - mean("asPlayed")),
              4 * (error("luckFree") + error("asPlayed")));
    EXPECT_LT(std::abs(mean("luckFree") - mean("worthOfDeals")),
              4 * (error("luckFree") + error("worthOfDeals")));
    EXPECT_LT(error("luckFree"), 0.8 * error("asPlayed"));
    std::ifstream page(scratch / "page.html");
    std::string first;
    std::getline(page, first);
    EXPECT_EQ(first, "<!doctype html>");
}

TEST(AnalyseCommand, RefusesAStrategyThatTheLogBelies) {
    const Scratch scratch;
    std::ofstream(scratch / "hands.log") << "STATE:0:f:Ts8d|Ad7s:5|-5:a|b\n";
    const Ended run =
        runTamarin({"analyse", "hands.log", "--quiet", "--game", limit, "--strategy", "b=call"},
                   scratch.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "tamarin: hand 0: seat 1 did what its strategy never does there\n");
}

} // namespace
} // namespace tamarin::test
