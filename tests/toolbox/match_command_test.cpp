#include "dealer/hand_log.h"
#include "game/games.h"
#include "support/tree_paths.h"
#include "toolbox/kuhn_game.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>

#include <nlohmann/json.hpp>

namespace tamarin::test {

namespace {

const std::vector<std::string> threeBots = {"--seat",         "rule=bot:rule", "--seat",
                                            "any=bot:random", "--seat",        "call=bot:call"};

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::vector<std::string> match(const std::vector<std::string>& more) {
    return std::vector<std::string>{"match", kuhnGame} + more;
}

std::string contents(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

int countLines(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

void pause(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void expectUsageError(const std::vector<std::string>& arguments, const std::string& line) {
    const Ended run = runTamarin(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "tamarin: " + line + "; try 'tamarin match --help'\n");
}

} // namespace

TEST(MatchCommand, ThreeBotsPlay) {
    const Scratch scratch;
    const Ended run =
        runTamarin(match({"--hands", "300", "--json", "--quiet", "--log", "hands.log"}) + threeBots,
                   scratch.path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["hands"], 300);
    double sum = 0;
    std::map<std::string, double> chips;
    for (const auto& player : json["players"]) {
        sum += player["chips"].get<double>();
        chips[player["name"]] = player["chips"];
        for (const auto& [name, count] : player["faults"].items())
            EXPECT_EQ(count, 0) << name;
    }
    EXPECT_NEAR(sum, 0, 1e-9);

    // The log tells the same story.
    const GamePtr game = loadGameFile(kuhnGame);
    int hands = 0;
    std::map<std::string, double> logged;
    std::map<std::string, int> inFirstSeat;
    ASSERT_TRUE(readHandLog(game.get(), scratch / "hands.log", [&](const LoggedHand& hand) {
                    EXPECT_EQ(hand.state.handId, static_cast<uint32_t>(hands));
                    ++hands;
                    for (size_t seat = 0; seat < 3; ++seat)
                        logged[hand.names[seat]] += hand.chips[seat];
                    ++inFirstSeat[hand.names[0]];
                }).ok());
    EXPECT_EQ(hands, 300);
    for (const auto& [name, won] : chips) {
        EXPECT_NEAR(logged[name], won, 1e-9) << name;
        EXPECT_EQ(inFirstSeat[name], 100) << name;
    }
}

TEST(MatchCommand, SameSeedSameLog) {
    const Scratch scratch;
    const auto play = [&](const std::string& seed, const std::string& log) {
        const Ended run = runTamarin(
            match({"--hands", "200", "--quiet", "--seed", seed, "--log", log}) + threeBots,
            scratch.path());
        EXPECT_EQ(run.status, 0) << run.err;
        return contents(scratch / log);
    };
    const std::string first = play("5", "first");
    EXPECT_EQ(first, play("5", "second"));
    EXPECT_NE(first.substr(first.find('\n')), play("6", "third").substr(first.find('\n')));
    EXPECT_EQ(countLines(first), 201);
}

TEST(MatchCommand, DuplicatePlaysWholeBlocks) {
    const Scratch scratch;
    const Ended run = runTamarin(
        match({"--hands", "100", "--duplicate", "--json", "--quiet", "--log", "log"}) + threeBots,
        scratch.path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "tamarin: playing 102 hands, to make whole duplicate blocks of 3\n");
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["hands"], 102);
    EXPECT_EQ(json["duplicateBlocks"], 34);
    const GamePtr game = loadGameFile(kuhnGame);
    std::vector<LoggedHand> hands;
    ASSERT_TRUE(readHandLog(game.get(), scratch / "log", [&](const LoggedHand& hand) {
                    hands.push_back(hand);
                }).ok());
    for (size_t i = 0; i + 2 < hands.size(); i += 3)
        for (size_t k = 1; k < 3; ++k) {
            EXPECT_EQ(hands[i].state.holeCards[0][0], hands[i + k].state.holeCards[0][0]);
            EXPECT_NE(hands[i].names[0], hands[i + k].names[0]);
        }
}

TEST(MatchCommand, FixedSeatsStay) {
    const Scratch scratch;
    EXPECT_EQ(
        runTamarin(match({"--hands", "20", "--fixed-seats", "--quiet", "--log", "log"}) + threeBots,
                   scratch.path())
            .status,
        0);
    const GamePtr game = loadGameFile(kuhnGame);
    EXPECT_TRUE(readHandLog(game.get(), scratch / "log", [&](const LoggedHand& hand) {
                    EXPECT_EQ(hand.names, (std::vector<std::string>{"rule", "any", "call"}));
                }).ok());
}

TEST(MatchCommand, EveryGameIsPlayed) {
    for (const auto& [game, seats] :
         std::vector<std::pair<std::string, int>>{{"holdem.limit.2p.reverse_blinds.game", 2},
                                                  {"holdem.limit.3p.game", 3},
                                                  {"holdem.nolimit.2p.reverse_blinds.game", 2}}) {
        std::vector<std::string> arguments = {"match",  game,      "--hands",    "60",
                                              "--json", "--quiet", "--on-fault", "stop"};
        const char* kinds[] = {"a=bot:random", "b=bot:raise", "c=bot:rule"};
        for (int i = 0; i < seats; ++i)
            arguments = arguments + std::vector<std::string>{"--seat", kinds[i]};
        const Ended run = runTamarin(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        const auto json = nlohmann::json::parse(run.out);
        EXPECT_EQ(json["hands"], 60);
        double sum = 0;
        for (const auto& player : json["players"])
            sum += player["chips"].get<double>();
        EXPECT_NEAR(sum, 0, 1e-6);
    }
}

TEST(MatchCommand, CommandsRunInThePlayingDirectory) {
    const Scratch scratch;
    std::filesystem::create_directory(scratch / "table");
    const std::string bot = inBuild("bin/tamarin") + " bot call";
    const Ended run = runTamarin(
        match({"--hands", "10", "--dir", "table", "--quiet", "--seat",
               "a=pwd >where; tamarin bot call", "--seat", "b=" + bot, "--seat", "c=bot:call"}),
        scratch.path());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(contents(scratch / "table/where"),
              std::filesystem::canonical(scratch / "table").string() + "\n");
    EXPECT_TRUE(std::filesystem::exists(scratch / ("table/" + kuhnGame)));
}

TEST(MatchCommand, FarPlayersAreWaitedFor) {
    const Scratch scratch;
    Process dealer(
        tamarinCommand(match({"--hands", "10", "--quiet", "--json", "--seat", "far=listen:0",
                              "--seat", "a=bot:call", "--seat", "b=bot:call"})),
        scratch.path());
    std::string notice;
    for (int i = 0; i < 500 && countLines(notice) == 0; ++i) {
        pause(10);
        notice = dealer.err();
    }
    ASSERT_TRUE(notice.starts_with("tamarin: waiting for far on 127.0.0.1 port ")) << notice;
    const Scratch elsewhere;
    const std::string port =
        notice.substr(notice.rfind(' ') + 1, notice.size() - notice.rfind(' ') - 2);
    EXPECT_EQ(runTamarin({"bot", "call", kuhnGame, "localhost", port}, elsewhere.path()).status, 0);
    EXPECT_EQ(dealer.wait(), 0);
    EXPECT_EQ(nlohmann::json::parse(dealer.out())["hands"], 10);
}

TEST(MatchCommand, ATokenKeepsOthersFromTheSeat) {
    const Scratch scratch;
    std::ofstream(scratch / "token") << "s3cret\n";
    Process dealer(tamarinCommand(match({"--hands", "10", "--quiet", "--json", "--seat",
                                         "far=listen:127.0.0.1:0", "--token-file", "token",
                                         "--seat", "a=bot:call", "--seat", "b=bot:call"})),
                   scratch.path());
    std::string notice;
    for (int i = 0; i < 500 && countLines(notice) == 0; ++i) {
        pause(10);
        notice = dealer.err();
    }
    const std::string port =
        notice.substr(notice.rfind(' ') + 1, notice.size() - notice.rfind(' ') - 2);
    const Scratch elsewhere;
    const auto bot = [&](const std::vector<std::string>& more) {
        return runTamarin(std::vector<std::string>{"bot", "call", kuhnGame, "localhost", port} +
                              more,
                          elsewhere.path())
            .status;
    };
    EXPECT_EQ(bot({}), 0); // the dealer closes, and the match is over for it
    EXPECT_EQ(bot({"--token", "secret"}), 0);
    EXPECT_EQ(countLines(dealer.err()), 3) << dealer.err();
    EXPECT_EQ(bot({"--token-file", scratch / "token"}), 0);
    EXPECT_EQ(dealer.wait(), 0);
    EXPECT_EQ(nlohmann::json::parse(dealer.out())["hands"], 10);
    EXPECT_NE(dealer.err().find(", which gives no token\n"), std::string::npos);
    EXPECT_NE(dealer.err().find(", which gives a wrong token\n"), std::string::npos);
    EXPECT_EQ(dealer.err().find("cret"), std::string::npos);
}

// A player that floods its output once held the match up, and with --verbose everybody's terminal.
TEST(MatchCommand, APlayerThatPrintsWithoutEndDisturbsNobody) {
    const Ended run = runTamarin(
        match({"--hands", "300", "--json", "--quiet", "--verbose", "--seat",
               "a=yes & tamarin bot call", "--seat", "b=bot:rule", "--seat", "c=bot:random"}));
    EXPECT_EQ(run.status, 0) << run.err.substr(0, 1000);
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["hands"], 300);
    for (const auto& player : json["players"])
        for (const auto& [name, count] : player["faults"].items())
            EXPECT_EQ(count, 0) << name;
    EXPECT_LT(run.err.size(), 200000U);
    EXPECT_NE(run.err.find("[a] (further output passed over: "), std::string::npos);
}

// A dealer that was stopped charged the player to act with its own sleep.
TEST(MatchCommand, AStoppedDealerChargesNobody) {
    const Scratch scratch;
    Process dealer(tamarinCommand(match({"--hands", "1000000", "--action-limit", "0.3", "--json",
                                         "--quiet", "--log", "log"}) +
                                  threeBots),
                   scratch.path());
    for (int i = 0; i < 1000 && countLines(contents(scratch / "log")) < 100; ++i)
        pause(10);
    for (int i = 0; i < 3; ++i) {
        kill(dealer.pid(), SIGSTOP);
        pause(500);
        kill(dealer.pid(), SIGCONT);
        pause(20);
    }
    kill(dealer.pid(), SIGINT);
    EXPECT_EQ(dealer.wait(), 130);
    const auto json = nlohmann::json::parse(dealer.out());
    for (const auto& player : json["players"])
        for (const auto& [name, count] : player["faults"].items())
            EXPECT_EQ(count, 0) << name;
}

TEST(MatchCommand, InterruptGivesTheResultSoFar) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const Scratch scratch;
        Process dealer(
            tamarinCommand(match({"--hands", "100000000", "--quiet", "--json", "--log", "log"}) +
                           threeBots),
            scratch.path());
        for (int i = 0; i < 1000 && countLines(contents(scratch / "log")) < 100; ++i)
            pause(10);
        kill(dealer.pid(), signal);
        EXPECT_EQ(dealer.wait(), 128 + signal);
        EXPECT_EQ(dealer.err(), "");
        const auto json = nlohmann::json::parse(dealer.out());
        EXPECT_EQ(json["stopped"], true);
        EXPECT_GE(json["hands"], 99);
        EXPECT_EQ(json["hands"], countLines(contents(scratch / "log")) - 1);
    }
}

// As timeout(1) sends its signal, to the process and then to its group.
TEST(MatchCommand, TwoSignalsAtOnceGiveTheResultTheSame) {
    const Scratch scratch;
    Process dealer(
        tamarinCommand(match({"--hands", "100000000", "--quiet", "--json", "--log", "log"}) +
                       threeBots),
        scratch.path());
    for (int i = 0; i < 1000 && countLines(contents(scratch / "log")) < 100; ++i)
        pause(10);
    kill(dealer.pid(), SIGTERM);
    kill(dealer.pid(), SIGINT);
    const int status = dealer.wait();
    EXPECT_TRUE(status == 143 || status == 130) << status; // the system may turn them round
    EXPECT_EQ(nlohmann::json::parse(dealer.out())["stopped"], true);
}

TEST(MatchCommand, InterruptWhileWaitingEndsThePlayers) {
    const Scratch scratch;
    Process dealer(tamarinCommand(match({"--seat", "a=echo $$ >pid; exec sh -c 'exec sleep 1000'",
                                         "--seat", "b=bot:call", "--seat", "c=bot:call"})),
                   scratch.path());
    for (int i = 0; i < 1000 && countLines(contents(scratch / "pid")) < 1; ++i)
        pause(10);
    const auto player = static_cast<pid_t>(std::stol(contents(scratch / "pid")));
    EXPECT_EQ(kill(player, 0), 0);
    kill(dealer.pid(), SIGINT);
    EXPECT_EQ(dealer.wait(), 130);
    EXPECT_NE(kill(player, 0), 0);
    EXPECT_NE(dealer.err().find("tamarin: stopped while waiting for a"), std::string::npos)
        << dealer.err();
}

TEST(MatchCommand, PlayersEndWhenTheDealerIsKilled) {
    const Scratch scratch;
    pid_t player;
    {
        Process dealer(
            tamarinCommand(match({"--seat", "a=echo $$ >pid; exec sh -c 'exec sleep 1000'",
                                  "--seat", "b=bot:call", "--seat", "c=bot:call"})),
            scratch.path());
        for (int i = 0; i < 1000 && countLines(contents(scratch / "pid")) < 1; ++i)
            pause(10);
        player = static_cast<pid_t>(std::stol(contents(scratch / "pid")));
    } // SIGKILL
    const std::string status = "/proc/" + std::to_string(player) + "/cmdline";
    for (int i = 0; i < 500 && !contents(status).empty(); ++i)
        pause(10);
    EXPECT_EQ(contents(status), ""); // gone, or a zombie that its new parent will collect
}

TEST(MatchCommand, CommandThatDoesNotExist) {
    const Ended run = runTamarin(match(
        {"--quiet", "--seat", "a=no_such_player", "--seat", "b=bot:call", "--seat", "c=bot:call"}));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("tamarin: a: the player ended with status 127; its last output: "),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("not found, before it connected\n"), std::string::npos) << run.err;
}

TEST(MatchCommand, SeatThatNeverConnects) {
    const Ended run = runTamarin(match({"--start-limit", "0.3", "--seat", "far=listen:0", "--seat",
                                        "b=bot:call", "--seat", "c=bot:call"}));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("tamarin: far did not connect within 0.3 s (--start-limit)\n"),
              std::string::npos)
        << run.err;
}

TEST(MatchCommand, PlayerThatDiesIsPlayedForOrStopsTheMatch) {
    // Answers three times and is gone.
    const std::string dying = "a=timeout -s KILL 0.5 tamarin bot call";
    Ended run =
        runTamarin(match({"--hands", "100000", "--on-fault", "stop", "--quiet", "--json", "--seat",
                          dying, "--seat", "b=bot:call", "--seat", "c=bot:call"}));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("tamarin: a: gone in hand "), std::string::npos) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_TRUE(json["failure"].get<std::string>().starts_with("a: gone in hand "));
    EXPECT_LT(json["hands"], 100000);
    EXPECT_GT(json["hands"], 0);
}

TEST(MatchCommand, WrongUsage) {
    expectUsageError({"match"}, "GAME is required");
    expectUsageError({"match", kuhnGame}, "--seat is required");
    expectUsageError(match({"--seat", "a=bot:call"}),
                     "kuhn.limit.3p.game has 3 seats, but --seat is given 1 times");
    expectUsageError(
        match({"--seat", "a=bot:genius"}) + threeBots,
        "seat 'a=bot:genius': there is no bot 'genius', only random, call, raise, rule");
    expectUsageError(match({"--seat", "bot:call"}),
                     "seat 'bot:call' has no name: write NAME=COMMAND, NAME=bot:KIND or "
                     "NAME=listen:PORT");
    expectUsageError(match({"--seat", "a=bot:call", "--seat", "a=bot:call"}),
                     "two seats are named 'a'");
    expectUsageError(match({"--hands", "0"}) + threeBots,
                     "--hands: '0' is not a whole number from 1 to 4294967295");
    expectUsageError(match({"--duplicate", "--fixed-seats"}) + threeBots,
                     "--duplicate excludes --fixed-seats");
    expectUsageError(match({"--token", "s3cret"}) + threeBots,
                     "a token is for seats NAME=listen:PORT, and there is none");
    expectUsageError(match({"--dir", "/nonexistent"}) + threeBots,
                     "--dir: Directory does not exist: /nonexistent");
}

TEST(MatchCommand, MissingFiles) {
    Ended run = runTamarin(std::vector<std::string>{"match", "./none.game"} + threeBots);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tamarin: no game definition at ./none.game\n");
    run = runTamarin(match({"--log", "/nonexistent/log"}) + threeBots);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tamarin: could not write /nonexistent/log: No such file or directory\n");
}

// The log of an earlier match was once cut before anybody had a seat.
TEST(MatchCommand, KeepsAnOldLogUntilTheFirstHand) {
    const Scratch scratch;
    const std::vector<std::string> seats = {"--seat",     "a=exit 1", "--seat",
                                            "b=bot:call", "--seat",   "c=bot:call"};
    const std::string older = "# tamarin match before\n";
    std::ofstream(scratch / "log") << older;
    EXPECT_EQ(runTamarin(match({"--log", "log"}) + seats, scratch.path()).status, 1);
    EXPECT_EQ(contents(scratch / "log"), older);
    EXPECT_EQ(runTamarin(match({"--log", "new"}) + seats, scratch.path()).status, 1);
    EXPECT_FALSE(std::filesystem::exists(scratch / "new"));
    EXPECT_EQ(
        runTamarin(match({"--log", "log", "--hands", "3", "--quiet"}) + threeBots, scratch.path())
            .status,
        0);
    EXPECT_TRUE(contents(scratch / "log").starts_with("# tamarin match kuhn.limit.3p"));
}

TEST(MatchCommand, RefusesToWriteOverSomethingElse) {
    const Scratch scratch;
    std::ofstream(scratch / "my.game") << "GAMEDEF\n";
    const Ended run = runTamarin(match({"--log", "my.game"}) + threeBots, scratch.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tamarin: my.game holds something else than a match log; name another "
                       "file, or remove it\n");
    EXPECT_EQ(contents(scratch / "my.game"), "GAMEDEF\n");
}

// What a file system tells when the file is closed once got lost. The library makes close() fail
// for a file of this name.
TEST(MatchCommand, LogThatCannotBeClosedIsAFailure) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer must be the first library";
#endif
    const Scratch scratch;
    std::vector<std::string> command = {"/usr/bin/env", "LD_PRELOAD=" TAMARIN_FAILING_CLOSE};
    Process process(command + tamarinCommand(match({"--hands", "30", "--quiet", "--json", "--log",
                                                    "unclosable.log"}) +
                                             threeBots),
                    scratch.path());
    EXPECT_EQ(process.wait(), 1);
    EXPECT_EQ(process.err(), "tamarin: could not write unclosable.log: Input/output error\n");
    const auto json = nlohmann::json::parse(process.out());
    EXPECT_EQ(json["hands"], 30);
    EXPECT_EQ(json["failure"], "could not write unclosable.log: Input/output error");
}

TEST(MatchCommand, LogThatCannotBeWrittenEndsTheMatch) {
    const Ended run = runTamarin(match({"--log", "/dev/full"}) + threeBots);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tamarin: could not write /dev/full: No space left on device\n");
}

TEST(MatchCommand, VerboseShowsWhatPlayersPrint) {
    const Ended run = runTamarin(match({"--hands", "3", "--quiet", "--verbose", "--seat",
                                        "a=echo I am here; tamarin bot call", "--seat",
                                        "b=bot:call", "--seat", "c=bot:call"}));
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("[a] I am here\n"), std::string::npos) << run.err;
}

// The example of docs/writing-an-agent.md, found beside tamarin.
TEST(MatchCommand, ExampleAgentPlays) {
    const Ended run = runTamarin(
        match({"--hands", "100", "--quiet", "--json", "--verbose", "--on-fault", "stop", "--seat",
               "me=cautious_agent", "--seat", "b=bot:random", "--seat", "c=bot:random"}));
    EXPECT_EQ(run.status, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["hands"], 100);
    EXPECT_NE(run.err.find("[me] 100 hands, "), std::string::npos) << run.err;
}

} // namespace tamarin::test
