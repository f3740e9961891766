#include "driver/possible_state.h"

#include "game/games.h"
#include "game/random_hand.h"
#include "game/text.h"

#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Whether the line can be; it must be one that reads.
bool possible(const std::string& definition, const std::string& line) {
    const GamePtr game = parseGame(definition);
    MatchState seen = unseenState();
    EXPECT_GT(readMatchState(line.c_str(), game.get(), &seen), 0) << line;
    return isPossible(*game, seen);
}

TEST(PossibleState, NobodyActsOnUnknownCards) {
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:0:0::||"));
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:1:0:c:As||"));
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:1:0::|"));
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:1:0::"));
    EXPECT_TRUE(possible(threePlayerKuhn, "MATCHSTATE:0:0::As||"));
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:1:0::|2c2d")) << "2c is a card, too";
}

TEST(PossibleState, WhoIsNotToActNeedNotKnowYet) {
    EXPECT_TRUE(possible(threePlayerKuhn, "MATCHSTATE:1:0::||"));
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:0:0::|"));
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:1:0:f:|")) << "the hand is over";
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:0:0:f:|"));
}

TEST(PossibleState, ABoardComesAfterTheOwnCards) {
    // Seat 0 is to act, seat 1 looks on; then seat 1 folds on the flop.
    for (const char* seat : {"0", "1"}) {
        const std::string start = std::string("MATCHSTATE:") + seat;
        EXPECT_FALSE(possible(twoPlayerLimit, start + ":0:cc/:|/As2c3c"));
        EXPECT_FALSE(possible(twoPlayerLimit, start + ":0:cc/rf:|/As2c3c"));
        EXPECT_TRUE(possible(twoPlayerLimit, start + ":0:cc/:KsKh|QsQh/As2c3c"));
    }
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:1:0:cc/:|QsQh/As2c3c"));
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:1:0:cc/:QsQh|/As2c3c"));
}

TEST(PossibleState, NoCardIsThereTwice) {
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:1:0::|AsAs")) << "in one hand";
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:1:0::AsKs|QsAs")) << "in two";
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:0:0:cc/:AsKs|/2c3cKs"));
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:0:0:cc/:AsKs|/2c3c2c"));
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:0:0:cc/cc/:AsKs|/2c3c4c/3c"));
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:0:0:cc/cc/cc/:AsKs|/2c3c4c/5c/As"));
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:1:7:crfc:As|As|")) << "another's, too";
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:2:7:crf:As||As"));
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:0:0:cc/cc/cc/:AsAh|/AdAcKs/Kh/Kd"));
    // Suits and ranks of one card do not add up to another's.
    EXPECT_TRUE(possible(twoPlayerLimit, "MATCHSTATE:0:0:cc/cc/cc/:2c2d|3c3d/4c4d5c/5d/6c"));
}

TEST(PossibleState, AShowdownShowsEverybodyWhoIsIn) {
    EXPECT_TRUE(possible(threePlayerKuhn, "MATCHSTATE:0:7:crfc:As|Ks|"));
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:0:7:crfc:As||"));
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:0:7:crfc:|Ks|"));
    EXPECT_FALSE(possible(threePlayerKuhn, "MATCHSTATE:0:7:crcc:As|Ks|"));
    EXPECT_TRUE(possible(threePlayerKuhn, "MATCHSTATE:2:7:crfc:||Qs")) << "it has folded";
    EXPECT_TRUE(possible(threePlayerKuhn, "MATCHSTATE:1:7:crff:||")) << "nobody is left";
    EXPECT_FALSE(possible(twoPlayerLimit, "MATCHSTATE:0:7:cc/cc/cc/cc:AsAh|/AdAcKs/Kh/Kd"));
}

// Whatever a dealer deals and every seat sees of it.
TEST(PossibleState, EveryViewOfEveryRandomHandCanBe) {
    for (const char* definition :
         {twoPlayerKuhn, threePlayerKuhn, leduc, twoPlayerLimit, threePlayerLimit, twoPlayerNoLimit,
          smallBlindFirst, unevenNoLimit, sixPlayerNoLimit, withoutBlinds}) {
        const GamePtr game = parseGame(definition);
        int views = 0;
        for (uint32_t seed = 0; seed < 60; ++seed)
            playRandomHand(*game, seed, [&](const State& state) {
                for (uint8_t seat = 0; seat < game->numPlayers; ++seat) {
                    char text[MAX_LINE_LEN];
                    const MatchState view{state, seat};
                    ASSERT_GT(printMatchState(game.get(), &view, sizeof text, text), 0);
                    MatchState seen = unseenState();
                    // Between the last seat's cards and a first round's board stands nothing.
                    if (game->numBoardCards[0] != 0)
                        return;
                    ASSERT_GT(readMatchState(text, game.get(), &seen), 0) << text;
                    EXPECT_TRUE(isPossible(*game, seen)) << text;
                    ++views;
                }
            });
        EXPECT_TRUE(views > 300 || game->numBoardCards[0] != 0) << definition;
    }
}

} // namespace
} // namespace tamarin::test
