#include "training/small_game_trainer.h"

#include "training/equilibrium.h"
#include "training/player_trainer.h"
#include "tree/card_rank_keys.h"

namespace tamarin {

void SmallGameTrainer::store(CFR& solver) const {
    solver.buildTree();
    const TrainerState now = state();
    const auto& nodes = game_.tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (uint32_t field = 0; field < game_.layout().numBuckets(nodes[n].slot); ++field) {
            const NodeMap& map = solver.nodeMap(nodes[n].player, nodes[n].round);
            CFRNode& node = *map.at(
                cardRankKey(game_.tree(), static_cast<int32_t>(n), static_cast<int>(field)));
            const TrainerNumbers& numbers = now.sets[game_.layout().index(nodes[n], field)];
            for (int a = 0; a < numAbstractedActions; ++a) {
                if (!node.isActionValid(a))
                    continue;
                node.regretSum[a] = numbers.regret[a];
                node.strategySum[a] = numbers.strategy[a];
            }
        }
}

std::unique_ptr<SmallGameTrainer> makeTrainer(const SmallGame& game, const TrainerConfig& config) {
    if (config.algorithm == Algorithm::player)
        return std::make_unique<PlayerTrainer>(game, config.seed, config.threads);
    return std::make_unique<EquilibriumTrainer>(game, config);
}

} // namespace tamarin
