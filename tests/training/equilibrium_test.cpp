#include "training/equilibrium.h"

#include "solver/games.h"
#include "training/best_response.h"
#include "training/made_small.h"

#include <cstring>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

constexpr Algorithm all[] = {Algorithm::cfr, Algorithm::cfrPlus, Algorithm::linear,
                             Algorithm::discounted, Algorithm::predictive};

ProfileValue trained(const SmallGame& game, Algorithm algorithm, uint64_t iterations,
                     uint32_t sampledDeals = 0) {
    TrainerConfig config;
    config.algorithm = algorithm;
    config.sampledDeals = sampledDeals;
    const auto trainer = makeTrainer(game, config);
    trainer->run(iterations);
    return evaluateProfile(game, trainer->average());
}

TEST(Equilibrium, OfTwoPlayerKuhnIsWorthAnEighteenth) {
    const auto game = small(kuhn2());
    for (const Algorithm algorithm : all) {
        const ProfileValue value = trained(*game, algorithm, 3000);
        const double reach = algorithm == Algorithm::cfr ? 1e-3 : 2e-4;
        EXPECT_NEAR(value.value[0], -1.0 / 18, reach) << algorithmName(algorithm);
        EXPECT_LT(value.nashConv(), reach) << algorithmName(algorithm);
        EXPECT_GE(value.nashConv(), -1e-12);
    }
}

// Szafron, Gibson and Sturtevant (2013): all known equilibria are worth -1/48 to the second seat
// and between -1/32 and -1/48 to the first.
TEST(Equilibrium, OfThreePlayerKuhnIsInTheKnownFamily) {
    const auto game = small(kuhn3());
    for (const Algorithm algorithm : all) {
        const ProfileValue value = trained(*game, algorithm, 5000);
        const double reach = algorithm == Algorithm::cfr ? 1e-3 : 2e-5;
        EXPECT_LT(value.nashConv(), reach) << algorithmName(algorithm);
        EXPECT_NEAR(value.value[1], -1.0 / 48, reach) << algorithmName(algorithm);
        EXPECT_GT(value.value[0], -1.0 / 32 - reach) << algorithmName(algorithm);
        EXPECT_LT(value.value[0], -1.0 / 48 + reach) << algorithmName(algorithm);
    }
}

TEST(Equilibrium, DiscountingGetsBelowAMillionth) {
    const auto game = small(kuhn3());
    EXPECT_LT(trained(*game, Algorithm::discounted, 8000).nashConv(), 1e-6);
    EXPECT_LT(trained(*game, Algorithm::predictive, 8000).nashConv(), 1e-6);
}

TEST(Equilibrium, SampledDealsApproachItToo) {
    const auto game = small(kuhn3());
    EXPECT_LT(trained(*game, Algorithm::cfr, 200000, 1).nashConv(), 0.02);
    EXPECT_LT(trained(*game, Algorithm::cfr, 20000, 12).nashConv(), 0.02);
}

// One iteration of the plain algorithm by hand: everybody plays uniformly, the first seat is
// updated first.
TEST(Equilibrium, FirstIterationWeighsWithTheOthersReaches) {
    const auto game = small(kuhn2());
    TrainerConfig config;
    config.algorithm = Algorithm::cfr;
    EquilibriumTrainer trainer(*game, config);
    trainer.run(1);
    const auto& root = game->tree().nodes()[0];
    const TrainerState state = trainer.state();
    const TrainerNumbers& king = state.sets[game->layout().index(root, 2)];
    // Against each of two lower cards, of probability 1/6: a call is worth 3/4, a raise 3/2, play
    // half of each.
    EXPECT_NEAR(king.regret[actionCall], 2.0 / 6 * (0.75 - 1.125), 1e-15);
    EXPECT_NEAR(king.regret[actionRaise], 2.0 / 6 * (1.5 - 1.125), 1e-15);
    EXPECT_EQ(king.strategy[actionCall], 0.5);
    for (const auto& node : game->tree().nodes())
        if (node.player == 0 && node.parentEdge != CompiledTree::noEdge) {
            // Behind its own call of 1/2, the other's raise of 1/2.
            const TrainerNumbers& numbers = state.sets[game->layout().index(node, 2)];
            EXPECT_NEAR(numbers.regret[actionCall], 2.0 / 6 * 0.5 * (2 - 0.5), 1e-15);
            EXPECT_EQ(numbers.strategy[actionCall], 0.25);
        }
}

bool sameState(const TrainerState& a, const TrainerState& b) {
    return a.iteration == b.iteration && a.random == b.random && a.sets.size() == b.sets.size() &&
           std::memcmp(a.sets.data(), b.sets.data(), a.sets.size() * sizeof a.sets[0]) == 0;
}

TEST(Equilibrium, DoesNotDependOnHowARunIsDivided) {
    const auto game = small(kuhn3());
    for (const Algorithm algorithm : all)
        for (const uint32_t sampled : {0U, 3U}) {
            TrainerConfig config;
            config.algorithm = algorithm;
            config.sampledDeals = sampled;
            const auto whole = makeTrainer(*game, config);
            whole->run(300);
            const auto first = makeTrainer(*game, config);
            first->run(123);
            const auto second = makeTrainer(*game, config);
            second->restore(first->state());
            second->run(177);
            EXPECT_TRUE(sameState(whole->state(), second->state())) << algorithmName(algorithm);
        }
}

// 20 x 19 x 18 deals whose keys differ fill several batches.
TEST(Equilibrium, DoesNotDependOnThreads) {
    const auto game = small(
        gameFrom("GAMEDEF\nlimit\nnumPlayers = 4\nnumRounds = 1\nblind = 1 1 1 1\nraiseSize = 1\n"
                 "firstPlayer = 1\nmaxRaises = 1\nnumSuits = 1\nnumRanks = 9\n"
                 "numHoleCards = 1\nnumBoardCards = 0\nEND GAMEDEF\n"));
    ASSERT_GT(game->keyDeals().size, 2048U);
    TrainerConfig config;
    const auto one = makeTrainer(*game, config);
    one->run(3);
    config.threads = 4;
    const auto four = makeTrainer(*game, config);
    four->run(3);
    EXPECT_TRUE(sameState(one->state(), four->state()));
}

TEST(Equilibrium, SeedsDecideSampledRunsOnly) {
    const auto game = small(kuhn3());
    TrainerConfig config;
    const auto sumsWith = [&](uint64_t seed, uint32_t sampled) {
        config.seed = seed;
        config.sampledDeals = sampled;
        const auto trainer = makeTrainer(*game, config);
        trainer->run(50);
        return trainer->average();
    };
    EXPECT_EQ(sumsWith(1, 2), sumsWith(1, 2));
    EXPECT_NE(sumsWith(1, 2), sumsWith(2, 2));
    EXPECT_EQ(sumsWith(1, 0), sumsWith(2, 0));
}

} // namespace
} // namespace tamarin::test
