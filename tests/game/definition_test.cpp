#include "game/definition.h"

#include "game/games.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// A two-player, two-round limit game, with lines replaced or added after it.
std::string definition(const std::string& extra) {
    return "GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 2\nblind = 1 2\nraiseSize = 2 4\n"
           "numSuits = 4\nnumRanks = 13\nnumHoleCards = 2\nnumBoardCards = 0 3\n" +
           extra + "\nEND GAMEDEF\n";
}

std::string errorOf(const std::string& text) {
    testing::internal::CaptureStderr();
    const GamePtr game = parseGame(text);
    std::string error = testing::internal::GetCapturedStderr();
    EXPECT_EQ(game, nullptr);
    return error;
}

TEST(ReadGame, FillsEveryField) {
    const GamePtr game = parseGame(threePlayerLimit);
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->bettingRule, limitRule);
    EXPECT_EQ(game->numPlayers, 3);
    EXPECT_EQ(game->numRounds, 4);
    EXPECT_EQ(game->blind[0], 5);
    EXPECT_EQ(game->blind[1], 10);
    EXPECT_EQ(game->blind[2], 0);
    EXPECT_EQ(game->raiseSize[3], 20);
    EXPECT_EQ(game->firstPlayer[0], 2);
    EXPECT_EQ(game->firstPlayer[1], 0);
    EXPECT_EQ(game->maxRaises[0], 3);
    EXPECT_EQ(game->maxRaises[3], 4);
    EXPECT_EQ(game->stack[2], unboundedStack);
    EXPECT_EQ(game->numBoardCards[1], 3);
}

TEST(ReadGame, TheShippedGamesAreThoseOfTheTests) {
    const std::pair<const char*, const char*> games[] = {
        {"kuhn.limit.3p.game", threePlayerKuhn},
        {"holdem.limit.2p.reverse_blinds.game", twoPlayerLimit},
        {"holdem.limit.3p.game", threePlayerLimit},
        {"holdem.nolimit.2p.reverse_blinds.game", twoPlayerNoLimit},
    };
    for (const auto& [name, text] : games) {
        const GamePtr file = loadGameFile(name);
        const GamePtr expected = parseGame(text);
        ASSERT_NE(file, nullptr) << name;
        EXPECT_EQ(std::memcmp(file.get(), expected.get(), sizeof(Game)), 0) << name;
    }
}

TEST(ReadGame, KeywordsComeInAnyMixOfCases) {
    const GamePtr game = parseGame(definition("NOLIMIT\nNumPlayers 3\nBLIND 1 2 3"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->bettingRule, noLimitRule);
    EXPECT_EQ(game->numPlayers, 3);
    const GamePtr limit = parseGame(definition("nolimit\nLimit"));
    ASSERT_NE(limit, nullptr);
    EXPECT_EQ(limit->bettingRule, limitRule);
}

TEST(ReadGame, SkipsCommentsEvenBeforeAKeyword) {
    const GamePtr game = parseGame(definition("#numPlayers = 9\n\n# nolimit"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->numPlayers, 2);
    EXPECT_EQ(game->bettingRule, limitRule);
}

TEST(ReadGame, ComparesOnlyThePrefixOfAKeyword) {
    const GamePtr game = parseGame(definition("nolimits\nlimitless\nstack100 200\nnonsense 7"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->stack[0], 100);
    EXPECT_EQ(game->stack[1], 200);
    EXPECT_EQ(game->bettingRule, limitRule);
    // The plural is the keyword too, but its last letter stands where the values begin.
    EXPECT_EQ(errorOf(definition("blinds = 3 4")), "only read 0 blinds, need 2\n");
}

TEST(ReadGame, SeparatesNumbersByBlanksAndEqualSigns) {
    for (const char* line : {"stack = 20000 30000", "stack 20000 30000", "stack=20000=30000",
                             "stack == 20000\t30000"}) {
        const GamePtr game = parseGame(definition(line));
        ASSERT_NE(game, nullptr) << line;
        EXPECT_EQ(game->stack[0], 20000) << line;
        EXPECT_EQ(game->stack[1], 30000) << line;
    }
}

TEST(ReadGame, ALaterLineReplacesAnEarlierOne) {
    const GamePtr game = parseGame(definition("blind = 5 6 7\nblind = 3 4"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->blind[0], 3);
    EXPECT_EQ(errorOf(definition("blind = 5 6\nblind = 3")), "only read 1 blinds, need 2\n");
}

TEST(ReadGame, StopsAtItsEndLineAndLeavesTheRest) {
    std::string text = definition("") + "numPlayers = 9\n";
    FILE* file = fmemopen(text.data(), text.size(), "r");
    const GamePtr game(readGame(file));
    char next[64];
    ASSERT_NE(std::fgets(next, sizeof next, file), nullptr);
    std::fclose(file);
    ASSERT_NE(game, nullptr);
    EXPECT_STREQ(next, "numPlayers = 9\n");
}

TEST(ReadGame, DoesNotNeedAnEndLine) {
    std::string text = definition("");
    text.resize(text.find("END"));
    EXPECT_NE(parseGame(text), nullptr);
}

TEST(ReadGame, TwoPlayersNeedNoStacksAndFiveDo) {
    const GamePtr two = parseGame(definition(""));
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(two->stack[0], unboundedStack);
    EXPECT_EQ(printToString(*two).find("stack"), std::string::npos);
    EXPECT_EQ(errorOf(definition("numPlayers = 5\nblind = 1 2 0 0 0")),
              "only read 4 stack sizes, need 5\n");
}

TEST(ReadGame, FirstPlayersAreStoredAsSeats) {
    const GamePtr game = parseGame(definition("firstPlayer = 2 1"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->firstPlayer[0], 1);
    EXPECT_EQ(game->firstPlayer[1], 0);
    EXPECT_EQ(errorOf(definition("firstPlayer = 0 1")), "invalid first player 0 on round 1\n");
    EXPECT_EQ(errorOf(definition("firstPlayer = 1 3")), "invalid first player 3 on round 2\n");
}

TEST(ReadGame, ALimitGameNeedsARaiseSizeARoundAndNoLimitNone) {
    const std::string four = "numRounds = 4\nnumBoardCards = 0 3 1 1\nraiseSize = 1 2 3";
    EXPECT_EQ(errorOf(definition(four)), "only read 3 raise sizes, need 4\n");
    EXPECT_NE(parseGame(definition(four + "\nnolimit")), nullptr);
}

TEST(ReadGame, IgnoresRaiseSizesAfterTheFourth) {
    const GamePtr game =
        parseGame(definition("numRounds = 4\nnumBoardCards = 0 3 1 1\nraiseSize = 1 2 3 4 5 6"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->raiseSize[3], 4);
    EXPECT_EQ(game->bettingRule, limitRule);
}

TEST(ReadGame, TheDeckMustHoldAllCards) {
    const std::string deck = "numPlayers = 3\nblind = 1 1 1\nnumRounds = 1\nnumSuits = 1\n"
                             "numRanks = 3\nnumHoleCards = 1\nnumBoardCards = ";
    EXPECT_EQ(errorOf(definition(deck + "1")),
              "too many hole and board cards for specified deck\n");
    EXPECT_NE(parseGame(definition(deck + "0")), nullptr);
    // A board longer than a hand's record would have nowhere to go.
    EXPECT_EQ(errorOf(definition("numBoardCards = 0 8")),
              "too many hole and board cards for specified deck\n");
}

TEST(ReadGame, ByteValuesWrapAround) {
    const GamePtr game = parseGame(definition("numPlayers = 258"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->numPlayers, 2);
}

TEST(ReadGame, NamesEachInvalidValue) {
    EXPECT_EQ(errorOf(definition("numRounds = 0")), "invalid number of rounds: 0\n");
    EXPECT_EQ(errorOf(definition("numRounds = 5")), "invalid number of rounds: 5\n");
    EXPECT_EQ(errorOf(definition("numPlayers = 1")), "invalid number of players: 1\n");
    EXPECT_EQ(errorOf(definition("numPlayers = 11")), "invalid number of players: 11\n");
    EXPECT_EQ(errorOf(definition("stack = 5")), "only read 1 stack sizes, need 2\n");
    EXPECT_EQ(errorOf(definition("stack = 5 1")),
              "blind for player 2 is greater than stack size\n");
    EXPECT_EQ(errorOf(definition("numSuits = 5")), "invalid number of suits: 5\n");
    EXPECT_EQ(errorOf(definition("numRanks = 0")), "invalid number of ranks: 0\n");
    EXPECT_EQ(errorOf(definition("numHoleCards = 4")), "invalid number of hole cards: 4\n");
    EXPECT_EQ(errorOf(definition("numBoardCards = 3")), "only read 1 board card numbers, need 2\n");
    EXPECT_EQ(errorOf(""), "invalid number of rounds: 0\n");
}

// The checks in their order. Each line breaks one of them and no other, so that of two that are
// broken at once the message tells which comes first.
TEST(ReadGame, ChecksInOrder) {
    const std::pair<const char*, const char*> checks[] = {
        {"numRounds = 9", "invalid number of rounds: 9\n"},
        {"numPlayers = 11", "invalid number of players: 11\n"},
        {"stack = 50", "only read 1 stack sizes, need 2\n"},
        {"blind = 7", "only read 1 blinds, need 2\n"},
        {"stack = 1 1", "blind for player 2 is greater than stack size\n"},
        {"raiseSize = 2", "only read 1 raise sizes, need 2\n"},
        {"firstPlayer = 1 3", "invalid first player 3 on round 2\n"},
        {"numSuits = 5", "invalid number of suits: 5\n"},
        {"numRanks = 14", "invalid number of ranks: 14\n"},
        {"numHoleCards = 4", "invalid number of hole cards: 4\n"},
        {"numBoardCards = 3", "only read 1 board card numbers, need 2\n"},
        {"numBoardCards = 0 49", "too many hole and board cards for specified deck\n"},
    };
    for (size_t i = 0; i < std::size(checks); ++i) {
        EXPECT_EQ(errorOf(definition(checks[i].first)), checks[i].second);
        for (size_t k = i + 1; k < std::size(checks); ++k) {
            // Two values of one line cannot both be read.
            const std::string line = checks[i].first;
            const std::string keyword = line.substr(0, line.find(' '));
            if (std::string(checks[k].first).starts_with(keyword))
                continue;
            EXPECT_EQ(errorOf(definition(line + "\n" + checks[k].first)), checks[i].second)
                << line << " and " << checks[k].first;
        }
    }
    // The pairs that the loop leaves out, and what a valid first player becomes.
    EXPECT_EQ(errorOf(definition("numPlayers = 3\nblind = 9 9\nstack = 1 1 1")),
              "only read 2 blinds, need 3\n");
    EXPECT_EQ(errorOf(definition("numSuits = 1\nnumRanks = 4\nnumBoardCards = 9")),
              "only read 1 board card numbers, need 2\n");
}

TEST(ReadGame, TakesAnyBytesForText) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(parseGame(std::string(100000, 'x')), nullptr);
    EXPECT_EQ(parseGame("stack = 999999999999999999999999999999 -1\n"), nullptr);
    EXPECT_EQ(parseGame(std::string("num\0Players = 2\n\xff\xfe", 18)), nullptr);
    testing::internal::GetCapturedStderr();
}

TEST(PrintGame, WritesEveryLine) {
    const GamePtr game = parseGame(unevenNoLimit);
    EXPECT_EQ(printToString(*game),
              "GAMEDEF\nnolimit\nnumPlayers = 3\nnumRounds = 4\nstack = 100 200 300\n"
              "blind = 5 10 0\nfirstPlayer = 3 1 1 1\nnumSuits = 4\nnumRanks = 13\n"
              "numHoleCards = 2\nnumBoardCards = 0 3 1 1\nEND GAMEDEF\n");
    const GamePtr limit = parseGame(twoPlayerLimit);
    EXPECT_EQ(printToString(*limit),
              "GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 4\nblind = 10 5\n"
              "raiseSize = 10 10 20 20\nfirstPlayer = 2 1 1 1\nmaxRaises = 3 4 4 4\n"
              "numSuits = 4\nnumRanks = 13\nnumHoleCards = 2\nnumBoardCards = 0 3 1 1\n"
              "END GAMEDEF\n");
}

TEST(PrintGame, ReadsBackEqual) {
    for (const char* text : manyGames()) {
        const GamePtr game = parseGame(text);
        ASSERT_NE(game, nullptr) << text;
        const GamePtr again = parseGame(printToString(*game));
        ASSERT_NE(again, nullptr) << text;
        EXPECT_EQ(printToString(*again), printToString(*game));
    }
}

TEST(PrintGame, MoreThanFourUnboundedStacksDoNotReadBack) {
    GamePtr game = parseGame(definition("numPlayers = 5\nblind = 1 2 0 0 0\n"
                                        "stack = 2147483647 2147483647 2147483647 2147483647 "
                                        "2147483647"));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(errorOf(printToString(*game)), "only read 4 stack sizes, need 5\n");
}

} // namespace
} // namespace tamarin::test
