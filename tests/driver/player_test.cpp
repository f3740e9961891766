// The program player as its own process, against a dealer on a real socket.
#include "driver/player.h"

#include "driver/KuhnAgent.h"
#include "driver/LimitHoldemAgent.h"
#include "driver/blueprint_directory.h"
#include "driver/holdem_directory.h"
#include "driver/loopback_dealer.h"
#include "driver/menu_blueprint_directory.h"
#include "driver/process.h"
#include "driver/recording_agent.h"
#include "driver/scratch.h"
#include "support/tree_paths.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const std::string program = tamarin::test::inBuild("bin/player");
const std::string kuhnFile = "kuhn.limit.3p.game";

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
    { KuhnAgent agent(kuhnFile.c_str(), {1, 20000}); }
    testing::internal::GetCapturedStdout();
}

TEST(Player, NeedsThreeArguments) {
    const PlayingDirectory directory;
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {kuhnFile}, {kuhnFile, "localhost"}}) {
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
    const std::string path = "./" + kuhnFile;
    const Outcome outcome = run(directory, {path, "localhost", "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: unknown game " + path + "\n");
    EXPECT_FALSE(std::filesystem::exists("strategies")) << "nothing is trained for it";
}

TEST(Player, RefusesAPortThatIsNone) {
    const PlayingDirectory directory;
    prepareKuhn();
    for (const std::string port : {"port", "", "-1", "65536", "70000", "18446744073709551617"}) {
        const Outcome outcome = run(directory, {kuhnFile, "localhost", port});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "ERROR: invalid port " + port + "\n");
    }
}

// Each of its games, with another game's definition under the name: the agent refuses it, and the
// port has not been looked at by then.
TEST(Player, BuildsTheAgentOfTheNameAndThenLooksAtThePort) {
    const PlayingDirectory directory;
    const std::string holdem = PlayingDirectory::read("holdem.limit.3p.game");
    const std::string small = PlayingDirectory::read(kuhnFile);
    for (const std::string name : {"holdem.limit.2p.reverse_blinds.game", "holdem.limit.3p.game",
                                   "holdem.nolimit.2p.reverse_blinds.game", "kuhn.limit.3p.game"}) {
        PlayingDirectory::write(name, name == kuhnFile ? holdem : small);
        const Outcome outcome = run(directory, {name, "localhost", "port"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(outcome.err.starts_with("ERROR: " + name + " is not " +
                                            (name == kuhnFile ? "Kuhn poker: " : "hold'em: ")))
            << outcome.err;
    }
}

// What it trains for, and how long: read off the first lines of a start without strategies.
TEST(Player, AnnouncesTheTrainingOfEachGame) {
    const HoldemDirectory directory;
    const auto start = [&](const std::string& game) {
        return std::make_unique<Process>(std::vector<std::string>{program, game, "localhost", "1"},
                                         directory.path());
    };
    const std::string echo = "\nlocalhost\n1\n";
    const std::string warning = "Warning: could not load strategy from disk!\n";
    {
        const auto player = start(kuhnFile);
        EXPECT_TRUE(player->says(echo + warning + "Training kuhn agent with 100 iterations\n" +
                                 "Finding equilibrium 0...\n"));
    }
    const std::pair<std::string, std::string> games[] = {
        {"holdem.limit.2p.reverse_blinds.game", "strategies/holdem.limit.2p/strategy"},
        {"holdem.limit.3p.game", "strategies/holdem.limit.3p/strategy"},
        {"holdem.nolimit.2p.reverse_blinds.game", "strategies/holdem.nolimit.2p/strategy"}};
    for (const auto& [game, file] : games) {
        PlayingDirectory::write(file, "no strategy");
        const auto player = start(game);
        EXPECT_TRUE(player->says(echo + warning +
                                 "Training hold'em agent with 100000 iterations for each "
                                 "information set!\n"))
            << game;
        EXPECT_EQ(player->err(), "ERROR: " + file +
                                     " is no strategy of this game: rebuilding it, the bad file is "
                                     "kept as " +
                                     file + ".bad\n");
    }
}

// In this process, for what a start leaves in it: the solvers' progress lines are on.
TEST(Player, SwitchesTheSolversProgressOn) {
    const PlayingDirectory directory;
    prepareKuhn();
    std::string words[] = {"player", kuhnFile, "localhost", "port"};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data()};
    CFR::logProgress = false;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(runPlayer(4, arguments), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: invalid port port\n");
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(CFR::logProgress);
    CFR::logProgress = false;
}

// Of 64 decisions between two actions, two starts make some differently.
TEST(Player, DrawsOtherNumbersInEveryStart) {
    const PlayingDirectory directory;
    FILE* file = std::fopen(kuhnFile.c_str(), "r");
    const GamePtr game(readGame(file));
    std::fclose(file);
    CFR even(game.get());
    even.buildTree(); // untrained: every action as often
    std::filesystem::create_directories("strategies/kuhn.limit.3p");
    for (int seat = 0; seat < 3; ++seat)
        ASSERT_TRUE(even.save(KuhnStrategyFiles[seat]));
    std::string answers[2];
    for (std::string& all : answers) {
        LoopbackDealer dealer;
        Process player({program, kuhnFile, "127.0.0.1", std::to_string(dealer.port())},
                       directory.path());
        ASSERT_TRUE(dealer.accept());
        EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
        for (int i = 0; i < 64; ++i)
            dealer.send("MATCHSTATE:0:7::Js||\r\n");
        for (int i = 0; i < 64; ++i)
            all += dealer.readLine();
        dealer.hangUp();
        EXPECT_EQ(player.wait(), 0);
        EXPECT_EQ(player.err(), "");
    }
    EXPECT_NE(answers[0], answers[1]);
    for (const char* answer : {":c\r\n", ":r\r\n"})
        EXPECT_NE(answers[0].find(answer), std::string::npos) << "both actions are played";
}

TEST(Player, DoesNotWaitForAGameThatIsNoFile) {
    const PlayingDirectory directory;
    ASSERT_EQ(mkfifo("pipe.game", 0600), 0);
    for (const std::string path : {"pipe.game", "/dev/zero"}) {
        const Outcome outcome = run(directory, {path, "localhost", "1"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "ERROR: could not read game " + path + "\n");
    }
}

// The socket would otherwise take the number of the closed descriptor, and the dealer be told of
// every line that cannot be read.
TEST(Player, SaysNothingToTheDealerWhereStandardErrorIsClosed) {
    const PlayingDirectory directory;
    prepareKuhn();
    for (const std::string closed : {"2>&-", "<&- >&- 2>&-"}) {
        LoopbackDealer dealer;
        Process player({"/bin/sh", "-c",
                        "exec " + program + " " + kuhnFile + " 127.0.0.1 " +
                            std::to_string(dealer.port()) + " " + closed},
                       directory.path());
        ASSERT_TRUE(dealer.accept());
        EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
        dealer.send("nonsense\r\nMATCHSTATE:0:7:crf:As||\r\n");
        EXPECT_EQ(dealer.readLine(), "MATCHSTATE:0:7:crf:As||:c\r\n");
        dealer.halfClose();
        EXPECT_EQ(dealer.readAll(), "");
        EXPECT_EQ(player.wait(), 0);
    }
}

// Standard error is a pipe that nobody reads any more: the match is worth more than the complaint.
TEST(Player, OutlivesTheReaderOfItsErrors) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer dealer;
    Process player({"/bin/sh", "-c",
                    "{ " + program + " " + kuhnFile + " 127.0.0.1 " +
                        std::to_string(dealer.port()) + " 2>&1 >/dev/null; echo $? >status; } | :"},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    for (int i = 0; i < 3; ++i) {
        dealer.send("nonsense\r\nMATCHSTATE:0:7:crf:As||\r\n");
        EXPECT_EQ(dealer.readLine(), "MATCHSTATE:0:7:crf:As||:c\r\n") << i;
    }
    dealer.hangUp();
    player.wait();
    EXPECT_EQ(PlayingDirectory::read("status"), "0\n");
}

// At once: the agent's last words are those of an agent that is cleaned up.
TEST(Player, EndsAtOnceWhenItCannotAnswer) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer dealer;
    Process player({program, kuhnFile, "127.0.0.1", std::to_string(dealer.port())},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    // A card that no strategy knows, so that there is a count to tell; then the dealer is gone by
    // the time there is an answer.
    kill(player.pid(), SIGSTOP);
    dealer.send("MATCHSTATE:0:7:crf:7s||\r\n");
    dealer.reset();
    kill(player.pid(), SIGCONT);
    EXPECT_EQ(player.wait(), 1);
    EXPECT_EQ(player.err(),
              "WARNING: the strategy does not hold this state: playing by the fixed card rule\n"
              "ERROR: could not get send response to server\n");
}

// With the files that play reads and nowhere to write, it plays.
TEST(Player, NeedsNoOtherTablesAndWritesNone) {
    const HoldemDirectory directory;
    const std::string game = "holdem.limit.2p.reverse_blinds.game";
    testing::internal::CaptureStdout();
    { LimitHoldemAgent agent(game.c_str(), 100); }
    testing::internal::GetCapturedStdout();
    for (const TableFile& file : allTables())
        if (!playReads(file, 2))
            std::filesystem::remove(file.path);
    namespace fs = std::filesystem;
    fs::permissions("lookup", fs::perms::owner_read | fs::perms::owner_exec);
    const auto before = fs::last_write_time("lookup");
    LoopbackDealer dealer;
    Process player({program, game, "127.0.0.1", std::to_string(dealer.port())}, directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    dealer.send("MATCHSTATE:1:0::|AsKs\r\n");
    EXPECT_TRUE(dealer.readLine().starts_with("MATCHSTATE:1:0::|AsKs:"));
    dealer.hangUp();
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(player.err(), "");
    EXPECT_EQ(fs::last_write_time("lookup"), before) << "nothing was made, not even a lock";
    fs::permissions("lookup", fs::perms::owner_all);
}

// No table is there, no strategy and nowhere to write.
TEST(Player, PlaysABlueprintAlone) {
    const BlueprintDirectory directory(
        {{0, "AsKs", 7}, {1, "AsKs2c3d4h", 3}},
        [](const std::string& actions, size_t bucket) -> BlueprintDirectory::Weights {
            const BlueprintDirectory::Weights fold{1, 0, 0}, call{0, 1, 0}, raise{0, 0, 1};
            if (actions.empty())
                return bucket == 7 ? raise : fold;
            return actions == "cc" && bucket == 3 ? raise : call;
        });
    namespace fs = std::filesystem;
    for (const char* folder : {"lookup", "strategies", "strategies/holdem.limit.2p"})
        fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    LoopbackDealer dealer;
    Process player({program, limitGame, "127.0.0.1", std::to_string(dealer.port())},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    const std::pair<std::string, std::string> asked[] = {
        {"MATCHSTATE:1:0::|AsKs", "r"},
        {"MATCHSTATE:1:0:rr:|AsKs", "c"},
        {"MATCHSTATE:1:1::|AsQs", "f"},
        {"MATCHSTATE:0:2:cc/:AdKd|/2c3h4s", "r"}, // the same up to suits
        {"MATCHSTATE:0:2:cc/:AsQs|/2c3d4h", "c"},
    };
    for (const auto& [state, action] : asked) {
        dealer.send(state + "\r\n");
        EXPECT_EQ(dealer.readLine(), state + ":" + action + "\r\n");
    }
    dealer.hangUp();
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(player.err(), "");
    EXPECT_EQ(player.out(), program + "\n" + limitGame + "\n127.0.0.1\n" +
                                std::to_string(dealer.port()) +
                                "\nPlaying strategies/holdem.limit.2p/blueprint, over small, 4321 "
                                "iterations\n");
    for (const char* folder : {"lookup", "strategies", "strategies/holdem.limit.2p"})
        fs::permissions(folder, fs::perms::owner_all);
    EXPECT_EQ(std::distance(fs::directory_iterator("lookup"), {}), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator("strategies/holdem.limit.2p"), {}), 1);
}

// Bets of sizes that its tree lacks, a state that comes again, and one that begins in the middle.
TEST(Player, PlaysANoLimitBlueprint) {
    const MenuBlueprintDirectory directory(
        "bets = 1 A", {{0, "AsKs", 7}, {1, "AsKs2c3d4h", 3}},
        [](int32_t node, size_t bucket, size_t edge) {
            const size_t taken = bucket == 7 && node == 0 ? 2 : bucket == 3 ? 2 : 1;
            return static_cast<int32_t>(edge == taken);
        });
    LoopbackDealer dealer;
    Process player({program, noLimitGame, "127.0.0.1", std::to_string(dealer.port())},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    const std::pair<std::string, std::string> asked[] = {
        {"MATCHSTATE:1:0::|AsKs", "r300"},
        {"MATCHSTATE:1:0::|AsKs", "r300"},
        {"MATCHSTATE:1:0:r300r19950:|AsKs", "c"},
        {"MATCHSTATE:1:1:r250c/r750:|AsKs/2c3d4h", "r2250"}, // its node has fold, call, a pot
    };
    for (const auto& [state, action] : asked) {
        dealer.send(state + "\r\n");
        EXPECT_EQ(dealer.readLine(), state + ":" + action + "\r\n");
    }
    dealer.hangUp();
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(player.err(), "");
    EXPECT_EQ(player.out(), program + "\n" + noLimitGame + "\n127.0.0.1\n" +
                                std::to_string(dealer.port()) + "\nPlaying " + noLimitBlueprint +
                                ", over small, 6400 iterations\n");
}

TEST(Player, PlaysAThreePlayerBlueprint) {
    const MenuBlueprintDirectory directory("", {{0, "AsKs", 7}},
                                           [](int32_t, size_t bucket, size_t edge) {
                                               const size_t taken = bucket == 7 ? 2 : 0;
                                               return static_cast<int32_t>(edge == taken);
                                           });
    LoopbackDealer dealer;
    Process player({program, threeGame, "127.0.0.1", std::to_string(dealer.port())},
                   directory.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    const std::pair<std::string, std::string> asked[] = {
        {"MATCHSTATE:2:0::||AsKs", "r"},
        {"MATCHSTATE:0:1:c:AdKd||", "r"},
        {"MATCHSTATE:0:1:f:2d7s||", "f"},
        {"MATCHSTATE:0:2:ccc/:AdKd||/2c3d4h", "c"},
    };
    for (const auto& [state, action] : asked) {
        dealer.send(state + "\r\n");
        EXPECT_EQ(dealer.readLine(), state + ":" + action + "\r\n");
    }
    dealer.hangUp();
    EXPECT_EQ(player.wait(), 0);
    EXPECT_EQ(player.err(), "");
    EXPECT_TRUE(player.says("\nPlaying " + threeBlueprint + ", over small, 6400 iterations\n"));
}

TEST(Player, SaysWhyANoLimitBlueprintIsNotPlayed) {
    const MenuBlueprintDirectory directory("bets = 1 A", {},
                                           [](int32_t, size_t, size_t) { return int32_t{1}; });
    CardsDirectory::flipBit(noLimitBlueprint, std::filesystem::file_size(noLimitBlueprint) - 1);
    const std::string damaged = PlayingDirectory::read(noLimitBlueprint);
    Process player({program, noLimitGame, "127.0.0.1", "1"}, directory.path());
    EXPECT_TRUE(player.says("Training hold'em agent with 100000 iterations for each"));
    EXPECT_EQ(player.err(), "WARNING: " + noLimitBlueprint +
                                ": damaged, block 1 of 1 does not fit its checksum: playing "
                                "strategies/holdem.nolimit.2p/strategy instead\n");
    EXPECT_EQ(PlayingDirectory::read(noLimitBlueprint), damaged);
    EXPECT_FALSE(std::filesystem::exists(noLimitBlueprint + ".bad"));
}

// The file is left where it is, and the player goes on as if there were none.
TEST(Player, SaysWhyABlueprintIsNotPlayed) {
    const BlueprintDirectory directory(
        {}, [](const std::string&, size_t) -> BlueprintDirectory::Weights {
            return {1, 1, 1};
        });
    const uint64_t size = std::filesystem::file_size(limitBlueprint);
    BlueprintDirectory::flipBit(limitBlueprint, size - 1);
    const std::string damaged = PlayingDirectory::read(limitBlueprint);
    Process player({program, limitGame, "127.0.0.1", "1"}, directory.path());
    EXPECT_TRUE(player.says("\n1\nWarning: could not load strategy from disk!\n"
                            "Training hold'em agent with 100000 iterations for each information "
                            "set!\n"));
    EXPECT_EQ(player.err(), "WARNING: " + limitBlueprint +
                                ": damaged, block 1 of 1 does not fit its checksum: playing "
                                "strategies/holdem.limit.2p/strategy instead\n");
    EXPECT_EQ(PlayingDirectory::read(limitBlueprint), damaged);
    EXPECT_FALSE(std::filesystem::exists(limitBlueprint + ".bad"));
}

// A blueprint under the folder of another game is none of it.
TEST(Player, PlaysBlueprintsOfTheirOwnGameAlone) {
    const BlueprintDirectory directory(
        {}, [](const std::string&, size_t) -> BlueprintDirectory::Weights {
            return {1, 1, 1};
        });
    for (const auto& [game, folder] :
         {std::pair<std::string, std::string>{"holdem.nolimit.2p.reverse_blinds.game",
                                              "strategies/holdem.nolimit.2p"},
          {"holdem.limit.3p.game", "strategies/holdem.limit.3p"}}) {
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(limitBlueprint, folder + "/blueprint");
        Process player({program, game, "127.0.0.1", "1"}, directory.path());
        EXPECT_TRUE(player.says("Training hold'em agent with 100000 iterations for each"));
        EXPECT_EQ(player.err(), "WARNING: " + folder +
                                    "/blueprint: format 1, not 2: a blueprint of limit for two: "
                                    "playing " +
                                    folder + "/strategy instead\n");
    }
    // The same name, other sizes of bets.
    std::string other = PlayingDirectory::read(limitGame);
    other.replace(other.find("10 10 20 20"), 11, "10 10 30 30");
    PlayingDirectory::write(limitGame, other);
    Process player({program, limitGame, "127.0.0.1", "1"}, directory.path());
    EXPECT_TRUE(player.says("Training hold'em agent with 100000 iterations for each"));
    EXPECT_EQ(player.err(), "WARNING: " + limitBlueprint +
                                ": made for another game than this one: playing "
                                "strategies/holdem.limit.2p/strategy instead\n");
}

TEST(Player, SaysThatTheDealerCannotBeReached) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer nobody;
    nobody.stopListening();
    const std::string port = std::to_string(nobody.port());
    Outcome outcome = run(directory, {kuhnFile, "127.0.0.1", port});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: could not connect to 127.0.0.1:" + port + "\n");
    outcome = run(directory, {kuhnFile, "no.such.host.invalid", port + "abc"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: could not look up address for no.such.host.invalid\n");
}

// There is no stream to play over.
TEST(Player, DoesNotPlayWhereItCouldNotGreet) {
    class Mute : public SocketCalls {
    public:
        int connect(int, const sockaddr*, socklen_t) override { return 0; }
        ssize_t send(int, const void*, size_t) override {
            errno = EPIPE;
            return -1;
        }
        ssize_t receive(int, void*, size_t) override { return 0; }
    };
    const DefinitionFile file(threePlayerKuhn);
    Mute sockets;
    RecordingAgent agent(file.path(), always(callAction), sockets);
    testing::internal::CaptureStderr();
    EXPECT_EQ(playMatch(agent, "127.0.0.1", 1), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: could not get send version to server\n");
    agent.disconnect();
}

TEST(Player, PlaysToTheEndOfTheMatch) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer dealer;
    Process player(
        {program, kuhnFile, "localhost", std::to_string(dealer.port()) + "trailing", "more"},
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
    EXPECT_EQ(player.out(), program + "\n" + kuhnFile + "\nlocalhost\n" +
                                std::to_string(dealer.port()) + "trailing\nmore\n");
}

TEST(Player, SurvivesADealerThatGoesAway) {
    const PlayingDirectory directory;
    prepareKuhn();
    // Closed before the version is read, in mid-hand, and with an answer on its way.
    for (const int when : {0, 1, 2}) {
        LoopbackDealer dealer;
        Process player({program, kuhnFile, "localhost", std::to_string(dealer.port())},
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
    const std::string err = player.err();
    EXPECT_TRUE(err.starts_with("ERROR: " + game + ": lookup/")) << err;
    EXPECT_TRUE(err.ends_with(": could not map: Cannot allocate memory\n")) << err;
}

// A dealer that says nothing is waited for, without work, until somebody ends the player.
TEST(Player, WaitsForASilentDealer) {
    const PlayingDirectory directory;
    prepareKuhn();
    LoopbackDealer dealer;
    Process player({program, kuhnFile, "localhost", std::to_string(dealer.port())},
                   directory.path());
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
