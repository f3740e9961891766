#include "game/state.h"

#include "game/games.h"
#include "game/random_hand.h"
#include "game/text.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {
namespace {

constexpr Action fold{actionFold, 0};
constexpr Action call{actionCall, 0};
constexpr Action raise{actionRaise, 0};

constexpr Action raiseTo(int32_t size) {
    return {actionRaise, size};
}

State fresh(const Game& game, uint32_t handId = 0) {
    State state{};
    initState(&game, handId, &state);
    return state;
}

void play(const Game& game, State& state, std::initializer_list<Action> actions) {
    for (Action action : actions) {
        ASSERT_TRUE(isValidAction(&game, &state, 0, &action));
        doAction(&game, &action, &state);
    }
}

void setCards(State& state, const Game& game, std::initializer_list<const char*> hole,
              const char* board) {
    int p = 0;
    int consumed = 0;
    for (const char* cards : hole)
        readCards(cards, game.numHoleCards, state.holeCards[p++], &consumed);
    readCards(board, MAX_BOARD_CARDS, state.boardCards, &consumed);
}

TEST(InitState, PutsTheBlindsIn) {
    const GamePtr game = parseGame(threePlayerLimit);
    const State state = fresh(*game, 17);
    EXPECT_EQ(state.handId, 17U);
    EXPECT_EQ(state.maxSpent, 10);
    EXPECT_EQ(state.minRaiseTo, 0);
    EXPECT_EQ(state.spent[0], 5);
    EXPECT_EQ(state.spent[2], 0);
    EXPECT_EQ(state.round, 0);
    EXPECT_FALSE(state.finished);
    EXPECT_EQ(currentPlayer(game.get(), &state), 2);
}

TEST(InitState, MinimumRaiseOfANoLimitGame) {
    EXPECT_EQ(fresh(*parseGame(smallBlindFirst)).minRaiseTo, 200);
    EXPECT_EQ(fresh(*parseGame(withoutBlinds)).minRaiseTo, 1);
}

TEST(DealCards, TheSameSeedGivesTheSameDeal) {
    const GamePtr game = parseGame(twoPlayerLimit);
    rng_state_t a;
    rng_state_t b;
    init_genrand(&a, 5);
    init_genrand(&b, 5);
    State x = fresh(*game);
    State y = fresh(*game);
    for (int i = 0; i < 20; ++i) {
        dealCards(game.get(), &a, &x);
        dealCards(game.get(), &b, &y);
        EXPECT_EQ(std::memcmp(x.holeCards, y.holeCards, sizeof x.holeCards), 0);
        EXPECT_EQ(std::memcmp(x.boardCards, y.boardCards, sizeof x.boardCards), 0);
    }
}

// Written out once more from the order of dealing: the deck suit by suit, one draw a card, the last
// card moved into the gap.
TEST(DealCards, KeepsTheOrderOfDealing) {
    const GamePtr game = parseGame(unevenNoLimit);
    rng_state_t rng;
    rng_state_t again;
    init_genrand(&rng, 99);
    init_genrand(&again, 99);
    State state = fresh(*game);
    dealCards(game.get(), &rng, &state);

    std::vector<uint8_t> deck;
    for (int suit = 0; suit < 4; ++suit)
        for (int rank = 0; rank < 13; ++rank)
            deck.push_back(static_cast<uint8_t>(rank * 4 + suit));
    const auto draw = [&] {
        const size_t i = genrand_int32(&again) % deck.size();
        const uint8_t card = deck[i];
        deck[i] = deck.back();
        deck.pop_back();
        return card;
    };
    for (int p = 0; p < 3; ++p)
        for (int c = 0; c < 2; ++c)
            EXPECT_EQ(state.holeCards[p][c], draw());
    for (int c = 0; c < 5; ++c)
        EXPECT_EQ(state.boardCards[c], draw());
}

TEST(DealCards, AShortDeckHasTheHighestRanksAndLastSuits) {
    const GamePtr game = parseGame(threePlayerKuhn);
    rng_state_t rng;
    init_genrand(&rng, 1);
    std::set<uint8_t> seen;
    State state = fresh(*game);
    for (int i = 0; i < 200; ++i) {
        dealCards(game.get(), &rng, &state);
        for (int p = 0; p < 3; ++p)
            seen.insert(state.holeCards[p][0]);
    }
    EXPECT_EQ(seen, (std::set<uint8_t>{9 * 4 + 3, 10 * 4 + 3, 11 * 4 + 3, 12 * 4 + 3}));
}

TEST(BoardCards, CountsByRound) {
    const GamePtr game = parseGame(twoPlayerLimit);
    EXPECT_EQ(bcStart(game.get(), 0), 0);
    EXPECT_EQ(bcStart(game.get(), 3), 4);
    EXPECT_EQ(sumBoardCards(game.get(), 0), 0);
    EXPECT_EQ(sumBoardCards(game.get(), 1), 3);
    EXPECT_EQ(sumBoardCards(game.get(), 3), 5);
}

TEST(LimitRound, TheRaiseAfterTheCapIsInvalid) {
    const GamePtr game = parseGame(twoPlayerLimit);
    State state = fresh(*game);
    play(*game, state, {call, call});
    ASSERT_EQ(state.round, 1);
    play(*game, state, {raise, raise, raise, raise});
    EXPECT_EQ(numRaises(&state), 4);
    Action fifth = raise;
    EXPECT_FALSE(isValidAction(game.get(), &state, 1, &fifth));
    EXPECT_EQ(state.maxSpent, 10 + 4 * 10);
}

TEST(LimitRound, AnUncappedRoundStopsNearTheEndOfItsActionList) {
    std::string text = twoPlayerLimit;
    text.replace(text.find("3 4 4 4"), 7, "255 255 255 255");
    const GamePtr game = parseGame(text);
    State state = fresh(*game);
    int raises = 0;
    testing::internal::CaptureStderr();
    for (Action next = raise; isValidAction(game.get(), &state, 0, &next); ++raises)
        doAction(game.get(), &next, &state);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: #actions in round is too close to MAX_NUM_ACTIONS, forcing call/fold\n");
    EXPECT_EQ(raises, MAX_NUM_ACTIONS - 1); // the answer to the last one still fits
    play(*game, state, {call});
    EXPECT_EQ(state.round, 1);
}

TEST(LimitRound, ARaiseOfAShortStackIsCappedAtIt) {
    const GamePtr game = parseGame(shortStackLimit);
    State state = fresh(*game);
    play(*game, state, {raise, call, raise}); // seat 0 has 9: 2 + 4 + 4 would be 10
    EXPECT_EQ(state.spent[0], 9);
    EXPECT_EQ(state.maxSpent, 9);
    EXPECT_EQ(numAllIn(game.get(), &state), 1);
}

TEST(LimitRound, ARaiseOfAStackBelowTheBetLowersTheBet) {
    const GamePtr game = parseGame(shortStackLimit);
    State state = fresh(*game);
    play(*game, state, {raise, raise, raise}); // to 6, to 10, and seat 0 has 9
    EXPECT_EQ(state.spent[3], 10);
    EXPECT_EQ(state.spent[0], 9);
    EXPECT_EQ(state.maxSpent, 9);
}

TEST(NoLimitRaise, TheMinimumGrowsWithTheLastRaise) {
    const GamePtr game = parseGame(smallBlindFirst);
    State state = fresh(*game);
    EXPECT_EQ(state.minRaiseTo, 200);
    play(*game, state, {raiseTo(300)});
    EXPECT_EQ(state.minRaiseTo, 500);
    play(*game, state, {call});
    EXPECT_EQ(state.round, 1);
    EXPECT_EQ(state.minRaiseTo, 300 + 100);
}

TEST(NoLimitRaise, AWrongSizeIsRefusedOrRepaired) {
    const GamePtr game = parseGame(smallBlindFirst);
    const State state = fresh(*game);
    Action small = raiseTo(150);
    EXPECT_FALSE(isValidAction(game.get(), &state, 0, &small));
    EXPECT_EQ(small.size, 150);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(isValidAction(game.get(), &state, 1, &small));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WARNING: raise of 150 increased to 200\n");
    EXPECT_EQ(small.size, 200);

    Action large = raiseTo(30000);
    EXPECT_FALSE(isValidAction(game.get(), &state, 0, &large));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(isValidAction(game.get(), &state, 1, &large));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: raise of 30000 decreased to 20000\n");
    EXPECT_EQ(large.size, 20000);
}

TEST(NoLimitRaise, AStackBelowTheMinimumMayOnlyGoAllIn) {
    const GamePtr game = parseGame(unevenNoLimit);
    State state = fresh(*game);
    play(*game, state, {raiseTo(60)}); // minimum now 110, seat 0 has 100
    int32_t minSize = 0;
    int32_t maxSize = 0;
    ASSERT_TRUE(raiseIsValid(game.get(), &state, &minSize, &maxSize));
    EXPECT_EQ(minSize, 100);
    EXPECT_EQ(maxSize, 100);

    State covered = fresh(*game);
    play(*game, covered, {raiseTo(150)}); // more than seat 0's whole stack
    EXPECT_FALSE(raiseIsValid(game.get(), &covered, &minSize, &maxSize));
}

TEST(SizeWhereNoneBelongs, IsDroppedWithAWarning) {
    const GamePtr game = parseGame(smallBlindFirst);
    const State state = fresh(*game);
    Action sizedFold{actionFold, 7};
    Action sizedCall{actionCall, 8};
    testing::internal::CaptureStderr();
    EXPECT_TRUE(isValidAction(game.get(), &state, 0, &sizedFold));
    EXPECT_TRUE(isValidAction(game.get(), &state, 0, &sizedCall));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: size given for fold\n"
              "WARNING: size given for something other than a no-limit raise\n");
    EXPECT_EQ(sizedFold.size, 0);
    EXPECT_EQ(sizedCall.size, 0);
}

TEST(Fold, IsInvalidWhenNothingIsOwed) {
    const GamePtr game = parseGame(twoPlayerLimit);
    State state = fresh(*game);
    Action action = fold;
    EXPECT_TRUE(isValidAction(game.get(), &state, 0, &action));
    play(*game, state, {call});
    EXPECT_FALSE(isValidAction(game.get(), &state, 0, &action));
}

TEST(InvalidActions, AreRefused) {
    const GamePtr game = parseGame(twoPlayerKuhn);
    State state = fresh(*game);
    Action nothing{actionInvalid, 0};
    EXPECT_FALSE(isValidAction(game.get(), &state, 1, &nothing));
    play(*game, state, {call, call});
    ASSERT_TRUE(state.finished);
    Action late = call;
    EXPECT_FALSE(isValidAction(game.get(), &state, 1, &late));
}

TEST(InvalidActionsDeath, DoActionAsserts) {
    const GamePtr game = parseGame(smallBlindFirst);
    State state = fresh(*game);
    const Action nothing{actionInvalid, 0};
    EXPECT_DEATH(doAction(game.get(), &nothing, &state),
                 "ERROR: trying to do invalid action 3.*/game.cpp:");
    const Action low = raiseTo(100);
    EXPECT_DEATH(doAction(game.get(), &low, &state),
                 "/game.cpp:.*`action->size > state->maxSpent' failed");
    const Action high = raiseTo(20001);
    EXPECT_DEATH(doAction(game.get(), &high, &state),
                 "/game.cpp:.*`action->size <= game->stack\\[ p \\]' failed");
    state.numActions[0] = 64;
    EXPECT_DEATH(doAction(game.get(), &call, &state),
                 "/game.cpp:.*`state->numActions\\[ state->round \\] < 64' failed");
}

TEST(Call, OfAShortStackPutsItAllIn) {
    const GamePtr game = parseGame(unevenNoLimit);
    State state = fresh(*game);
    play(*game, state, {raiseTo(250), call});
    EXPECT_EQ(state.spent[0], 100);
    EXPECT_EQ(state.maxSpent, 250);
    EXPECT_EQ(numAllIn(game.get(), &state), 1);
    EXPECT_EQ(numActingPlayers(game.get(), &state), 2);
}

TEST(AllIn, EndsTheHandAtTheLastRound) {
    const GamePtr game = parseGame(unevenNoLimit);
    State state = fresh(*game);
    play(*game, state, {raiseTo(300), call, call});
    EXPECT_TRUE(state.finished);
    EXPECT_EQ(state.round, 3);
}

TEST(AllIn, OneSeatWithChipsLeftEndsTheHandToo) {
    const GamePtr game = parseGame(unevenNoLimit);
    State state = fresh(*game);
    play(*game, state, {raiseTo(100), call, raiseTo(200), call});
    EXPECT_EQ(numActingPlayers(game.get(), &state), 1);
    EXPECT_TRUE(state.finished);
    EXPECT_EQ(state.round, 3);
}

TEST(AllIn, AFoldedSeatStillCounts) {
    const GamePtr game =
        parseGame("GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 1\nstack = 10 2 10\n"
                  "blind = 1 2 0\nraiseSize = 2\nfirstPlayer = 3\nnumSuits = 4\n"
                  "numRanks = 13\nnumHoleCards = 1\nnumBoardCards = 0\n");
    ASSERT_NE(game, nullptr);
    State state = fresh(*game);
    EXPECT_EQ(numAllIn(game.get(), &state), 1);
    EXPECT_EQ(numActingPlayers(game.get(), &state), 2);
    state.playerFolded[1] = 1;
    EXPECT_EQ(numAllIn(game.get(), &state), 1);
}

TEST(CurrentPlayer, AlwaysReturnsEvenWhenNobodyCanAct) {
    const GamePtr game = parseGame("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nstack = 1 1\n"
                                   "blind = 1 1\nraiseSize = 1\nnumSuits = 1\nnumRanks = 3\n"
                                   "numHoleCards = 1\nnumBoardCards = 0\n");
    ASSERT_NE(game, nullptr);
    State state = fresh(*game);
    EXPECT_EQ(currentPlayer(game.get(), &state), 0);
    doAction(game.get(), &call, &state);
    EXPECT_TRUE(state.finished);
}

TEST(NumCalled, SkipsFoldsAndAllInSeats) {
    const GamePtr game = parseGame(threePlayerLimit);
    State state = fresh(*game);
    play(*game, state, {raise, fold, call});
    EXPECT_EQ(state.round, 1);
    State raised = fresh(*game);
    play(*game, raised, {raise, fold});
    EXPECT_EQ(numCalled(game.get(), &raised), 1);
    EXPECT_EQ(numFolded(game.get(), &raised), 1);
}

TEST(ValueOfState, AFoldPaysTheOther) {
    const GamePtr game = parseGame(twoPlayerLimit);
    State state = fresh(*game);
    play(*game, state, {raise, fold});
    ASSERT_TRUE(state.finished);
    EXPECT_EQ(valueOfState(game.get(), &state, 0), -10.0);
    EXPECT_EQ(valueOfState(game.get(), &state, 1), 10.0);
}

TEST(ValueOfState, SidePotsOfThreeStacks) {
    const GamePtr game = parseGame(unevenNoLimit);
    State state = fresh(*game);
    play(*game, state, {raiseTo(300), call, call});
    const char* board = "2c7d9hJsQc";
    // The short stack has the best hand, the middle one the next.
    setCards(state, *game, {"QdQh", "JcJd", "3s4d"}, board);
    EXPECT_EQ(valueOfState(game.get(), &state, 0), 200.0);
    EXPECT_EQ(valueOfState(game.get(), &state, 1), 0.0); // loses 100, wins 100 beside
    EXPECT_EQ(valueOfState(game.get(), &state, 2), -200.0);
    // All play the board's straight-less high cards: everything is shared.
    setCards(state, *game, {"3s4d", "3h4c", "3d4h"}, board);
    for (uint8_t p = 0; p < 3; ++p)
        EXPECT_EQ(valueOfState(game.get(), &state, p), 0.0);
}

TEST(ValueOfState, SplitsExactlyInFractions) {
    const GamePtr game = parseGame(threePlayerKuhn);
    ASSERT_NE(game, nullptr);
    GamePtr twoSuits = parseGame(std::string(threePlayerKuhn) + "");
    twoSuits->numSuits = 4;
    State state = fresh(*twoSuits);
    play(*twoSuits, state, {call, call, call});
    setCards(state, *twoSuits, {"As", "Ah", "Ks"}, "");
    EXPECT_EQ(valueOfState(twoSuits.get(), &state, 0), 0.5);
    EXPECT_EQ(valueOfState(twoSuits.get(), &state, 1), 0.5);
    EXPECT_EQ(valueOfState(twoSuits.get(), &state, 2), -1.0);
}

TEST(ValueOfState, AFoldedSeatPaysIntoTheSidePots) {
    const GamePtr game = parseGame(threePlayerLimit);
    State state = fresh(*game);
    play(*game, state, {raise, fold, call, call, call, call, call, call, call});
    ASSERT_TRUE(state.finished);
    setCards(state, *game, {"AsAh", "KsKh", "QsQh"}, "2c7d9hJs3c");
    EXPECT_EQ(valueOfState(game.get(), &state, 0), -5.0);
    EXPECT_EQ(valueOfState(game.get(), &state, 1), 25.0);
    EXPECT_EQ(valueOfState(game.get(), &state, 2), -20.0);
}

TEST(ValueOfState, AnEmptyPotIsWorthNothing) {
    const GamePtr game = parseGame(withoutBlinds);
    State state = fresh(*game);
    while (!state.finished)
        doAction(game.get(), &call, &state);
    for (uint8_t p = 0; p < 4; ++p)
        EXPECT_EQ(valueOfState(game.get(), &state, p), 0.0);
}

TEST(ValueOfStateDeath, AShowdownNeedsTwoStakes) {
    const GamePtr game = parseGame(twoPlayerKuhn);
    State state = fresh(*game);
    state.finished = 1;
    state.spent[1] = 0;
    EXPECT_DEATH(valueOfState(game.get(), &state, 0), "/game.cpp:.*`numPlayers > 1' failed");
}

TEST(Chips, SumToZeroAtEveryEnd) {
    for (const char* text : manyGames()) {
        const GamePtr game = parseGame(text);
        ASSERT_NE(game, nullptr);
        for (uint32_t seed = 0; seed < 500; ++seed) {
            playRandomHand(*game, seed, [&](const State& state) {
                for (int p = 0; p < game->numPlayers; ++p)
                    ASSERT_LE(state.spent[p], game->stack[p]);
                if (state.finished) {
                    double sum = 0.0;
                    for (uint8_t p = 0; p < game->numPlayers; ++p)
                        sum += valueOfState(game.get(), &state, p);
                    ASSERT_NEAR(sum, 0.0, 1e-9) << text << seed;
                }
            });
        }
    }
}

// Side pots settled the long way: chip by chip, each goes to the best hands that paid for it.
double valueChipByChip(const Game& game, const State& state, uint8_t player) {
    double value = -state.spent[player];
    const int32_t most = *std::max_element(state.spent, state.spent + game.numPlayers);
    for (int32_t chip = 0; chip < most; ++chip) {
        int paid = 0;
        int best = -1;
        int winners = 0;
        bool playerWins = false;
        for (int p = 0; p < game.numPlayers; ++p) {
            if (state.spent[p] <= chip)
                continue;
            ++paid;
            if (state.playerFolded[p])
                continue;
            CardSet cards = 0;
            for (int c = 0; c < game.numHoleCards; ++c)
                cards |= cardBit(state.holeCards[p][c]);
            for (int c = 0; c < sumBoardCards(&game, state.round); ++c)
                cards |= cardBit(state.boardCards[c]);
            const int rank = rankCardSet(cards);
            if (rank > best) {
                best = rank;
                winners = 0;
                playerWins = false;
            }
            if (rank == best) {
                ++winners;
                playerWins = playerWins || p == player;
            }
        }
        if (playerWins)
            value += static_cast<double>(paid) / winners;
    }
    return value;
}

TEST(ValueOfState, AgreesWithPotsCountedChipByChip) {
    for (const char* text : {unevenNoLimit, sixPlayerNoLimit, shortStackLimit, tenPlayerNoLimit}) {
        const GamePtr game = parseGame(text);
        int showdowns = 0;
        for (uint32_t seed = 0; seed < 400; ++seed) {
            playRandomHand(*game, seed, [&](const State& state) {
                // Chips that only folded seats paid have no owner in the long form; the rules
                // leave them with nobody.
                int32_t live = 0;
                int32_t most = 0;
                for (int p = 0; p < game->numPlayers; ++p) {
                    most = std::max(most, state.spent[p]);
                    live = std::max(live, state.playerFolded[p] ? 0 : state.spent[p]);
                }
                if (!state.finished || live < most ||
                    numFolded(game.get(), &state) + 1 == game->numPlayers)
                    return;
                ++showdowns;
                for (uint8_t p = 0; p < game->numPlayers; ++p)
                    ASSERT_NEAR(valueOfState(game.get(), &state, p),
                                valueChipByChip(*game, state, p), 1e-9)
                        << text << seed;
            });
        }
        EXPECT_GT(showdowns, 100);
    }
}

} // namespace
} // namespace tamarin::test
