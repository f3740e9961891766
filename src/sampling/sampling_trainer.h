// Training of a blueprint by external sampling, for two seats or more, limit and no-limit, towards
// an equilibrium of the game with its buckets and its menu.
//
// An iteration is one deal, walked once for each seat (external_walk.h). Iterations come in
// batches: all walks of one see the strategies that were there when it began, and what they found
// is added when the last is done, by threads that have sets of their own, each set's in the order
// of the walks. So the bytes depend on the seed and the number of iterations alone. Batches need no
// locks and no atomic additions; a batch that is short against the training makes no difference to
// where it goes.
//
// Weights are linear (Brown and Sandholm 2019), in steps: training is divided into blocks, each an
// eighth as long as what was before it, and when one ends all numbers are multiplied by its weight
// over that of the next. So numbers grow slowly enough for 32 bits.
//
// Of more than two seats nothing is known to promise an equilibrium; and there the average
// strategy of a seat counts each of its nodes as often as the other seats who act beside the
// traverser go there, too.
#pragma once

#include "sampling/external_walk.h"
#include "support/file.h"
#include "training/trainer.h"
#include "tree/payoffs.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tamarin {

struct SamplingOptions {
    uint64_t seed = 1;
    int threads = 0;     // 0: as many as there are cores
    uint32_t batch = 64; // iterations, 1 to mostBatch
    bool prune = false;  // leave out actions that have long been bad, in 15 of 16 walks
};

class SamplingTrainer : public Trainer {
public:
    static constexpr uint64_t mostIterations = uint64_t{1} << 40U;
    static constexpr uint32_t mostBatch = 4096;
    static constexpr int32_t mostRegret = 1 << 30;
    static constexpr int32_t leastRegret = -(1 << 26); // beyond, an action would be gone for good

    // Why a game cannot be trained so; success where it can.
    static Status fits(const Game& game);

    // The game must fit; all must outlive the trainer. Throws std::bad_alloc.
    SamplingTrainer(const Game& game, const MenuTree& tree, const SeatBuckets& buckets,
                    const SamplingOptions& options);

    uint64_t block() const override { return options_.batch; }
    void run(uint64_t iterations) override;
    uint64_t iteration() const override { return batches_ * options_.batch; }
    // Positive regrets an iteration and set, in chips: falls towards 0.
    TrainingMeasure measure() const override;

    const SamplingOptions& options() const { return options_; }
    const MenuSets& sets() const { return sets_; }
    MenuSets& sets() { return sets_; }
    // Units of regrets and values a chip.
    double units() const { return units_; }
    // Bytes that training takes, beside the tree and the card abstraction.
    uint64_t memory() const;

    // What the first so many batches weigh now: a batch of the present block weighs 1.
    static double weightOf(uint64_t batches);

    // A checkpoint is the frame of training/checkpoint_frame.h around regrets and strategy sums.
    // What CheckpointFile refuses is refused here, and nothing changes then; so is one that was
    // made over other buckets or another menu, of which abstraction and menu are hashes.
    Status writeCheckpoint(const std::string& path, uint64_t abstraction, uint64_t menu,
                           FileSystem& files = systemFiles()) const;
    Status readCheckpoint(const std::string& path, uint64_t abstraction, uint64_t menu,
                          FileSystem& files = systemFiles());

private:
    struct BatchDeal {
        State cards;
        SampledDeal deal;
    };

    void runBatch();
    void dealBatch();
    void walk(size_t job, ExternalWalk& walker);
    void addUp(size_t part);
    void scale(double factor);
    const int32_t* payoffsOf(uint32_t outcome, size_t seat) const {
        return payoffs_[outcome].data() + seat * tree_.settlements().size();
    }
    void takeOutcome(uint32_t outcome);
    std::string configuration(uint64_t abstraction, uint64_t menu) const;

    const Game& game_;
    const MenuTree& tree_;
    SamplingOptions options_;
    int threads_;
    MenuSets sets_;
    DealSampler sampler_;
    Payoffs showdowns_;
    double units_;
    std::vector<std::vector<int32_t>> payoffs_; // [outcome][seat][settlement]
    std::vector<BatchDeal> deals_;
    std::vector<WalkLog> logs_; // of each walk of a batch
    std::vector<ExternalWalk> walkers_;
    uint64_t batches_ = 0;
};

} // namespace tamarin
