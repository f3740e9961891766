#include "dealer/reply.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {

using tamarin::test::loadGameFile;

namespace {

class Reply : public testing::Test {
protected:
    void use(const std::string& gameName, const std::string& text) {
        game = loadGameFile(gameName);
        ASSERT_EQ(readMatchState(text.c_str(), game.get(), &sent), static_cast<int>(text.size()));
        sentText = text;
    }
    Verdict judge(const std::string& line) { return judgeReply(game.get(), &sent, sentText, line); }
    void expectPlayed(const std::string& line, ActionType type, int size = 0) {
        const Verdict verdict = judge(line);
        EXPECT_FALSE(verdict.fault) << line << ": " << faultName(*verdict.fault);
        EXPECT_EQ(verdict.action.type, type) << line;
        EXPECT_EQ(verdict.action.size, size) << line;
    }
    void expectFault(const std::string& line, Fault fault, ActionType type, int size = 0) {
        const Verdict verdict = judge(line);
        ASSERT_TRUE(verdict.fault) << line;
        EXPECT_STREQ(faultName(*verdict.fault), faultName(fault)) << line;
        EXPECT_EQ(verdict.action.type, type) << line;
        EXPECT_EQ(verdict.action.size, size) << line;
    }

    GamePtr game;
    MatchState sent{};
    std::string sentText;
};

} // namespace

TEST_F(Reply, LegalAnswersArePlayed) {
    use("kuhn.limit.3p.game", "MATCHSTATE:1:31:cr:|Ks|");
    sent.viewingPlayer = 2;
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cr:||Ks");
    expectPlayed("MATCHSTATE:2:31:cr:||Ks:c", actionCall);
    expectPlayed("MATCHSTATE:2:31:cr:||Ks:k", actionCall);
    expectPlayed("MATCHSTATE:2:31:cr:||Ks:f", actionFold);
}

TEST_F(Reply, AnotherTextOfTheSameStateIsTaken) {
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cr:||Ks");
    expectPlayed("MATCHSTATE:2:31:kB:||kS:c", actionCall);
}

TEST_F(Reply, AnotherStateIsNonsense) {
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cr:||Ks");
    for (const char* line :
         {"MATCHSTATE:2:30:cr:||Ks:c", "MATCHSTATE:1:31:cr:||Ks:c", "MATCHSTATE:2:31:cc:||Ks:c",
          "MATCHSTATE:2:31:cr:||As:c", "MATCHSTATE:2:31:crc:||Ks:c"})
        expectFault(line, Fault::nonsense, actionFold);
}

TEST_F(Reply, TextThatIsNoAnswerIsNonsense) {
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cr:||Ks");
    for (const char* line :
         {"", "c", "MATCHSTATE", "MATCHSTATE:2:31:cr:||Ks",
          "MATCHSTATE:2:31:cr:||Ks:", "MATCHSTATE:2:31:cr:||Ksc", "MATCHSTATE:2:31:cr:||Ks:x",
          "MATCHSTATE:2:31:cr:||Ks:cc", "MATCHSTATE:2:31:cr:||Ks:c ", "MATCHSTATE:2:31:cr:||Ks::c",
          "#MATCHSTATE:2:31:cr:||Ks:c", "GET / HTTP/1.1"})
        expectFault(line, Fault::nonsense, actionFold);
    expectFault(std::string("MATCHSTATE:2:31:cr:||Ks:c\0c", 27), Fault::nonsense, actionFold);
    expectFault(std::string(4096, 'M'), Fault::nonsense, actionFold);
}

TEST_F(Reply, AnswerAgainstTheRulesIsIllegal) {
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cr:||Ks");
    expectFault(sentText + ":r", Fault::illegal, actionFold); // one raise is all there is
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cc:||Ks");
    expectFault(sentText + ":f", Fault::illegal, actionCall); // nothing is owed
    expectFault("nonsense", Fault::nonsense, actionCall);
}

TEST_F(Reply, WrongSizesAreMoved) {
    use("holdem.nolimit.2p.reverse_blinds.game", "MATCHSTATE:1:5:r300:|AsKs");
    sent = {};
    use("holdem.nolimit.2p.reverse_blinds.game", "MATCHSTATE:0:5:r300:AsKs|");
    expectPlayed(sentText + ":r500", actionRaise, 500);
    expectPlayed(sentText + ":r20000", actionRaise, 20000);
    testing::internal::CaptureStderr();
    expectFault(sentText + ":r499", Fault::wrongSize, actionRaise, 500);
    expectFault(sentText + ":r-5", Fault::wrongSize, actionRaise, 500);
    expectFault(sentText + ":r20001", Fault::wrongSize, actionRaise, 20000);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: raise of 499 increased to 500\n"
              "WARNING: raise of -5 increased to 500\n"
              "WARNING: raise of 20001 decreased to 20000\n");
    expectFault(sentText + ":r", Fault::nonsense, actionFold);
}

// The rules let a limit player raise from a stack below the bet, which lowers the bet of everybody
// and leaves chips in the pot that nobody wins.
TEST_F(Reply, RaiseFromAShortStackIsACall) {
    game = test::parseGame("GAMEDEF\nlimit\nnumplayers = 2\nnumrounds = 1\nstack = 100 4\n"
                           "blind = 1 1\nraisesize = 10\nfirstplayer = 1\nnumsuits = 4\n"
                           "numranks = 13\nnumholecards = 2\nnumboardcards = 0\nEND GAMEDEF\n");
    ASSERT_TRUE(game);
    sentText = "MATCHSTATE:1:0:r:|AsKs";
    ASSERT_GT(readMatchState(sentText.c_str(), game.get(), &sent), 0);
    expectPlayed(sentText + ":r", actionCall);
}

TEST_F(Reply, SubstituteFoldsOnlyWhatIsOwed) {
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cr:||Ks");
    EXPECT_EQ(substituteAction(game.get(), &sent.state).type, actionFold);
    use("kuhn.limit.3p.game", "MATCHSTATE:2:31:cc:||Ks");
    EXPECT_EQ(substituteAction(game.get(), &sent.state).type, actionCall);
}

} // namespace tamarin::test
