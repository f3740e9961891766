#include "training/player_trainer.h"

#include "support/rng.h"
#include "support/silent_output.h"

#include <sstream>

namespace tamarin {

PlayerTrainer::PlayerTrainer(const SmallGame& game, uint64_t seed, int threads)
    : SmallGameTrainer(game, threads), rules_(game.game()), solver_(&rules_) {
    const SilentOutput silent;
    global_urng().seed(static_cast<uint32_t>(seed ^ seed >> 32U));
    solver_.buildTree();
    try {
        solver_.eliminateActions();
    } catch (const char*) {
        // The player does not know what a card is worth in this game and would not train it.
        solver_.buildTree();
    }
}

void PlayerTrainer::run(uint64_t iterations) {
    const SilentOutput silent;
    for (uint64_t done = 0; done < iterations; done += block()) {
        solver_.train(block());
        iteration_ += block();
    }
}

Profile PlayerTrainer::average() const {
    return *averageProfile(game_, solver_.nodes());
}

TrainerState PlayerTrainer::state() const {
    TrainerState state;
    state.iteration = iteration_;
    std::stringstream engine; // the only way in and out of its state that the library promises
    engine << global_urng();
    engine >> state.random;
    state.sets.resize(game_.layout().numSets());
    eachNode(solver_, [&](size_t set, const CFRNode& node) {
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            state.sets[set].regret[a] = node.regretSum[a];
            state.sets[set].strategy[a] = node.strategySum[a];
            state.sets[set].prediction[a] = 0.0;
        }
    });
    return state;
}

void PlayerTrainer::restore(const TrainerState& state) {
    iteration_ = state.iteration;
    std::stringstream engine;
    engine << state.random;
    engine >> global_urng();
    eachNode(solver_, [&](size_t set, CFRNode& node) {
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            node.regretSum[a] = state.sets[set].regret[a];
            node.strategySum[a] = state.sets[set].strategy[a];
        }
    });
}

} // namespace tamarin
