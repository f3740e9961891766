#include "solver/cfr.h"

#include "solver/games.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// A Kuhn state in which every seat holds the same rank, after some betting.
State kuhnState(const Game& game, const std::string& betting, uint8_t rank) {
    State state{};
    initState(&game, 0, &state);
    for (auto& seat : state.holeCards)
        seat[0] = static_cast<uint8_t>(rank * MAX_SUITS);
    for (const char letter : betting) {
        const Action action{charToAction[static_cast<uint8_t>(letter)], 0};
        doAction(&game, &action, &state);
    }
    return state;
}

TEST(CFR, KeysNamePlayerRoundCardAndActions) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State root = kuhnState(*game, "", 12);
    EXPECT_EQ(solver.abstraction(&root), "0:0:3:");
    State raised = kuhnState(*game, "r", 1);
    EXPECT_EQ(solver.abstraction(&raised), "1:0:1:r");
    State late = kuhnState(*game, "ccrf", 10);
    EXPECT_EQ(solver.abstraction(&late), "1:0:1:ccrf");
}

TEST(CFR, KeysMapTheFourHighestRanksAndNoOther) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    for (uint8_t rank = 0; rank < 13; ++rank) {
        State state = kuhnState(*game, "", rank);
        const int field = rank >= 9 ? rank - 9 : rank;
        EXPECT_EQ(solver.abstraction(&state), "0:0:" + std::to_string(field) + ":");
    }
}

TEST(CFR, KeysOfLaterRoundsCarryAllActionsAndNoBoard) {
    const GamePtr game = leduc2();
    CFR solver(game.get());
    State state = kuhnState(*game, "crrccr", 2);
    ASSERT_EQ(state.round, 1);
    state.boardCards[0] = 5;
    EXPECT_EQ(solver.abstraction(&state), "0:1:2:crrccr");
}

TEST(CFR, KeysTakeBucketsFromTheTableInUse) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State state = kuhnState(*game, "rf", 2);
    solver.useCardAbstraction = true;
    solver.useHoldemTables = true;
    solver.holdemBucket[0][3][2] = 77;
    solver.holdemBucket[0][2][2] = 123456789012345; // a fold has left two acting
    EXPECT_EQ(solver.abstraction(&state), "2:0:123456789012345:rf");
}

TEST(CFR, CardRanksOfAFullDeckHaveNoKey) {
    const GamePtr game = holdem2();
    CFR solver(game.get());
    State state{};
    initState(game.get(), 0, &state);
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            if (attempt == 0)
                solver.abstraction(&state);
            else
                solver.createAbstractedGameTree(&state);
            FAIL();
        } catch (const char* text) {
            EXPECT_STREQ(text, "Falta fazer tabela de abstracao do indice do indexador");
        }
    }
    EXPECT_EQ(solver.numInformationSets(), 0U);
}

TEST(CFR, ActionsAreFoldCallRaiseOfSizeZero) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State state = kuhnState(*game, "", 0);
    for (int index = -1; index < 8; ++index) {
        const ActionType expected =
            index >= 0 && index < 3 ? static_cast<ActionType>(index) : actionInvalid;
        Action action{actionRaise, 99};
        EXPECT_EQ(solver.getAbstractedAction(index, &state, &action), &action);
        EXPECT_EQ(action.type, expected) << index;
        EXPECT_EQ(action.size, 0);
        Action translated{actionRaise, 99};
        EXPECT_EQ(&solver.translate(index, &state, translated), &translated);
        EXPECT_EQ(translated.type, expected) << index;
        EXPECT_EQ(translated.size, 0);
    }
}

TEST(CFR, FindsNodesAndThrowsForUnknownStates) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    State state = kuhnState(*game, "cr", 1);
    try {
        solver.findNode(&state);
        FAIL();
    } catch (const std::out_of_range& missing) {
        EXPECT_STREQ(missing.what(), "map::at");
    }
    solver.buildTree();
    EXPECT_EQ(solver.findNode(&state), solver.nodeMap(2, 0).at("2:0:1:cr"));
}

TEST(CFR, StartsEmptyWithEverythingOff) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    EXPECT_FALSE(solver.useHoldemTables);
    EXPECT_FALSE(solver.useCardAbstraction);
    EXPECT_FALSE(solver.isTreeReady());
    EXPECT_EQ(solver.getEquityTables(), nullptr);
    EXPECT_EQ(solver.numInformationSets(), 0U);
    EXPECT_FALSE(CFR::logProgress);
}

TEST(CFR, AccessorsKeepWhatTheyAreGiven) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    solver.setUseMonteCarlo(true);
    EXPECT_TRUE(solver.getUseMonteCarlo());
    solver.setUseMonteCarlo(false);
    EXPECT_FALSE(solver.getUseMonteCarlo());
    auto* const tables = reinterpret_cast<EquityTables*>(&solver);
    solver.setEquityTables(tables);
    EXPECT_EQ(solver.getEquityTables(), tables);
    State state = kuhnState(*game, "", 0);
    const Action action = solver.getAction(&state);
    EXPECT_EQ(action.type, actionFold);
    EXPECT_EQ(action.size, 0);
}

} // namespace
} // namespace tamarin::test
