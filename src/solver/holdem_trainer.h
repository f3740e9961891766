// Hold'em training towards an equilibrium of the ten-bucket game, by sampled deals.
//
// Every deal is walked whole with counterfactual weights (holdem_walk.h). What becomes of regrets
// and averages are the algorithms of solver/equilibrium.h in a form that suits single deals:
//
//   player  the player's own rule, as CFR::trainHoldem has it
//   cfr     plain sums
//   cfr+    regrets floored at 0, the average weighted by t
//   lcfr    both weighted by t
//   dcfr    plain sums within a block of deals; after block b positive regrets are multiplied by
//           b^1.5 / (b^1.5 + 1), negative ones halved, the average multiplied by (b / (b + 1))^2
//
// With two players the average approaches an equilibrium of the abstract game, not of hold'em. The
// cards of deal t depend on the seed and t alone, and deals are walked in batches
// (solver/holdem_batch.h), so the numbers depend on the game, the buckets and the configuration;
// not on the number of threads, and not on how the deals are divided over calls, checkpoints and
// processes.
#pragma once

#include "solver/holdem_batch.h"
#include "solver/holdem_buckets.h"
#include "solver/holdem_sets.h"
#include "solver/trainer.h"
#include "support/file.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tamarin {

struct HoldemTrainerConfig {
    Algorithm algorithm = Algorithm::linear; // any but predictive
    uint64_t seed = 1;
    uint64_t block = 1000; // deals of a dcfr block, whole batches
    uint64_t batch = 1;    // deals walked together; the trunk sees none of a batch before its end
    int threads = 0;       // 0: all cores
};

class HoldemTrainer {
public:
    // game and buckets must outlive the trainer. Two or three players.
    HoldemTrainer(const Game& game, const HoldemBuckets& buckets,
                  const HoldemTrainerConfig& config);

    // Walks so many deals more, rounded up to whole batches.
    void run(uint64_t deals);
    uint64_t deals() const { return deals_; }
    const HoldemTrainerConfig& config() const { return config_; }
    const HoldemSets& sets() const { return sets_; }
    HoldemSets& sets() { return sets_; }

    // Positive regrets per deal and information set, in chips: falls towards 0 in training.
    double averageRegret() const;

    // A checkpoint is one file of its own kind, with the configuration and a checksum; see the .cpp
    // for its layout. readCheckpoint refuses, in words, what is none, is damaged, or was made with
    // another configuration.
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

// Means over sampled deals and their standard errors, for each seat, in chips a hand.
struct SampledValue {
    double mean[MAX_PLAYERS] = {};
    double error[MAX_PLAYERS] = {};
    uint64_t deals = 0;
};

// How values are sampled.
struct ValueSampling {
    uint64_t deals = 100'000;
    uint64_t responseDeals = 300'000; // that a response learns from
    uint64_t seed = 1;                // the deals are others than those of training with that seed
    int threads = 0;                  // 0: all cores; the numbers do not depend on it
    // Told how many deals are done, on the calling thread; false ends the work with what there is.
    std::function<bool(uint64_t done)> goOn;
};

// The value of the abstract game to each seat when all follow the average strategy of sets: exact
// over betting, sampled over cards. Training never saw these deals.
SampledValue sampleValues(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                          const ValueSampling& sampling);

// What a seat gains by leaving the average strategy while the others keep to it. A response learns
// against it by counterfactual regrets (linear weights) and is valued on other deals, the same for
// both strategies, so that the gain's error is that of a difference. As the response is found by
// sampling it is at most as good as a best response that knows the present bucket and the betting:
// the gain is a lower bound, in expectation, of what that one gains in the abstract game. It says
// nothing of responses that see more than ten buckets.
struct ResponseValue {
    SampledValue value; // to each seat, with the response
    double gain = 0.0;  // the seat's
    double error = 0.0; // of the gain
};
ResponseValue sampleResponse(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                             int seat, const ValueSampling& sampling);

} // namespace tamarin
