#include "training/sequence_reach.h"

#include "solver/games.h"
#include "training/best_response.h"
#include "training/small_game_trainer.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(SequenceReach, EndingsAddUpToCertaintyAndToTheValues) {
    for (const auto& make : {kuhn3, leduc2, four}) {
        const auto game = std::move(*SmallGame::make(*make()));
        const auto trainer = makeTrainer(*game, {});
        trainer->run(30);
        const Profile profile = trainer->average();
        const SequenceReach reach = sequenceReaches(*game, profile);
        EXPECT_NEAR(reach.ofNode(0), 1.0, 1e-12);
        double ends = 0.0;
        std::vector<double> value(game->game().numPlayers);
        for (size_t edge = 0; edge < reach.edge.size(); ++edge) {
            if (reach.paid[edge].empty())
                continue;
            ends += reach.edge[edge];
            for (size_t p = 0; p < value.size(); ++p)
                value[p] += reach.edge[edge] * reach.paid[edge][p];
        }
        EXPECT_NEAR(ends, 1.0, 1e-12);
        const std::vector<double> expected = profileValues(*game, profile);
        for (size_t p = 0; p < value.size(); ++p)
            EXPECT_NEAR(value[p], expected[p], 1e-12);
    }
}

TEST(SequenceReach, OfUniformPlayHalvesAtEveryDecision) {
    const auto game = std::move(*SmallGame::make(*kuhn3()));
    const SequenceReach reach = sequenceReaches(*game, uniformProfile(*game));
    for (size_t n = 0; n < game->tree().nodes().size(); ++n) {
        const auto decisions = game->tree().sequence(static_cast<int32_t>(n)).size();
        EXPECT_NEAR(reach.ofNode(n), 1.0 / static_cast<double>(1U << decisions), 1e-12);
        for (const double field : reach.node[n])
            EXPECT_NEAR(field, reach.ofNode(n) / 4, 1e-12);
    }
}

} // namespace
} // namespace tamarin::test
