#include "toolbox/tamarin_process.h"

#include <fstream>

#include <nlohmann/json.hpp>

namespace tamarin::test {
namespace {

constexpr const char* limit = "holdem.limit.2p.reverse_blinds.game";

void write(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

TEST(AnalyseCommand, TakesEveryGame) {
    const Scratch scratch;
    write(scratch / "no.log", "STATE:0:r300c/cc/cc/cc:AhAd|KhKd/2c3c4s/8s/9h:300|-300:x|y\n");
    const Ended nolimit = runTamarin(
        {"analyse", "no.log", "--game", "holdem.nolimit.2p.reverse_blinds.game"}, scratch.path());
    EXPECT_EQ(nolimit.status, 0) << nolimit.err;
    EXPECT_NE(nolimit.out.find("\nx: +300 chips\n"), std::string::npos) << nolimit.out;
    const Ended kuhn =
        runTamarin({"match", "kuhn.limit.3p.game", "--hands", "30", "--quiet", "--log", "kuhn.log",
                    "--seat", "a=bot:rule", "--seat", "b=bot:random", "--seat", "c=bot:call"},
                   scratch.path());
    ASSERT_EQ(kuhn.status, 0);
    const Ended three = runTamarin({"analyse", "kuhn.log", "--json"}, scratch.path());
    EXPECT_EQ(three.status, 0) << three.err;
    EXPECT_EQ(nlohmann::json::parse(three.out)["players"].size(), 3U);
}

TEST(AnalyseCommand, SaysWhichLineIsWrong) {
    const Scratch scratch;
    const std::string good = "STATE:0:f:Ts8d|Ad7s:5|-5:a|b\n";
    const auto error = [&](const std::string& log, std::vector<std::string> more) {
        write(scratch / "hands.log", log);
        more.insert(more.begin(), {"analyse", "hands.log", "--quiet"});
        const Ended run = runTamarin(more, scratch.path());
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(run.out, "");
        return run.err;
    };
    const std::vector<std::string> game{"--game", limit};
    EXPECT_EQ(error(good + "# a comment\nSTATE:1:f:Ts8d|Ad7s:7|-5:a|b\n", game),
              "tamarin: hands.log:3: seat 0 did not win 7\n");
    EXPECT_EQ(error(good + "nonsense\n", game),
              "tamarin: hands.log:2: no state of this game at its beginning\n");
    EXPECT_EQ(error(good + "STATE:1:f:Ts8d|Ad7s:5|-5:a|c\n", game),
              "tamarin: hands.log:2: 'c' did not sit in the hands before\n");
    EXPECT_EQ(error("", game), "tamarin: hands.log: there is no hand in this log\n");
    EXPECT_EQ(error(good, {}), "tamarin: the log does not begin with the game's name; say it with "
                               "--game; try 'tamarin analyse --help'\n");
    EXPECT_EQ(error(good, {"--game", limit, "--strategy", "you=call"}),
              "tamarin: --strategy: nobody in hands.log is named 'you'\n");
}

TEST(AnalyseCommand, KnowsWhatItCannotFree) {
    const Scratch scratch;
    const Ended match = runTamarin({"match", "kuhn.limit.2p.game", "--luck-free", "--seat",
                                    "a=bot:rule", "--seat", "b=bot:call"},
                                   scratch.path());
    EXPECT_EQ(match.status, 2);
    EXPECT_EQ(match.err, "tamarin: --luck-free: results are freed of luck in limit games for two "
                         "with two hole cards alone; try 'tamarin match --help'\n");
    const Ended unknown =
        runTamarin({"match", limit, "--luck-free", "--seat", "a=./mine", "--seat", "b=listen:0"},
                   scratch.path());
    EXPECT_EQ(unknown.status, 2);
}

} // namespace
} // namespace tamarin::test
