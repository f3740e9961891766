// Hold'em training towards an equilibrium of the ten-bucket game, by sampled deals.
//
// Every deal is walked whole with counterfactual weights (holdem/walk.h). What becomes of regrets
// and averages are the algorithms of training/equilibrium.h in a form that suits single deals:
//
//   player  the player's own rule; with batches of one deal, that of CFR::trainHoldem
//   cfr     plain sums
//   cfr+    regrets floored at 0, the average weighted by t
//   lcfr    both weighted by t
//   dcfr    plain sums within a block of deals; after block b positive regrets are multiplied by
//           b^1.5 / (b^1.5 + 1), negative ones halved, the average multiplied by (b / (b + 1))^2
//
// With two players the average approaches an equilibrium of the abstract game, not of hold'em. The
// cards of deal t depend on the seed and t alone, and deals are walked in batches
// (holdem/batch.h), so the numbers depend on the game, the buckets and the configuration;
// not on the number of threads, and not on how the deals are divided over calls, checkpoints and
// processes.
#pragma once

#include "holdem/batch.h"
#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "support/file.h"
#include "training/algorithms.h"
#include "training/trainer.h"

#include <string>
#include <vector>

namespace tamarin {

struct HoldemTrainerConfig {
    Algorithm algorithm = defaultAlgorithm(Trained::twoPlayerHoldem); // any that is for hold'em
    uint64_t seed = 1;
    uint64_t block = 1000; // deals of a dcfr block, whole batches
    uint64_t batch = 1;    // deals walked together; the trunk sees none of a batch before its end
    int threads = 0;       // 0: all cores
};

class HoldemTrainer : public Trainer {
public:
    // game and buckets must outlive the trainer. Two or three players.
    HoldemTrainer(const Game& game, const HoldemBuckets& buckets,
                  const HoldemTrainerConfig& config);

    // An iteration is one deal. A run's block is a batch; the blocks of dcfr are whole batches.
    uint64_t block() const override { return config_.batch; }
    void run(uint64_t iterations) override;
    uint64_t iteration() const override { return deals_; }
    TrainingMeasure measure() const override { return AverageRegret{averageRegret()}; }

    const HoldemTrainerConfig& config() const { return config_; }
    const HoldemSets& sets() const { return sets_; }
    HoldemSets& sets() { return sets_; }

    double averageRegret() const;

    // A checkpoint is the frame of training/checkpoint_frame.h around the SetNumbers of all
    // information sets, 48 bytes each. Version 2 had a frame of its own. What CheckpointFile
    // refuses is refused here, and nothing changes then.
    Status writeCheckpoint(const std::string& path, FileSystem& files = systemFiles()) const;
    Status readCheckpoint(const std::string& path, FileSystem& files = systemFiles());

    // The cards of deal t.
    void dealCards(uint64_t t, State* state) const;

private:
    void discount(uint64_t block);

    const Game& game_;
    const HoldemBuckets& buckets_;
    HoldemTrainerConfig config_;
    HoldemSets sets_;
    HoldemBatch walk_;
    std::vector<BatchDeal> batch_;
    uint64_t deals_ = 0;
};

} // namespace tamarin
