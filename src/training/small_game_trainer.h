// What all trainers of a small game have in common: they run, can be measured, saved and resumed.
// The player's own training, CFR::train, takes one random deal an iteration and weighs regrets with
// the reach of the player who acted last; it does not approach an equilibrium. The others are in
// training/equilibrium.h.
#pragma once

#include "solver/cfr.h"
#include "training/algorithms.h"
#include "training/profile.h"
#include "training/small_game.h"
#include "training/trainer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tamarin {

struct TrainerConfig {
    Algorithm algorithm = defaultAlgorithm(Trained::smallGame);
    uint32_t sampledDeals = 0; // an iteration's deals, drawn at random; 0: all deals
    uint64_t seed = 1;         // of the sampling, and of the player's own training
    int threads = 1;           // 0: one a core; the numbers do not depend on it
};

// One information set's numbers, in a state that can be laid aside. 72 bytes.
struct TrainerNumbers {
    double regret[numAbstractedActions];     // NaN: an action that training leaves out
    double strategy[numAbstractedActions];   // sums
    double prediction[numAbstractedActions]; // pcfr+: the last regrets; else 0
};

// All that a run depends on, besides game and configuration.
struct TrainerState {
    uint64_t iteration = 0;
    uint64_t random = 0;              // the generator's
    std::vector<TrainerNumbers> sets; // by SmallGame::layout()'s index
};

class SmallGameTrainer : public Trainer {
public:
    // The values of the average strategy and of best responses to it.
    TrainingMeasure measure() const override { return evaluateProfile(game_, average(), threads_); }

    // The average strategy; uniform where a set was never reached.
    virtual Profile average() const = 0;

    virtual TrainerState state() const = 0;
    // Goes on from a state of the same game and configuration.
    virtual void restore(const TrainerState& state) = 0;

    // Writes regrets and strategy sums into the nodes of a solver of the same game; its tree is
    // built anew with every legal action, and actions that training leaves out are taken from it.
    void store(CFR& solver) const;

protected:
    SmallGameTrainer(const SmallGame& game, int threads) : game_(game), threads_(threads) {}
    // The nodes of a solver of the game, with their sets.
    void eachNode(const CFR& solver,
                  const std::function<void(size_t set, CFRNode& node)>& visit) const;

    const SmallGame& game_;
    const int threads_; // 0: one a core
};

// The game must outlive the trainer. The player's own training draws from the process-wide engine,
// which it seeds.
std::unique_ptr<SmallGameTrainer> makeTrainer(const SmallGame& game, const TrainerConfig& config);

} // namespace tamarin
