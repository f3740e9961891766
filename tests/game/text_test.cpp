#include "game/text.h"

#include "game/games.h"
#include "game/random_hand.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {
namespace {

constexpr int room = 4096;

std::string printed(const Game& game, const State& state) {
    char text[room];
    EXPECT_GE(printState(&game, &state, room, text), 0);
    return text;
}

std::string printed(const Game& game, const MatchState& state) {
    char text[room];
    EXPECT_GE(printMatchState(&game, &state, room, text), 0);
    return text;
}

int readMatch(const Game& game, const std::string& text) {
    MatchState state{};
    return readMatchState(text.c_str(), &game, &state);
}

TEST(ReadCard, TakesEitherCase) {
    uint8_t card = 99;
    EXPECT_EQ(readCard("As", &card), 2);
    EXPECT_EQ(card, 12 * 4 + 3);
    EXPECT_EQ(readCard("tD", &card), 2);
    EXPECT_EQ(card, 8 * 4 + 1);
    EXPECT_EQ(readCard("2c", &card), 2);
    EXPECT_EQ(card, 0);
}

TEST(ReadCard, RefusesEverythingElse) {
    uint8_t card = 0;
    for (const char* text : {"", "A", "Ax", "1c", "cA", "AA", " As", "\xff\xff"})
        EXPECT_EQ(readCard(text, &card), -1) << text;
}

TEST(ReadCards, StopsQuietlyAtTheFirstThatIsNone) {
    uint8_t cards[5];
    int consumed = -1;
    EXPECT_EQ(readCards("AsKd|", 5, cards, &consumed), 2);
    EXPECT_EQ(consumed, 4);
    EXPECT_EQ(readCards("AsKdQh", 2, cards, &consumed), 2);
    EXPECT_EQ(consumed, 4);
    EXPECT_EQ(readCards("", 2, cards, &consumed), 0);
    EXPECT_EQ(consumed, 0);
}

TEST(PrintCards, NeedRoomForTheTerminator) {
    const uint8_t cards[] = {0, 51};
    char text[8] = "zzzzzzz";
    EXPECT_EQ(printCard(51, 3, text), 2);
    EXPECT_STREQ(text, "As");
    EXPECT_EQ(printCard(51, 2, text), -1);
    EXPECT_EQ(printCards(2, cards, 5, text), 4);
    EXPECT_STREQ(text, "2cAs");
    EXPECT_EQ(printCards(2, cards, 4, text), -1);
    text[0] = 'z';
    EXPECT_EQ(printCards(0, cards, 8, text), 0);
    EXPECT_EQ(text[0], 'z');
}

TEST(ReadAction, KnowsEveryLetter) {
    const GamePtr game = parseGame(twoPlayerLimit);
    Action action;
    for (int byte = 0; byte < 256; ++byte) {
        const char text[2] = {static_cast<char>(byte), '\0'};
        const bool isFold = byte != 0 && std::strchr("fF", byte);
        const bool isCall = byte != 0 && std::strchr("cCkK", byte);
        const bool isRaise = byte != 0 && std::strchr("rRbB", byte);
        EXPECT_EQ(readAction(text, game.get(), &action), 1);
        EXPECT_EQ(action.type, isFold    ? actionFold
                               : isCall  ? actionCall
                               : isRaise ? actionRaise
                                         : actionInvalid);
        EXPECT_EQ(action.size, 0);
    }
}

TEST(ReadAction, ANoLimitRaiseNeedsItsSize) {
    const GamePtr game = parseGame(twoPlayerNoLimit);
    Action action;
    EXPECT_EQ(readAction("r250c", game.get(), &action), 4);
    EXPECT_EQ(action.type, actionRaise);
    EXPECT_EQ(action.size, 250);
    EXPECT_EQ(readAction("rc", game.get(), &action), -1);
    EXPECT_EQ(readAction("r", game.get(), &action), -1);
}

// The terminator is a byte like every other that is no letter of an action. One caller goes on
// reading behind an action, and refuses this one.
TEST(ReadAction, OfAnEmptyTextIsInvalid) {
    for (const char* text : {twoPlayerLimit, twoPlayerNoLimit}) {
        const GamePtr game = parseGame(text);
        Action action{actionRaise, 7};
        EXPECT_EQ(readAction("", game.get(), &action), 1);
        EXPECT_EQ(action.type, actionInvalid);
        EXPECT_EQ(action.size, 0);
        const State fresh = [&] {
            State state{};
            initState(game.get(), 0, &state);
            return state;
        }();
        for (const int fixSize : {0, 1})
            EXPECT_FALSE(isValidAction(game.get(), &fresh, fixSize, &action));
    }
}

TEST(PrintAction, FitsOrFails) {
    const GamePtr game = parseGame(twoPlayerNoLimit);
    const Action raise{actionRaise, 250};
    char text[16];
    EXPECT_EQ(printAction(game.get(), &raise, 5, text), 4);
    EXPECT_STREQ(text, "r250");
    EXPECT_EQ(printAction(game.get(), &raise, 4, text), -1);
    EXPECT_EQ(printAction(game.get(), &raise, 0, text), -1);
    const Action call{actionCall, 0};
    EXPECT_EQ(printAction(game.get(), &call, 16, text), 1);
    EXPECT_STREQ(text, "c");
    const GamePtr limit = parseGame(twoPlayerLimit);
    EXPECT_EQ(printAction(limit.get(), &raise, 16, text), 1);
    EXPECT_STREQ(text, "r");
}

TEST(Examples, ReadAndPrintBack) {
    const GamePtr kuhn = parseGame(threePlayerKuhn);
    MatchState match{};
    const std::string first = "MATCHSTATE:0:31:cr:Ks||";
    ASSERT_EQ(readMatchState(first.c_str(), kuhn.get(), &match), static_cast<int>(first.size()));
    EXPECT_EQ(match.viewingPlayer, 0);
    EXPECT_EQ(match.state.handId, 31U);
    EXPECT_EQ(currentPlayer(kuhn.get(), &match.state), 2);
    EXPECT_EQ(printed(*kuhn, match), first);

    const GamePtr limit = parseGame(twoPlayerLimit);
    const std::string second = "MATCHSTATE:1:7:cc/r:|9hQd/8dAs8s";
    ASSERT_EQ(readMatchState(second.c_str(), limit.get(), &match), static_cast<int>(second.size()));
    EXPECT_EQ(match.state.round, 1);
    EXPECT_EQ(printed(*limit, match), second);

    const GamePtr noLimit = parseGame(smallBlindFirst);
    State state{};
    const std::string third = "STATE:3:r300c/:4c5d|QsKh/2c3d4h";
    ASSERT_EQ(readState(third.c_str(), noLimit.get(), &state), static_cast<int>(third.size()));
    EXPECT_EQ(state.maxSpent, 300);
    EXPECT_EQ(printed(*noLimit, state), third);
}

TEST(ReadMatchState, LeavesWhatFollowsToTheCaller) {
    const GamePtr kuhn = parseGame(threePlayerKuhn);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:0:31:cr:Ks||\r\n"), 23);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:0:31:cr:Ks||:f"), 23);
}

TEST(ReadMatchState, ChecksTheViewingSeat) {
    const GamePtr kuhn = parseGame(twoPlayerKuhn);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:1:0::|Ks"), 19);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:2:0::|Ks"), -1);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:-1:0::|Ks"), -1);
}

// A number that does not fit is none: seat 257 is not seat 1.
TEST(ReadMatchState, NumbersDoNotWrap) {
    const GamePtr kuhn = parseGame(twoPlayerKuhn);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:257:0::|Ks"), -1);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:4294967297:0::|Ks"), -1);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:1:4294967295::|Ks"), 28);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:1:4294967296::|Ks"), -1);
    EXPECT_EQ(readMatch(*kuhn, "MATCHSTATE:1:-1::|Ks"), -1);
    State state{};
    EXPECT_EQ(readState("STATE:4294967296::Ks|", kuhn.get(), &state), -1);

    const GamePtr noLimit = parseGame(smallBlindFirst);
    EXPECT_GT(readMatch(*noLimit, "MATCHSTATE:0:1:r300:AsKs|"), 0);
    EXPECT_EQ(readMatch(*noLimit, "MATCHSTATE:0:1:r4294967596:AsKs|"), -1) << "300 and 2^32";
    Action action{};
    EXPECT_EQ(readAction("r2147483647", noLimit.get(), &action), 11);
    EXPECT_EQ(readAction("r2147483648", noLimit.get(), &action), -1);
}

TEST(ReadMatchState, RefusesBadSyntax) {
    const GamePtr kuhn = parseGame(twoPlayerKuhn);
    for (const char* text : {"", "MATCH", "matchstate:0:0::Ks|", "MATCHSTATE:", "MATCHSTATE:0",
                             "MATCHSTATE:0:", "MATCHSTATE:0:x::", "MATCHSTATE:0:1",
                             "STATE:0:::", "MATCHSTATE:0:1:q:Ks|", "MATCHSTATE:0:1:ccc:Ks|"})
        EXPECT_EQ(readMatch(*kuhn, text), -1) << text;
}

TEST(ReadMatchState, RefusesTheRaiseAfterTheCap) {
    const GamePtr game = parseGame(twoPlayerLimit);
    EXPECT_GT(readMatch(*game, "MATCHSTATE:0:1:cc/rrrr:AsKs|/2c3c4c"), 0);
    EXPECT_EQ(readMatch(*game, "MATCHSTATE:0:1:cc/rrrrr:AsKs|/2c3c4c"), -1);
}

TEST(ReadMatchState, HoleCardsAreWholeOrUnknown) {
    const GamePtr game = parseGame(twoPlayerLimit);
    EXPECT_GT(readMatch(*game, "MATCHSTATE:0:1::AsKs|"), 0);
    EXPECT_GT(readMatch(*game, "MATCHSTATE:0:1::|"), 0);
    EXPECT_EQ(readMatch(*game, "MATCHSTATE:0:1::As|"), -1);
}

TEST(ReadMatchState, ARaiseThatIsTooSmallIsRefusedAndNotRepaired) {
    const GamePtr game = parseGame(smallBlindFirst);
    testing::internal::CaptureStderr();
    EXPECT_GT(readMatch(*game, "MATCHSTATE:0:1:r300:AsKs|"), 0);
    EXPECT_EQ(readMatch(*game, "MATCHSTATE:0:1:r150:AsKs|"), -1);
    EXPECT_EQ(readMatch(*game, "MATCHSTATE:0:1:r:AsKs|"), -1);
    EXPECT_EQ(readMatch(*game, "MATCHSTATE:0:1:r300r400:AsKs|"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ReadMatchState, TheRulesDecideWhereARoundEnds) {
    const GamePtr game = parseGame(leduc);
    MatchState state{};
    ASSERT_EQ(readMatchState("MATCHSTATE:0:1:cc:Ks|Ad", game.get(), &state), -1);
    ASSERT_GT(readMatchState("MATCHSTATE:0:1:cc:Ks|/Ad", game.get(), &state), 0);
    EXPECT_EQ(state.state.round, 1);
    EXPECT_GT(readMatch(*game, "MATCHSTATE:0:1:c//c/:Ks|/Ad"), 0);
}

TEST(ReadMatchState, MayEndAfterTheBetting) {
    const GamePtr game = parseGame(threePlayerKuhn);
    EXPECT_EQ(readMatch(*game, "MATCHSTATE:0:5:cr"), 17);
    const GamePtr withBoard = parseGame(leduc);
    EXPECT_EQ(readMatch(*withBoard, "MATCHSTATE:0:5:c"), 16);
    EXPECT_EQ(readMatch(*withBoard, "MATCHSTATE:0:5:cc"), -1);
}

TEST(ReadMatchState, EitherLetterOfACallPrintsAsC) {
    const GamePtr game = parseGame(threePlayerKuhn);
    MatchState state{};
    ASSERT_GT(readMatchState("MATCHSTATE:0:5:kKB:As||", game.get(), &state), 0);
    EXPECT_EQ(printed(*game, state), "MATCHSTATE:0:5:ccr:As||");
}

TEST(PrintMatchState, ShowsOthersOnlyAtAShowdown) {
    const GamePtr game = parseGame(threePlayerKuhn);
    MatchState match{};
    ASSERT_GT(readState("STATE:1:crfc:Js|Qs|As", game.get(), &match.state), 0);
    ASSERT_TRUE(match.state.finished);
    match.viewingPlayer = 0;
    EXPECT_EQ(printed(*game, match), "MATCHSTATE:0:1:crfc:Js|Qs|");
    match.viewingPlayer = 2;
    EXPECT_EQ(printed(*game, match), "MATCHSTATE:2:1:crfc:Js|Qs|As");
    ASSERT_GT(readState("STATE:1:crff:Js|Qs|As", game.get(), &match.state), 0);
    match.viewingPlayer = 1;
    EXPECT_EQ(printed(*game, match), "MATCHSTATE:1:1:crff:|Qs|"); // nobody is left to show to
}

TEST(Writers, FailAtEverySizeThatIsTooSmall) {
    const GamePtr game = parseGame(twoPlayerNoLimit);
    MatchState match{};
    const std::string text = "MATCHSTATE:1:70:r300c/r900:|QsKh/2c3d4h";
    ASSERT_EQ(readMatchState(text.c_str(), game.get(), &match), static_cast<int>(text.size()));
    std::string buffer(room, 'z');
    const auto length = static_cast<int>(text.size());
    for (int size = 0; size <= length; ++size) {
        EXPECT_EQ(printMatchState(game.get(), &match, size, buffer.data()), -1) << size;
        EXPECT_EQ(buffer[static_cast<size_t>(size)], 'z');
    }
    EXPECT_EQ(printMatchState(game.get(), &match, length + 1, buffer.data()), length);
}

TEST(StatesEqual, ComparesNumberBettingAndCards) {
    const GamePtr game = parseGame(twoPlayerNoLimit);
    const auto read = [&](const char* text) {
        State state{};
        EXPECT_GT(readState(text, game.get(), &state), 0) << text;
        return state;
    };
    const State base = read("STATE:3:r300c/:4c5d|QsKh/2c3d4h");
    const State same = read("STATE:3:b300k:4C5D|qskh/2c3d4h");
    EXPECT_TRUE(statesEqual(game.get(), &base, &same));
    for (const char* text : {"STATE:4:r300c/:4c5d|QsKh/2c3d4h", "STATE:3:r301c/:4c5d|QsKh/2c3d4h",
                             "STATE:3:r300c/c:4c5d|QsKh/2c3d4h", "STATE:3:r300:4c5d|QsKh",
                             "STATE:3:r300c/:4c6d|QsKh/2c3d4h", "STATE:3:r300c/:4c5d|QsKd/2c3d4h",
                             "STATE:3:r300c/:4c5d|QsKh/2c3d5h"}) {
        const State other = read(text);
        EXPECT_FALSE(statesEqual(game.get(), &base, &other)) << text;
    }
}

TEST(MatchStatesEqual, ComparesTheViewingSeatsCardsOnly) {
    const GamePtr game = parseGame(twoPlayerNoLimit);
    const auto read = [&](const char* text) {
        MatchState state{};
        EXPECT_GT(readMatchState(text, game.get(), &state), 0) << text;
        return state;
    };
    const MatchState base = read("MATCHSTATE:0:3:r300c/:4c5d|/2c3d4h");
    const MatchState same = read("MATCHSTATE:0:3:r300c/:4c5d|QsKh/2c3d4h");
    const MatchState seat = read("MATCHSTATE:1:3:r300c/:4c5d|/2c3d4h");
    const MatchState cards = read("MATCHSTATE:0:3:r300c/:4c6d|/2c3d4h");
    EXPECT_TRUE(matchStatesEqual(game.get(), &base, &same));
    EXPECT_FALSE(matchStatesEqual(game.get(), &base, &seat));
    EXPECT_FALSE(matchStatesEqual(game.get(), &base, &cards));
}

// Every state of a random hand reads back equal, as a state and as every seat's match state, and
// what is printed from the copy is the same text.
void checkRoundTrip(const Game& game, const State& state) {
    const std::string text = printed(game, state);
    State copy{};
    ASSERT_EQ(readState(text.c_str(), &game, &copy), static_cast<int>(text.size())) << text;
    ASSERT_TRUE(statesEqual(&game, &state, &copy)) << text;
    ASSERT_EQ(printed(game, copy), text);
    ASSERT_EQ(copy.finished, state.finished) << text;
    ASSERT_EQ(copy.maxSpent, state.maxSpent) << text;
    ASSERT_EQ(copy.minRaiseTo, state.minRaiseTo) << text;
    for (uint8_t p = 0; p < game.numPlayers; ++p) {
        const MatchState view{state, p};
        const std::string seen = printed(game, view);
        MatchState viewCopy{};
        ASSERT_EQ(readMatchState(seen.c_str(), &game, &viewCopy), static_cast<int>(seen.size()));
        ASSERT_TRUE(matchStatesEqual(&game, &view, &viewCopy)) << seen;
        ASSERT_EQ(printed(game, viewCopy), seen);
    }
}

RC_GTEST_PROP(RoundTrip, OfRandomLegalHands, ()) {
    const auto seed = *rc::gen::arbitrary<uint32_t>();
    for (const char* text : manyGames()) {
        const GamePtr game = parseGame(text);
        playRandomHand(*game, seed, [&](const State& state) {
            // Only the board of the rounds reached travels; the rest stays unknown.
            checkRoundTrip(*game, state);
        });
    }
}

// Nothing that is read is taken on trust: whatever a damaged line still says reads back the same.
RC_GTEST_PROP(DamagedLines, ReadToAStateThatPrintsAndReadsBackOrNotAtAll, ()) {
    const auto seed = *rc::gen::arbitrary<uint32_t>();
    const GamePtr game = parseGame(manyGames()[*rc::gen::inRange(size_t{0}, manyGames().size())]);
    std::string text;
    playRandomHand(*game, seed, [&](const State& state) {
        const MatchState view{state, static_cast<uint8_t>(seed % game->numPlayers)};
        text = printed(*game, view);
    });
    for (size_t at = 0; at < text.size(); ++at) {
        std::string damaged = text;
        const auto byte = static_cast<char>(*rc::gen::inRange(1, 256));
        switch (*rc::gen::inRange(0, 4)) {
        case 0:
            damaged[at] = byte;
            break;
        case 1:
            damaged.erase(at, 1);
            break;
        case 2:
            damaged.insert(at, 1, damaged[at]);
            break;
        default:
            damaged.resize(at);
        }
        MatchState state{};
        testing::internal::CaptureStderr();
        const int consumed = readMatchState(damaged.c_str(), game.get(), &state);
        testing::internal::GetCapturedStderr();
        RC_ASSERT(consumed >= -1 && consumed <= static_cast<int>(damaged.size()));
        if (consumed >= 0) {
            MatchState again{};
            const std::string canonical = printed(*game, state);
            RC_ASSERT(readMatchState(canonical.c_str(), game.get(), &again) ==
                      static_cast<int>(canonical.size()));
            RC_ASSERT(matchStatesEqual(game.get(), &state, &again));
        }
    }
}

} // namespace
} // namespace tamarin::test
