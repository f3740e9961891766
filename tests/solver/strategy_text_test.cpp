#include "solver/cfr.h"
#include "solver/games.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string textOf(const CFR& solver) {
    std::ostringstream text;
    text << solver;
    return text.str();
}

TEST(StrategyText, ListsNodesInFileOrderAndEndsWithAnEmptyLine) {
    const GamePtr game = kuhn2();
    CFR solver(game.get());
    solver.buildTree();
    solver.nodeMap(0, 0).at("0:0:2:")->strategySum[1] = 1;
    solver.nodeMap(0, 0).at("0:0:2:")->strategySum[2] = 3;
    EXPECT_EQ(textOf(solver), "0:0:0: \xC2\xBB ( call: 0.5 raise: 0.5 )\n"
                              "0:0:0:cr \xC2\xBB ( fold: 0.5 call: 0.5 )\n"
                              "0:0:1: \xC2\xBB ( call: 0.5 raise: 0.5 )\n"
                              "0:0:1:cr \xC2\xBB ( fold: 0.5 call: 0.5 )\n"
                              "0:0:2: \xC2\xBB ( call: 0.25 raise: 0.75 )\n"
                              "0:0:2:cr \xC2\xBB ( fold: 0.5 call: 0.5 )\n"
                              "1:0:0:c \xC2\xBB ( call: 0.5 raise: 0.5 )\n"
                              "1:0:0:r \xC2\xBB ( fold: 0.5 call: 0.5 )\n"
                              "1:0:1:c \xC2\xBB ( call: 0.5 raise: 0.5 )\n"
                              "1:0:1:r \xC2\xBB ( fold: 0.5 call: 0.5 )\n"
                              "1:0:2:c \xC2\xBB ( call: 0.5 raise: 0.5 )\n"
                              "1:0:2:r \xC2\xBB ( fold: 0.5 call: 0.5 )\n"
                              "\n");
}

TEST(StrategyText, EmptySolverIsAnEmptyLine) {
    const GamePtr game = kuhn3();
    EXPECT_EQ(textOf(CFR(game.get())), "\n");
}

TEST(StrategyText, TellsTheUtilityAfterTraining) {
    const GamePtr game = kuhn3();
    CFR solver(game.get());
    const QuietOutput quiet;
    solver.train(0);
    const std::string text = textOf(solver);
    const size_t at = text.find("\n\nGame utility: ( ");
    ASSERT_NE(at, std::string::npos);
    // Three utilities, each with a space behind it, then one more space.
    EXPECT_TRUE(text.ends_with("nan  )\n")) << text.substr(at);
}

} // namespace
} // namespace tamarin::test
