#include "driver/played_menu_blueprint.h"

#include "driver/menu_blueprint_directory.h"
#include "driver/possible_state.h"
#include "game/text.h"
#include "support/rng.h"
#include "support/split_mix.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// All buckets at all nodes play everything, each in its own way.
int32_t everything(int32_t node, size_t bucket, size_t edge) {
    const auto place = static_cast<uint64_t>(node) * 1000 + bucket * 100 + edge;
    return static_cast<int32_t>(mixBits(place + 1) % 1000);
}

std::unique_ptr<PlayedMenuBlueprint> openedMenu(const MenuBlueprintDirectory& directory) {
    const bool two = directory.game().numPlayers == 2;
    auto blueprint =
        PlayedMenuBlueprint::open(two ? noLimitBlueprint : threeBlueprint, ".", directory.game());
    EXPECT_TRUE(blueprint.ok()) << blueprint.error();
    return std::move(*blueprint);
}

// Legal, a raise of any size, small ones more often.
Action anythingLegal(const Game& game, const State& state, SplitMix& random) {
    int32_t least = 0;
    int32_t most = 0;
    if (random.below(3) == 0 && mayRaise(game, state, least, most)) {
        const double share =
            unitInterval(random()) * unitInterval(random()) * unitInterval(random());
        const auto more = static_cast<int32_t>(share * (most - least));
        return {actionRaise, random.below(8) == 0 ? most : least + more};
    }
    Action action{random.below(12) == 0 ? actionFold : actionCall, 0};
    return isValidAction(&game, &state, 0, &action) ? action : Action{actionCall, 0};
}

// What the dealer sends that seat.
MatchState seenFrom(const Game& game, const State& state, uint8_t seat) {
    MatchState seen{state, seat};
    for (uint8_t other = 0; other < game.numPlayers; ++other)
        if (other != seat)
            std::fill_n(seen.state.holeCards[other], game.numHoleCards, unknownCard);
    const int known = sumBoardCards(&game, state.round);
    std::fill(seen.state.boardCards + known, seen.state.boardCards + MAX_BOARD_CARDS, unknownCard);
    return seen;
}

struct Answers {
    int asked = 0;
    int legal = 0;
    int none = 0;
};

// Hands in which one seat answers by the blueprint and all else is done at random; astray: of so
// many of its decisions one is done otherwise, as by somebody else whose place it took.
Answers playAgainstAnything(const Game& game, PlayedMenuBlueprint& blueprint, uint32_t hands,
                            uint32_t astray) {
    Answers answers;
    SplitMix random(29);
    rng_state_t cards;
    init_genrand(&cards, 31);
    for (uint32_t hand = 0; hand < hands; ++hand) {
        State state{};
        initState(&game, hand, &state);
        dealCards(&game, &cards, &state);
        const auto own = static_cast<uint8_t>(hand % game.numPlayers);
        while (!state.finished) {
            Action action = anythingLegal(game, state, random);
            if (currentPlayer(&game, &state) == own && random.below(astray) != 0) {
                ++answers.asked;
                const auto drawn = blueprint.draw(seenFrom(game, state, own));
                if (drawn) {
                    action = *drawn;
                    answers.legal +=
                        isValidAction(&game, &state, 0, &action) && action.size == drawn->size;
                } else {
                    ++answers.none;
                }
            }
            doAction(&game, &action, &state);
        }
    }
    return answers;
}

TEST(PlayedMenuBlueprint, AnswersBetsOfAnySizeLegally) {
    const MenuBlueprintDirectory directory("bets = 1/2 1 A, A", {}, everything);
    const auto blueprint = openedMenu(directory);
    const Answers always = playAgainstAnything(directory.game(), *blueprint, 10'000, 1000000);
    EXPECT_GT(always.asked, 10'000);
    EXPECT_EQ(always.legal, always.asked);
    EXPECT_EQ(always.none, 0);
    const Answers astray = playAgainstAnything(directory.game(), *blueprint, 2'000, 3);
    EXPECT_GT(astray.asked, 1'000);
    EXPECT_EQ(astray.legal, astray.asked);
    EXPECT_EQ(astray.none, 0);
}

TEST(PlayedMenuBlueprint, HasEveryStateOfLimitForThree) {
    const MenuBlueprintDirectory directory("", {}, everything);
    const auto blueprint = openedMenu(directory);
    for (const uint32_t astray : {1000000U, 3U}) {
        const Answers answers = playAgainstAnything(directory.game(), *blueprint, 2'000, astray);
        EXPECT_GT(answers.asked, 2'000);
        EXPECT_EQ(answers.legal, answers.asked);
    }
}

MatchState readSeen(const Game& game, const std::string& text) {
    MatchState seen = unseenState();
    EXPECT_GT(readMatchState(text.c_str(), &game, &seen), 0) << text;
    return seen;
}

// Each bucket has an edge that it always takes: what is done tells whose bucket was looked up.
TEST(PlayedMenuBlueprint, LooksTheBucketOfItsSeatAndRoundUp) {
    const auto edgeOfBucket = [](int32_t, size_t bucket, size_t edge) {
        return static_cast<int32_t>(bucket % 4 == edge);
    };
    const MenuBlueprintDirectory directory("bets = 1 A",
                                           {{0, "AsKd", 2},
                                            {0, "7c7h", 3},
                                            {1, "AsKdKs9h4c", 1},
                                            {1, "7c7hKs9h4c", 0},
                                            {2, "AsKdKs9h4cJd", 1},
                                            {3, "AsKdKs9h4cJd3s", 2}},
                                           edgeOfBucket);
    const auto blueprint = openedMenu(directory);
    const auto answer = [&](const std::string& text) {
        const auto action = blueprint->draw(readSeen(directory.game(), "MATCHSTATE:" + text));
        EXPECT_TRUE(action.has_value()) << text;
        return action ? std::pair(action->type, action->size) : std::pair(actionInvalid, 0);
    };
    using Answer = std::pair<ActionType, int32_t>;
    // Before the flop edges are fold, call, a pot of 200 more than 100, and all-in.
    EXPECT_EQ(answer("1:0::|AsKd"), Answer(actionRaise, 300));
    EXPECT_EQ(answer("1:1::|7c7h"), Answer(actionRaise, 20000));
    EXPECT_EQ(answer("1:2::|2c7h"), Answer(actionFold, 0));
    EXPECT_EQ(answer("0:3:r300c/:AsKd|/Ks9h4c"), Answer(actionRaise, 900)); // a pot of 600
    EXPECT_EQ(answer("1:5:r300c/r900:|7c7h/Ks9h4c"), Answer(actionFold, 0));
    EXPECT_EQ(answer("0:6:r300c/cc/:AsKd|/Ks9h4c/Jd"), Answer(actionRaise, 900));
    EXPECT_EQ(answer("0:7:r300c/cc/cc/:AsKd|/Ks9h4c/Jd/3s"), Answer(actionRaise, 20000));
}

// Where a bet was taken for none and closes the tree's round, the answer is a call; how often says
// that the size is drawn, and that it is not drawn anew when the state comes again.
TEST(PlayedMenuBlueprint, TakesASmallBetForNoneNowAndThen) {
    const auto foldOrCheck = [](int32_t, size_t, size_t edge) {
        return static_cast<int32_t>(edge == 0);
    };
    const MenuBlueprintDirectory directory("bets = 1 A", {}, foldOrCheck);
    const auto blueprint = openedMenu(directory);
    global_urng().seed(77);
    int calls = 0;
    constexpr int hands = 3000;
    for (int hand = 0; hand < hands; ++hand) {
        // A check, and then a bet of half a pot: taken for a check by (1/2) / (3/2).
        const MatchState seen = readSeen(directory.game(), "MATCHSTATE:0:" + std::to_string(hand) +
                                                               ":cc/cr200:2c7h|/Ks9h4c");
        const auto first = blueprint->draw(seen);
        ASSERT_TRUE(first.has_value());
        calls += first->type == actionCall;
        for (int again = 0; again < 3; ++again)
            ASSERT_EQ(blueprint->draw(seen)->type, first->type);
        // Another dealer's hand of the same number has other cards.
        const auto other = readSeen(directory.game(), "MATCHSTATE:0:" + std::to_string(hand) +
                                                          ":cc/cr200:2c8h|/Ks9h4c");
        ASSERT_TRUE(blueprint->draw(other).has_value());
    }
    EXPECT_NEAR(calls, hands / 3, 5 * 26);
}

TEST(PlayedMenuBlueprint, KnowsAHandAgainByItsNumberCardsAndActions) {
    const PlayingDirectory directory;
    const GamePtr game = readDefinitionFile(noLimitGame.c_str());
    const auto goesOn = [&](const std::string& before, const std::string& now) {
        return goesOnFrom(readSeen(*game, "MATCHSTATE:" + before),
                          readSeen(*game, "MATCHSTATE:" + now), *game);
    };
    EXPECT_TRUE(goesOn("1:7::|AsKd", "1:7::|AsKd"));
    EXPECT_TRUE(goesOn("1:7::|AsKd", "1:7:r300r900:|AsKd"));
    EXPECT_TRUE(goesOn("1:7:r300r900:|AsKd", "1:7:r300r900c/r1000r3000:|AsKd/Ks9h4c"));
    EXPECT_FALSE(goesOn("1:7:r300r900:|AsKd", "1:7::|AsKd")) << "the next hand";
    EXPECT_FALSE(goesOn("1:7:r300r900:|AsKd", "1:7:r300r901:|AsKd"));
    EXPECT_FALSE(goesOn("1:7::|AsKd", "1:8::|AsKd"));
    EXPECT_FALSE(goesOn("1:7::|AsKd", "1:7::|AsKc"));
    EXPECT_FALSE(goesOn("0:7:c:AsKd|", "1:7:c:|AsKd"));
    EXPECT_FALSE(goesOn("0:7:cc/:AsKd|/Ks9h4c", "0:7:c:AsKd|"));
}

TEST(PlayedMenuBlueprint, HasNoAnswerOutOfTurnOrToWhatTheRulesRefuse) {
    const MenuBlueprintDirectory directory("bets = 1 A", {}, everything);
    const auto blueprint = openedMenu(directory);
    const MatchState good = readSeen(directory.game(), "MATCHSTATE:0:0:cr300:AsKd|");
    EXPECT_FALSE(blueprint->draw(good)) << "the other is to act";
    const MatchState own = readSeen(directory.game(), "MATCHSTATE:0:0:cr300r900:AsKd|");
    EXPECT_TRUE(blueprint->draw(own));
    MatchState broken = own;
    broken.state.action[0][1] = {actionInvalid, 0};
    EXPECT_FALSE(blueprint->draw(broken));
    broken = own;
    broken.state.action[0][1].size = 30000;
    EXPECT_FALSE(blueprint->draw(broken));
    broken = own;
    broken.state.finished = 1;
    EXPECT_FALSE(blueprint->draw(broken));
    broken = readSeen(directory.game(), "MATCHSTATE:0:0:c:AsKd|");
    broken.state.round = 1;
    EXPECT_FALSE(blueprint->draw(broken)) << "the round before has not ended";
}

TEST(PlayedMenuBlueprint, SaysWhatItPlaysAndWhatNot) {
    const MenuBlueprintDirectory directory("bets = 1 A", {}, everything);
    EXPECT_EQ(openedMenu(directory)->describe(),
              noLimitBlueprint + ", over small, 6400 iterations");
    const auto error = [&](const Game& game) {
        const auto refused = PlayedMenuBlueprint::open(noLimitBlueprint, ".", game);
        return refused ? "" : refused.error();
    };
    EXPECT_EQ(error(*readDefinitionFile(limitGame.c_str())),
              noLimitBlueprint + ": blueprints by external sampling are played in no-limit games "
                                 "for two and limit games for three");
    EXPECT_EQ(error(*readDefinitionFile(threeGame.c_str())),
              noLimitBlueprint + ": made for another game than this one");
    const uint64_t size = std::filesystem::file_size(noLimitBlueprint);
    CardsDirectory::flipBit(noLimitBlueprint, size - 1);
    EXPECT_EQ(error(directory.game()),
              noLimitBlueprint + ": damaged, block 1 of 1 does not fit its checksum");
    CardsDirectory::flipBit(noLimitBlueprint, size - 1);
    EXPECT_EQ(error(directory.game()), "");
    const std::string file = CardsDirectory::abstractionFile(3);
    CardsDirectory::flipBit(file, std::filesystem::file_size(file) - 2);
    EXPECT_TRUE(
        error(directory.game())
            .starts_with(noLimitBlueprint + " needs its card abstraction: " + file + ": damaged"));
    std::filesystem::remove_all("lookup");
    EXPECT_TRUE(
        error(directory.game()).starts_with(noLimitBlueprint + " needs its card abstraction: "));
}

} // namespace
} // namespace tamarin::test
