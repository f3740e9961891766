#include "training/small_game_trainer.h"

#include "training/equilibrium.h"
#include "training/player_trainer.h"
#include "tree/card_rank_keys.h"

namespace tamarin {

void SmallGameTrainer::eachNode(const CFR& solver,
                                const std::function<void(size_t set, CFRNode& node)>& visit) const {
    const auto& nodes = game_.tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (uint32_t field = 0; field < game_.layout().numBuckets(nodes[n].slot); ++field)
            visit(game_.layout().index(nodes[n], field),
                  *solver.nodeMap(nodes[n].player, nodes[n].round)
                       .at(cardRankKey(game_.tree(), static_cast<int32_t>(n),
                                       static_cast<int>(field))));
}

void SmallGameTrainer::store(CFR& solver) const {
    solver.buildTree();
    const TrainerState now = state();
    eachNode(solver, [&](size_t set, CFRNode& node) {
        for (int a = 0; a < numAbstractedActions; ++a) {
            if (!node.isActionValid(a))
                continue;
            node.regretSum[a] = now.sets[set].regret[a];
            node.strategySum[a] = now.sets[set].strategy[a];
        }
    });
}

std::unique_ptr<SmallGameTrainer> makeTrainer(const SmallGame& game, const TrainerConfig& config) {
    if (config.algorithm == Algorithm::player)
        return std::make_unique<PlayerTrainer>(game, config.seed, config.threads);
    return std::make_unique<EquilibriumTrainer>(game, config);
}

} // namespace tamarin
