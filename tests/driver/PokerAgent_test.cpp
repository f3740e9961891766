#include "driver/PokerAgent.h"

#include "driver/loopback_dealer.h"
#include "driver/recording_agent.h"
#include "game/games.h"
#include "game/random_hand.h"
#include "game/text.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const std::string version = "VERSION:2.0.0\n";
using Events = std::vector<std::string>;

TEST(PokerAgent, PlaysAHandFromFirstToLastState) {
    const Played played = playText(threePlayerKuhn, always(callAction),
                                   "MATCHSTATE:0:5::Ks||\r\n"
                                   "MATCHSTATE:0:5:c:Ks||\r\n"
                                   "MATCHSTATE:0:5:cr:Ks||\r\n"
                                   "MATCHSTATE:0:5:crf:Ks||\r\n"
                                   "MATCHSTATE:0:5:crfc:Ks|Qs|\r\n"
                                   "MATCHSTATE:1:6::|As|\r\n");
    EXPECT_TRUE(played.result);
    EXPECT_EQ(played.errors, "");
    EXPECT_EQ(played.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n"
                                     "MATCHSTATE:0:5:crf:Ks||:c\r\n");
    EXPECT_EQ(played.events,
              (Events{"hole Ks seat 0", "stage 0", "act", "action 0 type 1 size 0",
                      "action 1 type 2 size 0", "action 2 type 0 size 0", "act",
                      "action 0 type 1 size 0", "over 3", "hole As seat 1", "stage 0"}));
}

TEST(PokerAgent, ANewRoundHasNoActionToTell) {
    const Played played = playText(leduc, always(callAction),
                                   "MATCHSTATE:1:5::|Ks\r\n"
                                   "MATCHSTATE:1:5:c:|Ks\r\n"
                                   "MATCHSTATE:1:5:cc/:|Ks/As\r\n"
                                   "MATCHSTATE:1:5:cc/c:|Ks/As\r\n");
    EXPECT_EQ(played.events,
              (Events{"hole Ks seat 1", "stage 0", "action 0 type 1 size 0", "act",
                      "action 1 type 3 size 0", "stage 1", "action 0 type 1 size 0", "act"}));
}

TEST(PokerAgent, ASkippedRoundEndsTheAnnouncements) {
    const Played played = playText(twoPlayerLimit, always(callAction),
                                   "MATCHSTATE:0:5::AsKs|\r\n"
                                   "MATCHSTATE:0:5:cc/cc/:AsKs|/2c3c4c/5d\r\n"
                                   "MATCHSTATE:0:5:cc/cc/cc/:AsKs|/2c3c4c/5d/6d\r\n"
                                   "MATCHSTATE:0:5:f:AsKs|\r\n"
                                   "MATCHSTATE:0:6::AsKs|\r\n");
    Events stages;
    for (const std::string& event : played.events)
        if (event.starts_with("stage") || event.starts_with("hole"))
            stages.push_back(event);
    EXPECT_EQ(stages, (Events{"hole AsKs seat 0", "stage 0", "hole AsKs seat 0", "stage 0"}));
}

TEST(PokerAgent, CommentsRaiseNothing) {
    const Played played = playText(threePlayerKuhn, always(callAction),
                                   "# hello\r\n;again\r\n#" + std::string(10000, 'x') +
                                       "\r\nMATCHSTATE:2:5::||Ks\r\n");
    EXPECT_EQ(played.errors, "");
    EXPECT_EQ(played.events, (Events{"hole Ks seat 2", "stage 0"}));
    EXPECT_EQ(played.sent, version);
}

TEST(PokerAgent, AnswersWithTheStateAsItCame) {
    const Played played =
        playText(threePlayerKuhn, always(callAction), "MATCHSTATE: 0: 5:kB:ks||:anything\n");
    EXPECT_EQ(played.sent, version);
    const Played odd =
        playText(threePlayerKuhn, always(callAction), "MATCHSTATE: 1: 5:k:|ks|:what\n");
    EXPECT_EQ(odd.sent, version + "MATCHSTATE: 1: 5:k:|ks|:c\r\n");
}

TEST(PokerAgent, AFoldForNothingIsSentAsACall) {
    const Played played = playText(threePlayerKuhn, always(foldAction),
                                   "MATCHSTATE:0:5::Ks||\r\nMATCHSTATE:0:5:crf:Ks||\r\n");
    EXPECT_EQ(played.sent, version + "MATCHSTATE:0:5::Ks||:c\r\nMATCHSTATE:0:5:crf:Ks||:f\r\n");
}

TEST(PokerAgent, AnInvalidActionIsSentAsACall) {
    const Played capped = playText(threePlayerKuhn, always(raiseAction),
                                   "MATCHSTATE:0:5::Ks||\r\nMATCHSTATE:0:5:crf:Ks||\r\n");
    EXPECT_EQ(capped.sent, version + "MATCHSTATE:0:5::Ks||:r\r\nMATCHSTATE:0:5:crf:Ks||:c\r\n");
    const Played nonsense =
        playText(threePlayerKuhn, always({actionInvalid, 5}), "MATCHSTATE:0:5::Ks||\r\n");
    EXPECT_EQ(nonsense.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n");
}

TEST(PokerAgent, AWrongRaiseIsRepairedWithAWarning) {
    const Played small =
        playText(smallBlindFirst, always(raiseAction), "MATCHSTATE:0:5::KsQs|\r\n");
    EXPECT_EQ(small.sent, version + "MATCHSTATE:0:5::KsQs|:r200\r\n");
    EXPECT_EQ(small.errors, "WARNING: raise of 0 increased to 200\n");
    const Played large =
        playText(smallBlindFirst, always({actionRaise, 99999}), "MATCHSTATE:0:5::KsQs|\r\n");
    EXPECT_EQ(large.sent, version + "MATCHSTATE:0:5::KsQs|:r20000\r\n");
    EXPECT_EQ(large.errors, "WARNING: raise of 99999 decreased to 20000\n");
}

TEST(PokerAgent, LinesThatAreNoStateAreReportedAndPassedOver) {
    const Played played = playText(threePlayerKuhn, always(callAction),
                                   "MATCHSTATE:0:5::Ks||\r\n"
                                   "hello\r\n"
                                   "\r\n"
                                   "MATCHSTATE:7:5::Ks||\r\n"
                                   "MATCHSTATE:0:5:cx:Ks||\r\n"
                                   "caf\xc3\xa9\t\r\n"
                                   "MATCHSTATE:0:5:crf:Ks||\r\n");
    EXPECT_TRUE(played.result);
    const std::string error = "ERROR: could not read match state: ";
    EXPECT_EQ(played.errors, error + "hello\n" + error + "\n" + error + "MATCHSTATE:7:5::Ks||\n" +
                                 error + "MATCHSTATE:0:5:cx:Ks||\n" + error +
                                 "caf\\xC3\\xA9\\x09\n");
    EXPECT_EQ(played.sent, version + "MATCHSTATE:0:5::Ks||:c\r\nMATCHSTATE:0:5:crf:Ks||:c\r\n");
    EXPECT_EQ(played.events,
              (Events{"hole Ks seat 0", "stage 0", "act", "action 0 type 0 size 0", "act"}));
}

// They read well, and no table could have seen them: no event, no answer, and the next line is
// taken as if they had not come.
TEST(PokerAgent, LinesThatCannotBeAreReportedAndPassedOver) {
    struct Case {
        const char* definition;
        std::string before;
        std::vector<std::string> lines;
        std::string after;
        std::string answered;
    };
    const std::vector<Case> cases = {
        {threePlayerKuhn,
         "MATCHSTATE:0:7::Ks||",
         {"MATCHSTATE:0:7:crf:||", "MATCHSTATE:0:7:crf:Ks|Ks|", "MATCHSTATE:0:7:crfc:Ks|Ks|",
          "MATCHSTATE:0:7:crfc:Ks||", "MATCHSTATE:256:7:crf:Ks||",
          "MATCHSTATE:0:4294967303:crf:Ks||"},
         "MATCHSTATE:0:7:crf:Ks||",
         "act"},
        {twoPlayerLimit,
         "MATCHSTATE:1:0::|AsKs",
         {"MATCHSTATE:1:0::|", "MATCHSTATE:1:0::|AsAs", "MATCHSTATE:0:0:cc/:AsKs|/As2c3c",
          "MATCHSTATE:1:0:cc/c:|AsKs/2c2c2c", "MATCHSTATE:0:0:cc/:|/As2c3c",
          "MATCHSTATE:1:4294967296::|AsKs"},
         "MATCHSTATE:1:0:cc/c:|AsKs/2c3c4c",
         "act"},
    };
    for (const Case& sequence : cases) {
        std::string text = sequence.before + "\r\n";
        std::string errors;
        for (const std::string& line : sequence.lines) {
            text += line + "\r\n";
            errors += "ERROR: could not read match state: " + line + "\n";
        }
        const Played played =
            playText(sequence.definition, always(callAction), text + sequence.after + "\r\n");
        const Played clean = playText(sequence.definition, always(callAction),
                                      sequence.before + "\r\n" + sequence.after + "\r\n");
        EXPECT_TRUE(played.result);
        EXPECT_EQ(played.errors, errors);
        EXPECT_EQ(played.sent, clean.sent);
        EXPECT_EQ(played.sent, version + sequence.before + ":c\r\n" + sequence.after + ":c\r\n");
        EXPECT_EQ(played.events, clean.events);
    }
}

// Seat 1 hears of a hand before it has cards, and of its end without having had any.
TEST(PokerAgent, UnknownCardsAreNotHandedOutAsCards) {
    const Played played = playText(threePlayerKuhn, always(callAction),
                                   "MATCHSTATE:1:5::||\r\n"
                                   "MATCHSTATE:1:5:c:|Ks|\r\n"
                                   "MATCHSTATE:1:5:crff:||\r\n");
    EXPECT_EQ(played.errors, "");
    EXPECT_EQ(played.sent, version + "MATCHSTATE:1:5:c:|Ks|:c\r\n");
    EXPECT_EQ(played.events, (Events{"hole  seat 1", "stage 0", "action 0 type 1 size 0", "act",
                                     "action 1 type 0 size 0", "over 2"}));
}

TEST(PokerAgent, ALineLongerThanTheBufferIsDroppedWhole) {
    const std::string good = "MATCHSTATE:0:5::Ks||\r\n";
    // Its second half would be a good state if it were taken for a line of its own.
    const std::string trap = std::string(4095, 'x') + good;
    const Played played = playText(threePlayerKuhn, always(callAction), trap + good);
    EXPECT_EQ(played.errors, "ERROR: could not read match state: " + std::string(200, 'x') + "\n");
    EXPECT_EQ(played.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n");
    // A megabyte without a line end, and one with a null byte in it.
    const Played long1 =
        playText(threePlayerKuhn, always(callAction), std::string(1 << 20, 'y') + "\n" + good);
    EXPECT_EQ(long1.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n");
    const Played null1 =
        playText(threePlayerKuhn, always(callAction), std::string("MATCH\0STATE\r\n", 13) + good);
    EXPECT_EQ(null1.errors, "ERROR: could not read match state: MATCH\\x00STATE\n");
    EXPECT_EQ(null1.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n");
}

TEST(PokerAgent, ALineOfTheBuffersSizeIsRead) {
    std::string line = "MATCHSTATE:0:5::Ks||";
    const std::string start = line;
    line += std::string(4094 - line.size(), ' ') + "\n";
    ASSERT_EQ(line.size(), 4095U);
    EXPECT_EQ(playText(threePlayerKuhn, always(callAction), line).sent, version + start + ":c\r\n");
    line.insert(30, " ");
    const Played played = playText(threePlayerKuhn, always(callAction), line);
    EXPECT_EQ(played.sent, version);
    EXPECT_NE(played.errors, "");
}

TEST(PokerAgent, AStateThatLeavesNoRoomForAnAnswerGetsNone) {
    // White space before a number is read over, so a state can be padded.
    const std::string end = "5::Ks||\n";
    const std::string start = "MATCHSTATE:0:";
    const std::string line = start + std::string(4095 - start.size() - end.size(), ' ') + end;
    const Played played = playText(threePlayerKuhn, always(callAction), line);
    EXPECT_TRUE(played.result);
    EXPECT_EQ(played.sent, version);
    EXPECT_TRUE(played.errors.starts_with("ERROR: could not read match state: MATCHSTATE:0: "));
}

TEST(PokerAgent, GarbageDoesNotFloodTheLog) {
    std::string garbage;
    for (int i = 0; i < 20000; ++i)
        garbage += "x\n";
    const Played played =
        playText(threePlayerKuhn, always(callAction), garbage + "MATCHSTATE:0:5::Ks||\r\n");
    EXPECT_LT(played.errors.size(), 600000U);
    EXPECT_NE(played.errors.find("ERROR: further lines that cannot be read are passed over"),
              std::string::npos);
    EXPECT_EQ(played.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n");
}

TEST(PokerAgent, EndsWellWhenTheDealerClosesInMidHand) {
    EXPECT_TRUE(playText(threePlayerKuhn, always(callAction), "MATCHSTATE:1:5::|Ks|\r\n").result);
    EXPECT_TRUE(playText(threePlayerKuhn, always(callAction), "MATCHSTATE:1:5").result);
    EXPECT_TRUE(playText(threePlayerKuhn, always(callAction), "").result);
}

TEST(PokerAgent, AFinishedHandWithEverybodyAllInIsSettled) {
    const Played played = playText(smallBlindFirst, always(callAction),
                                   "MATCHSTATE:0:5::KsQs|\r\n"
                                   "MATCHSTATE:0:5:cr20000:KsQs|\r\n"
                                   "MATCHSTATE:0:5:cr20000c:KsQs|2c7d/2h2s7c/9d/3h\r\n");
    EXPECT_EQ(played.events.back(), "over -20000");
}

TEST(PokerAgent, ADealerThatResetsEndsTheMatch) {
    const Played played =
        playScript(threePlayerKuhn, always(callAction), [](LoopbackDealer& dealer) {
            EXPECT_EQ(dealer.readLine(), version);
            dealer.send("MATCHSTATE:1:5::|Ks|\r\n");
            dealer.reset();
        });
    EXPECT_TRUE(played.result); // nothing was left to send
}

// A line is what ends with a line end or with the stream.
TEST(PokerAgent, AStateThatTheEndOfTheStreamEndsIsAnswered) {
    const Played played = playText(threePlayerKuhn, always(callAction), "MATCHSTATE:0:5::Ks||");
    EXPECT_TRUE(played.result);
    EXPECT_EQ(played.sent, version + "MATCHSTATE:0:5::Ks||:c\r\n");
}

// What a broken connection cut off is no line, however well it reads.
TEST(PokerAgent, AStateThatABreakCutsOffIsNone) {
    const Played played =
        playScript(threePlayerKuhn, always(callAction), [](LoopbackDealer& dealer) {
            EXPECT_EQ(dealer.readLine(), version);
            dealer.send("MATCHSTATE:1:5::|Ks|\r\nMATCHSTATE:1:5:c:|Ks|");
            dealer.reset();
        });
    EXPECT_TRUE(played.result);
    EXPECT_EQ(played.errors, "");
    EXPECT_EQ(played.events, (Events{"hole Ks seat 1", "stage 0"}));
}

// Fails at one call of connect()'s, in the way that a test asks for.
class FailingSockets : public SocketCalls {
public:
    FailingSockets(bool closesAtOnce, bool sends) : closesAtOnce_(closesAtOnce), sends_(sends) {}
    int connect(int fd, const sockaddr*, socklen_t) override {
        return closesAtOnce_ ? close(fd) : 0;
    }
    ssize_t send(int, const void*, size_t size) override {
        errno = EPIPE;
        return sends_ ? static_cast<ssize_t>(size) : -1;
    }

private:
    bool closesAtOnce_;
    bool sends_;
};

TEST(PokerAgent, SaysWhatKeptItFromGreeting) {
    const DefinitionFile file(threePlayerKuhn);
    const auto errorOf = [&](FailingSockets sockets, bool greets) {
        RecordingAgent agent(file.path(), always(callAction), sockets);
        testing::internal::CaptureStderr();
        EXPECT_EQ(agent.connect("127.0.0.1", 1), greets);
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(errorOf({false, true}, true), "");
    EXPECT_EQ(errorOf({true, true}, false), "ERROR: could not get socket streams\n");
    // The line is in a buffer when it is written; that it was not sent shows when that is flushed.
    EXPECT_EQ(errorOf({false, false}, false), "ERROR: could not get send version to server\n");
}

// The answer meets a closed connection: play() reports it and no signal kills the process.
TEST(PokerAgent, AnAnswerThatCannotBeSentEndsTheMatchWithAnError) {
    const DefinitionFile file(threePlayerKuhn);
    LoopbackDealer dealer;
    std::thread dealing;
    testing::internal::CaptureStderr();
    RecordingAgent agent(file.path(), [&](const Game&, const State&) {
        dealing.join(); // the dealer has gone by the time there is an answer
        usleep(20000);
        return callAction;
    });
    dealing = std::thread([&] {
        dealer.accept();
        dealer.readLine();
        dealer.send("MATCHSTATE:0:5::Ks||\r\n");
        usleep(50000);
        dealer.reset();
    });
    ASSERT_TRUE(agent.connect("127.0.0.1", dealer.port()));
    EXPECT_FALSE(agent.play());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: could not get send response to server\n");
}

TEST(PokerAgentDeath, FailuresToStartExitWithOne) {
    const DefinitionFile good(threePlayerKuhn);
    const auto construct = [](const char* path) { RecordingAgent agent(path, always(callAction)); };
    EXPECT_EXIT(construct("no/such/file.game"), testing::ExitedWithCode(1),
                "^ERROR: could not open game no/such/file.game\n$");
    EXPECT_EXIT(construct("/dev/null"), testing::ExitedWithCode(1),
                "^ERROR: could not read game /dev/null\n$");

    LoopbackDealer nobody;
    nobody.stopListening();
    const auto connect = [&](const char* host) {
        RecordingAgent agent(good.path(), always(callAction));
        agent.connect(host, nobody.port());
    };
    EXPECT_EXIT(connect("127.0.0.1"), testing::ExitedWithCode(1),
                "^ERROR: could not connect to 127.0.0.1:[0-9]+\n$");
    EXPECT_EXIT(connect("no.such.host.invalid"), testing::ExitedWithCode(1),
                "^ERROR: could not look up address for no.such.host.invalid\n$");
}

// However the network cuts and joins the lines, the same bytes are answered.
TEST(PokerAgent, CutAndJoinedLinesGetTheSameAnswers) {
    const GamePtr game = parseGame(smallBlindFirst);
    const std::string session = randomSession(*game, 40);
    const auto rule = [](const Game&, const State& state) {
        return state.handId % 3 == 0 ? raiseAction : callAction;
    };
    const Played whole = playText(smallBlindFirst, rule, session);
    EXPECT_GT(whole.sent.size(), 1000U);
    for (const size_t piece : {size_t{1}, size_t{7}, size_t{64}, size_t{1000}, size_t{0}}) {
        rng_state_t rng;
        init_genrand(&rng, 1);
        const Played cut = playScript(smallBlindFirst, rule, [&](LoopbackDealer& dealer) {
            for (size_t at = 0; at < session.size();) {
                const size_t length = piece != 0 ? piece : 1 + genrand_int32(&rng) % 64;
                dealer.send(session.substr(at, length));
                at += length;
            }
        });
        EXPECT_EQ(cut.sent, whole.sent) << piece;
        EXPECT_EQ(cut.events, whole.events) << piece;
    }
}

// Garbage between good lines changes nothing in the answers to the good ones.
TEST(PokerAgent, GarbageBetweenLinesDoesNotChangeTheAnswers) {
    const GamePtr game = parseGame(twoPlayerLimit);
    const std::string session = randomSession(*game, 40);
    const Played clean = playText(twoPlayerLimit, always(raiseAction), session);
    rng_state_t rng;
    init_genrand(&rng, 3);
    std::string dirty;
    for (const char c : session) {
        dirty += c;
        if (c == '\n' && genrand_int32(&rng) % 5 == 0) {
            const uint32_t length = genrand_int32(&rng) % 300;
            for (uint32_t i = 0; i < length; ++i) {
                const auto byte = static_cast<char>(genrand_int32(&rng) % 256);
                dirty += byte == 'M' ? 'm' : byte;
            }
            dirty += '\n';
        }
    }
    const Played played = playText(twoPlayerLimit, always(raiseAction), dirty);
    EXPECT_EQ(played.sent, clean.sent);
    EXPECT_EQ(played.events, clean.events);
}

} // namespace
} // namespace tamarin::test
