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
// cards of deal t depend on the seed and t alone, so the numbers depend on the game, the buckets,
// the algorithm and the seed; not on threads, and not on how the deals are divided over calls,
// checkpoints and processes.
#pragma once

#include "solver/cfr.h"
#include "solver/holdem_buckets.h"
#include "solver/holdem_sets.h"
#include "solver/holdem_walk.h"
#include "solver/trainer.h"
#include "support/file.h"

#include <cstdint>
#include <string>

namespace tamarin {

struct HoldemTrainerConfig {
    Algorithm algorithm = Algorithm::linear; // any but predictive
    uint64_t seed = 1;
    uint64_t block = 1000; // deals of a dcfr block
};

class HoldemTrainer {
public:
    // game and buckets must outlive the trainer. Two or three players.
    HoldemTrainer(const Game& game, const HoldemBuckets& buckets,
                  const HoldemTrainerConfig& config);

    // Walks so many deals more.
    void run(uint64_t deals);
    uint64_t deals() const { return deals_; }
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
    HoldemWalk walk_;
    uint64_t deals_ = 0;
};

// The value of the abstract game to each seat, sampled over deals that training has not seen, when
// all follow the average strategy of sets: exact over betting, sampled over cards.
struct SampledValue {
    double mean[MAX_PLAYERS] = {};
    double error[MAX_PLAYERS] = {}; // standard error
    uint64_t deals = 0;
};
SampledValue sampleValues(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                          uint64_t deals, uint64_t seed);

// What seat gains by leaving the average strategy: a response is trained against it with
// counterfactual regrets for trainingDeals, and valued on other deals. As the response is found by
// sampling it is at most as good as a best response: the gain is a lower bound of what the best
// response in the abstract game gains. It says nothing of responses that see more than ten buckets.
SampledValue sampleResponse(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                            int seat, uint64_t trainingDeals, uint64_t deals, uint64_t seed);

} // namespace tamarin
