#include "training/best_response.h"

#include "solver/games.h"
#include "training/made_small.h"
#include "training/small_game_trainer.h"
#include "tree/deck.h"

#include <map>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// A pure strategy of one seat: an action for each thing that it can see, in order of appearance.
struct PureStrategy {
    std::map<std::string, size_t> seen; // what the seat sees, to an index
    std::vector<int> choice;            // which of the legal actions, by that index
    std::vector<int> choices;           // how many there are
};

// The value to the seat from a state on, by the rules engine and the solver's own nodes; notes what
// the seat can see on the way.
double valueOf(CFR& solver, const Game& game, State& state, int seat, PureStrategy& strategy) {
    if (state.finished)
        return valueOfState(&game, &state, static_cast<uint8_t>(seat));
    std::vector<Action> legal;
    for (int a = 0; a < 3; ++a) {
        Action action{static_cast<ActionType>(a), 0};
        if (isValidAction(&game, &state, 0, &action))
            legal.push_back(action);
    }
    const auto after = [&](const Action& action) {
        State child = state;
        doAction(&game, &action, &child);
        return valueOf(solver, game, child, seat, strategy);
    };
    if (currentPlayer(&game, &state) != seat) {
        double average[3];
        solver.findNode(&state)->getAverageStrategy(average);
        double value = 0.0;
        for (const Action& action : legal)
            if (average[action.type] > 0.0)
                value += average[action.type] * after(action);
        return value;
    }
    // Hole cards in either order are the same hand.
    std::string sees(reinterpret_cast<const char*>(state.holeCards[seat]), game.numHoleCards);
    std::sort(sees.begin(), sees.end());
    sees.append(reinterpret_cast<const char*>(state.boardCards), sumBoardCards(&game, state.round));
    for (int r = 0; r <= state.round; ++r)
        for (int i = 0; i < state.numActions[r]; ++i)
            sees += actionChars[state.action[r][i].type];
    const auto [at, isNew] = strategy.seen.try_emplace(sees, strategy.seen.size());
    if (isNew) {
        strategy.choice.push_back(0);
        strategy.choices.push_back(static_cast<int>(legal.size()));
        for (const Action& action : legal) // see everything below at once
            after(action);
    }
    return after(legal[static_cast<size_t>(strategy.choice[at->second])]);
}

double expected(CFR& solver, const Game& game, int seat, PureStrategy& strategy) {
    double sum = 0.0;
    double deals = 0.0;
    for (DealWalk walk(game); walk.next(); ++deals) {
        State state{};
        initState(&game, 0, &state);
        placeCards(game, walk.cards(), &state);
        sum += valueOf(solver, game, state, seat, strategy);
    }
    return sum / deals;
}

// The best of all pure strategies, one after the other.
double bruteForce(CFR& solver, const Game& game, int seat) {
    PureStrategy strategy;
    double best = expected(solver, game, seat, strategy);
    while (true) {
        size_t i = 0;
        while (i < strategy.choice.size() && ++strategy.choice[i] == strategy.choices[i])
            strategy.choice[i++] = 0;
        if (i == strategy.choice.size())
            return best;
        best = std::max(best, expected(solver, game, seat, strategy));
    }
}

void expectBruteForceAgrees(const GamePtr& game, int seat, uint64_t iterations) {
    const auto compiled = small(game);
    CFR solver(game.get());
    if (iterations == 0) {
        solver.buildTree();
    } else {
        TrainerConfig config;
        config.algorithm = Algorithm::cfr;
        const auto trainer = makeTrainer(*compiled, config);
        trainer->run(iterations);
        trainer->store(solver);
    }
    const Result<Profile> profile = averageProfile(*compiled, solver.nodes());
    ASSERT_TRUE(profile.ok()) << profile.error();
    EXPECT_NEAR(bestResponseValue(*compiled, *profile, static_cast<size_t>(seat)),
                bruteForce(solver, *game, seat), 1e-12);
}

TEST(BestResponse, BeatsEveryPureStrategyOfTwoPlayerKuhn) {
    for (int seat = 0; seat < 2; ++seat)
        for (const uint64_t iterations : {0U, 1U, 7U, 100U})
            expectBruteForceAgrees(kuhn2(), seat, iterations);
}

TEST(BestResponse, BeatsEveryPureStrategyOfTheLastSeatOfThree) {
    // Three ranks leave it 3 x 4 decisions of two actions.
    const GamePtr game =
        gameFrom("GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 1\nblind = 1 1 1\nraiseSize = 1\n"
                 "firstPlayer = 1\nmaxRaises = 1\nnumSuits = 1\nnumRanks = 3\n"
                 "numHoleCards = 1\nnumBoardCards = 0\nEND GAMEDEF\n");
    for (const uint64_t iterations : {0U, 5U})
        expectBruteForceAgrees(game, 2, iterations);
}

TEST(BestResponse, KnowsBothHoleCardsThoughTheKeysKnowOne) {
    const GamePtr game =
        gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 1\nraiseSize = 1\n"
                 "firstPlayer = 1\nmaxRaises = 1\nnumSuits = 1\nnumRanks = 4\n"
                 "numHoleCards = 2\nnumBoardCards = 0\nEND GAMEDEF\n");
    for (int seat = 0; seat < 2; ++seat)
        for (const uint64_t iterations : {0U, 5U})
            expectBruteForceAgrees(game, seat, iterations);
}

TEST(BestResponse, KnowsTheBoardThoughTheKeysDoNot) {
    const GamePtr game =
        gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 2\nblind = 1 1\nraiseSize = 1 2\n"
                 "firstPlayer = 1 1\nmaxRaises = 0 1\nnumSuits = 1\nnumRanks = 3\n"
                 "numHoleCards = 1\nnumBoardCards = 0 1\nEND GAMEDEF\n");
    for (int seat = 0; seat < 2; ++seat)
        for (const uint64_t iterations : {0U, 5U})
            expectBruteForceAgrees(game, seat, iterations);
}

TEST(BestResponse, NashConvOfUniformPlayIsKnown) {
    const auto three = small(kuhn3());
    EXPECT_NEAR(evaluateProfile(*three, uniformProfile(*three)).nashConv(), 33.0 / 16, 1e-13);
    const auto two = small(kuhn2());
    EXPECT_NEAR(evaluateProfile(*two, uniformProfile(*two)).nashConv(), 11.0 / 12, 1e-13);
}

// Kuhn (1950): the first player checks and folds or bluffs with the rest in proportion to alpha.
TEST(BestResponse, FindsNothingAgainstKuhnsOwnEquilibria) {
    const auto game = small(kuhn2());
    const auto set = [&](Profile& profile, const std::string& sequence, uint32_t field, double call,
                         double raiseOrFold) {
        for (size_t n = 0; n < game->tree().nodes().size(); ++n) {
            const CompiledTree::Node& node = game->tree().nodes()[n];
            if (game->tree().sequence(static_cast<int32_t>(n)) != sequence)
                continue;
            auto& shares = profile[game->layout().index(node, field)];
            shares = {};
            shares[actionCall] = call;
            shares[node.child[actionRaise] != CompiledTree::noChild ? actionRaise : actionFold] =
                raiseOrFold;
        }
    };
    for (const double alpha : {0.0, 1.0 / 6, 1.0 / 3}) {
        Profile profile = uniformProfile(*game);
        set(profile, "", 0, 1 - alpha, alpha); // bluff the jack
        set(profile, "", 1, 1, 0);
        set(profile, "", 2, 1 - 3 * alpha, 3 * alpha);
        set(profile, "cr", 0, 0, 1);
        set(profile, "cr", 1, alpha + 1.0 / 3, 2.0 / 3 - alpha);
        set(profile, "cr", 2, 1, 0);
        set(profile, "r", 0, 0, 1);
        set(profile, "r", 1, 1.0 / 3, 2.0 / 3);
        set(profile, "r", 2, 1, 0);
        set(profile, "c", 0, 2.0 / 3, 1.0 / 3);
        set(profile, "c", 1, 1, 0);
        set(profile, "c", 2, 0, 1);
        const ProfileValue value = evaluateProfile(*game, profile);
        EXPECT_NEAR(value.value[0], -1.0 / 18, 1e-15);
        EXPECT_NEAR(value.nashConv(), 0.0, 1e-15);
    }
}

TEST(BestResponse, ValuesAreThoseOfTheSolver) {
    for (const auto& make : {kuhn3, leduc2, four, twoCards, longSuit, boards3}) {
        const GamePtr game = make();
        const auto compiled = small(game);
        CFR solver(game.get());
        const QuietOutput quiet;
        solver.buildTree();
        solver.train(200);
        const Result<Profile> profile = averageProfile(*compiled, solver.nodes());
        ASSERT_TRUE(profile.ok());
        std::vector<double> value(game->numPlayers);
        solver.calcUtility(value.data());
        const std::vector<double> found = profileValues(*compiled, *profile);
        for (size_t p = 0; p < value.size(); ++p)
            EXPECT_NEAR(found[p], value[p], 1e-11);
    }
}

TEST(BestResponse, DoesNotDependOnThreads) {
    const auto game = small(boards3());
    const Profile profile = uniformProfile(*game);
    const ProfileValue one = evaluateProfile(*game, profile, 1);
    const ProfileValue three = evaluateProfile(*game, profile, 3);
    EXPECT_EQ(one.value, three.value);
    EXPECT_EQ(one.best, three.best);
}

} // namespace
} // namespace tamarin::test
