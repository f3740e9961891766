// Training towards an equilibrium, with counterfactual weights.
//
// A set's regret is weighed with the product of all other players' reaches (Zinkevich and others
// 2007), over all deals of a small game at once or over sampled ones. Players are updated in turn,
// each against the others' newest strategies. What is done with the regrets, and how strategies are
// averaged, are the algorithms:
//
//   cfr    regret matching, plain average
//   cfr+   regrets floored at 0, average weighted by t                        (Tammelin 2014)
//   lcfr   regrets and average both weighted by t                  (Brown and Sandholm 2019)
//   dcfr   positive regrets discounted by t^1.5 / (t^1.5 + 1), negative ones halved, average
//          weighted by t^2                                         (Brown and Sandholm 2019)
//   pcfr+  cfr+ that plays against its regrets and a prediction of the next ones, the last ones;
//          average weighted by t^2                        (Farina, Kroer and Sandholm 2021)
//
// With two players the average converges to an equilibrium. With three there is no such promise;
// what is reached is measured (training/best_response.h) and logged.
//
// The numbers depend on the game, the algorithm and, with sampling, the seed; not on the number of
// threads, and not on how the iterations are divided over calls, checkpoints and processes.
#pragma once

#include "training/small_game_trainer.h"

#include <array>

namespace tamarin {

class EquilibriumTrainer : public SmallGameTrainer {
public:
    // Any algorithm but the player's own.
    EquilibriumTrainer(const SmallGame& game, const TrainerConfig& config);
    ~EquilibriumTrainer() override;

    void run(uint64_t iterations) override;
    uint64_t iteration() const override { return state_.iteration; }
    Profile average() const override;
    TrainerState state() const override { return state_; }
    void restore(const TrainerState& state) override;

private:
    using Shares = std::array<double, numAbstractedActions>;
    struct Batch; // deals walked together
    class Pass;   // one walk for one seat

    void iterate();
    void drawDeals();
    void walk(size_t seat);
    void update(size_t seat);
    void addToAverage(size_t seat);
    void chooseStrategy(size_t node);

    TrainerConfig config_;
    TrainerState state_;
    Profile current_;
    std::vector<std::unique_ptr<Batch>> batches_;
    std::vector<std::vector<Shares>> gained_;  // [batch][set]: regrets of this iteration
    std::vector<std::vector<size_t>> nodesOf_; // [seat]: its decision nodes, depth first
    std::vector<double> ownReach_;             // [edge * fields_ + field]
    size_t fields_;
};

} // namespace tamarin
