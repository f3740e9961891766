// Lines that read well and cannot be, between good ones, in each of the four games and over a real
// socket. Such a line once ended the player. Every good line is answered; each of the others costs
// one line on standard error, and nothing else.
#include "driver/KuhnAgent.h"
#include "driver/LimitHoldemAgent.h"
#include "driver/holdem_directory.h"
#include "driver/loopback_dealer.h"
#include "driver/process.h"
#include "driver/small_holdem.h"
#include "game/games.h"
#include "support/tree_paths.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const std::string playerProgram = inBuild("bin/player");

struct Session {
    std::string good; // a state that asks for an answer
    std::vector<std::string> lines;

    // All lines, a good one before each and at the end.
    std::string text() const {
        std::string all;
        for (const std::string& line : lines)
            all += good + "\r\n" + line + "\r\n";
        return all + good + "\r\n";
    }
    std::string errors() const {
        std::string all;
        for (const std::string& line : lines)
            all += "ERROR: could not read match state: " + line + "\n";
        return all;
    }
    // As many answers as good lines, each a legal one.
    void expectAnswers(LoopbackDealer& dealer) const {
        for (size_t i = 0; i <= lines.size(); ++i) {
            const std::string answer = dealer.readLine();
            EXPECT_TRUE(answer == good + ":c\r\n" || answer == good + ":f\r\n" ||
                        answer == good + ":r\r\n")
                << i << ": " << answer;
        }
    }
};

const Session kuhnLines{"MATCHSTATE:0:7:crf:Ks||",
                        {"MATCHSTATE:0:0::||", "MATCHSTATE:0:7:crf:Ks|Ks|",
                         "MATCHSTATE:0:7:crfc:Ks|Ks|", "MATCHSTATE:0:7:crfc:Ks||",
                         "MATCHSTATE:256:7:crf:Ks||", "MATCHSTATE:0:4294967296::Ks||"}};
// In the two-player games seat 1 begins, and seat 0 from the flop on.
const Session twoPlayerLines{"MATCHSTATE:1:7::|AsKs",
                             {"MATCHSTATE:1:0::|", "MATCHSTATE:1:0::|AsAs",
                              "MATCHSTATE:0:0:cc/:AsKs|/As2c3c", "MATCHSTATE:1:0:cc/c:|AsKs/2c2c2c",
                              "MATCHSTATE:0:0:cc/:|/As2c3c", "MATCHSTATE:1:4294967296::|AsKs"}};
const Session threePlayerLines{
    "MATCHSTATE:2:7::||AsKs",
    {"MATCHSTATE:2:0::||", "MATCHSTATE:2:0::||AsAs", "MATCHSTATE:0:0:ccc/:AsKs||/As2c3c",
     "MATCHSTATE:1:0:ccc/c:|AsKs|/2c2c2c", "MATCHSTATE:0:0:ccc/:||/As2c3c",
     "MATCHSTATE:2:4294967296::||AsKs"}};

// The playerProgram player in its own process.
void playInProcess(const PlayingDirectory& directory, const std::string& game,
                   const Session& session) {
    LoopbackDealer dealer;
    Process player({playerProgram, game, "127.0.0.1", std::to_string(dealer.port())},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    ASSERT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    dealer.send(session.text());
    session.expectAnswers(dealer);
    dealer.hangUp();
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(player.err(), session.errors());
}

// Has the agent write its strategy, so that the playerProgram starts at once.
template <class MakeAgent>
void prepare(MakeAgent make) {
    testing::internal::CaptureStdout();
    make();
    testing::internal::GetCapturedStdout();
}

TEST(SixLines, DoNotDisturbKuhn) {
    const PlayingDirectory directory;
    prepare([] { KuhnAgent("kuhn.limit.3p.game", {1, 2000}); });
    playInProcess(directory, "kuhn.limit.3p.game", kuhnLines);
}

TEST(SixLines, DoNotDisturbLimitForTwo) {
    const HoldemDirectory directory;
    const char* const game = "holdem.limit.2p.reverse_blinds.game";
    prepare([&] { LimitHoldemAgent(game, 100); });
    playInProcess(directory, game, twoPlayerLines);
}

TEST(SixLines, DoNotDisturbNoLimit) {
    const HoldemDirectory directory;
    const char* const game = "holdem.nolimit.2p.reverse_blinds.game";
    prepare([&] { LimitHoldemAgent(game, 100); });
    playInProcess(directory, game, twoPlayerLines);
}

// The strategy of the whole game has 10 GB: the agent plays one of the first round, in this
// process.
TEST(SixLines, DoNotDisturbLimitForThree) {
    const PlayingDirectory directory;
    const GamePtr game = loadGameFile("holdem.limit.3p.game");
    auto hands = std::make_unique<FunctionHands>();
    hands->bucketOf = [](int, int, int, const uint8_t*) { return uint8_t{3}; };
    hands->equityOf = [](int, int, const uint8_t*) { return 0.5; };
    LimitHoldemAgent agent("holdem.limit.3p.game", solverOf(*game, firstRoundStrategy(*game)),
                           std::move(hands));
    LoopbackDealer dealer;
    std::thread dealing([&] {
        ASSERT_TRUE(dealer.accept());
        ASSERT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
        dealer.send(threePlayerLines.text());
        threePlayerLines.expectAnswers(dealer);
        dealer.hangUp();
    });
    testing::internal::CaptureStderr();
    EXPECT_TRUE(agent.connect("127.0.0.1", dealer.port()));
    EXPECT_TRUE(agent.play());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), threePlayerLines.errors());
    dealing.join();
    agent.disconnect();
}

} // namespace
} // namespace tamarin::test
