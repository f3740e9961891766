// The program player as its own process, against a dealer on a real socket.
#include "driver/KuhnAgent.h"
#include "driver/holdem_directory.h"
#include "driver/loopback_dealer.h"
#include "driver/process.h"
#include "driver/scratch.h"

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const std::string program = TAMARIN_BINARY_DIR "/bin/player";
const std::string kuhn = "kuhn.limit.3p.game";

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome run(const PlayingDirectory& directory, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), program);
    Process process(arguments, directory.path());
    const int status = process.wait();
    return {status, process.out(), process.err()};
}

// Strategies for all seats, so that the player starts at once.
void prepareKuhn() {
    testing::internal::CaptureStdout();
    { KuhnAgent agent(kuhn.c_str(), {1, 20000}); }
    testing::internal::GetCapturedStdout();
}

TEST(Player, NeedsThreeArguments) {
    const PlayingDirectory directory;
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {kuhn}, {kuhn, "localhost"}}) {
        const Outcome outcome = run(directory, arguments);
        std::string echoed = program + "\n";
        for (const std::string& argument : arguments)
            echoed += argument + "\n";
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, echoed);
        EXPECT_EQ(outcome.err, "usage: player game server port\n");
    }
}

TEST(Player, SaysWhichGameCannotBeOpenedOrRead) {
    const PlayingDirectory directory;
    Outcome outcome = run(directory, {"none.game", "localhost", "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: could not open game none.game\n");
    EXPECT_EQ(outcome.out, program + "\nnone.game\nlocalhost\n1\n");

    PlayingDirectory::write("bad.game", "GAMEDEF\nnumRounds = 9\n");
    outcome = run(directory, {"bad.game", "localhost", "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "invalid number of rounds: 9\nERROR: could not read game bad.game\n");
}

TEST(Player, ComparesTheWholeNameOfTheGame) {
    const PlayingDirectory directory;
    const std::string path = "./" + kuhn;
    const Outcome outcome = run(directory, {path, "localhost", "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: unknown game " + path + "\n");
    EXPECT_FALSE(std::filesystem::exists("strategies")) << "nothing is trained for it";
}

TEST(Player, LooksAtThePortAfterTheAgentStands) {
    const PlayingDirectory directory;
    prepareKuhn();
    const Outcome outcome = run(directory, {kuhn, "localhost", "port"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: invalid port port\n");
}

TEST(Player, SaysThatTheDealerCannotBeReached) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer nobody;
    nobody.stopListening();
    const std::string port = std::to_string(nobody.port());
    Outcome outcome = run(directory, {kuhn, "127.0.0.1", port});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: could not connect to 127.0.0.1:" + port + "\n");
    outcome = run(directory, {kuhn, "no.such.host.invalid", port + "abc"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: could not look up address for no.such.host.invalid\n");
}

TEST(Player, PlaysToTheEndOfTheMatch) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer dealer;
    Process player({program, kuhn, "localhost", std::to_string(dealer.port()) + "trailing", "more"},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    dealer.send("# a comment\r\nMATCHSTATE:0:7:crf:As||\r\n");
    EXPECT_EQ(dealer.readLine(), "MATCHSTATE:0:7:crf:As||:c\r\n");
    dealer.send("MATCHSTATE:0:7:crfc:As|Ks|\r\nnonsense\r\nMATCHSTATE:2:8:rf:||As\r\n");
    EXPECT_EQ(dealer.readLine(), "MATCHSTATE:2:8:rf:||As:c\r\n");
    dealer.hangUp();
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(player.err(), "ERROR: could not read match state: nonsense\n");
    EXPECT_EQ(player.out(), program + "\n" + kuhn + "\nlocalhost\n" +
                                std::to_string(dealer.port()) + "trailing\nmore\n");
}

TEST(Player, SurvivesADealerThatGoesAway) {
    const PlayingDirectory directory;
    prepareKuhn();
    // Closed before the version is read, in mid-hand, and with an answer on its way.
    for (const int when : {0, 1, 2}) {
        LoopbackDealer dealer;
        Process player({program, kuhn, "localhost", std::to_string(dealer.port())},
                       directory.path());
        ASSERT_TRUE(dealer.accept());
        if (when > 0) {
            dealer.readLine();
            dealer.send("MATCHSTATE:1:7:c:|As|\r\n");
        }
        if (when > 1) {
            dealer.readLine();
            dealer.send("MATCHSTATE:0:8::As||\r\nMATCHSTATE:0:9::As||\r\nMATCHSTATE:0:9::As||\r\n");
        }
        dealer.reset();
        const int status = player.wait();
        EXPECT_TRUE(status == 0 || status == 1) << status;
        const std::string err = player.err();
        EXPECT_EQ(err, status == 0 ? ""
                       : err.starts_with("ERROR: could not get send version")
                           ? "ERROR: could not get send version to server\n"
                           : "ERROR: could not get send response to server\n");
    }
}

// It once died of std::bad_alloc, by abort.
TEST(Player, SaysThatMemoryIsTooLittle) {
    const HoldemDirectory directory;
    const std::string game = "holdem.limit.2p.reverse_blinds.game";
    const std::string limited = "ulimit -v 150000; exec " + program;
    if (Process start({"/bin/sh", "-c", limited}, directory.path());
        start.wait() != 1 || !start.err().starts_with("usage:"))
        GTEST_SKIP() << "so little does not do for the start: a sanitiser";
    Process player({"/bin/sh", "-c", limited + " " + game + " localhost 1"}, directory.path());
    EXPECT_EQ(player.wait(), 1);
    EXPECT_EQ(player.err(), "ERROR: " + game +
                                ": out of memory: end other programs, or raise the limit "
                                "(ulimit -v), and start again\n");
}

// A dealer that says nothing is waited for, without work, until somebody ends the player.
TEST(Player, WaitsForASilentDealer) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer dealer;
    Process player({program, kuhn, "localhost", std::to_string(dealer.port())}, directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    EXPECT_EQ(dealer.readLine(300), "");
    kill(player.pid(), SIGSTOP);
    dealer.send("MATCHSTATE:0:7:crf:As||\r\n");
    EXPECT_EQ(dealer.readLine(200), "");
    kill(player.pid(), SIGCONT);
    EXPECT_EQ(dealer.readLine(), "MATCHSTATE:0:7:crf:As||:c\r\n");
    kill(player.pid(), SIGTERM);
    EXPECT_EQ(player.wait(), 128 + SIGTERM);
}

} // namespace
} // namespace tamarin::test
