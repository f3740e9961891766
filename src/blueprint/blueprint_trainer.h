// Training of a blueprint: a strategy for a game for two over a card abstraction, towards an
// equilibrium of the game with its buckets.
//
// Step t draws a board (dealt_board.h) and walks it (board_step.h); its regrets and its strategies
// count t times: linear weights (Brown and Sandholm 2019), which forget the first strategies soon
// and need no discounting of what is there, so a step touches the sets of its board alone. Numbers
// grow with the square of the steps; in 2^40 steps they stay below 10^33 for pots of a million
// chips, where floats end at 10^38. With more steps than 2^24 a step's gain would be lost to
// rounding in sets that are reached always; long before that, strategies change by less than the
// sampling moves them.
//
// The numbers depend on the game, the buckets, the seed and the number of steps: not on the
// threads, and not on how the steps are divided over calls.
#pragma once

#include "abstraction/work.h"
#include "blueprint/board_step.h"
#include "support/file.h"
#include "training/trainer.h"

#include <cstdint>
#include <string>

namespace tamarin {

class BlueprintTrainer : public Trainer {
public:
    static constexpr uint64_t mostSteps = uint64_t{1} << 40U;

    // Why a game cannot be trained so; success where it can.
    static Status fits(const Game& game);

    // The game must fit; all must outlive the trainer. threads: 0 for all cores.
    BlueprintTrainer(const Game& game, const CompiledTree& tree, const HandBuckets& buckets,
                     uint64_t seed, int threads = 0);

    // An iteration is one step.
    void run(uint64_t steps) override;
    // The same; work says how the steps are watched and stopped, between two of them. Stopped, it
    // goes on from the step it came to.
    Status run(uint64_t steps, const Work& work);
    uint64_t iteration() const override { return steps_; }
    // Positive regrets a step and set, each set weighed with the hands of its bucket that the board
    // has: falls towards 0.
    TrainingMeasure measure() const override;

    uint64_t seed() const { return seed_; }
    const BlueprintSets& sets() const { return sets_; }
    BlueprintSets& sets() { return sets_; }
    // Bytes that training takes, beside the card abstraction.
    uint64_t memory() const;

    // A checkpoint is the frame of training/checkpoint_frame.h around the rows of regrets and of
    // strategy sums. What CheckpointFile refuses is refused here, and nothing changes then; so is
    // one that was made over other buckets, of which abstraction is a hash.
    Status writeCheckpoint(const std::string& path, uint64_t abstraction,
                           FileSystem& files = systemFiles()) const;
    Status readCheckpoint(const std::string& path, uint64_t abstraction,
                          FileSystem& files = systemFiles());

private:
    std::string configuration(uint64_t abstraction) const;
    void step();

    const Game& game_;
    PublicDeck deck_;
    uint64_t seed_;
    int threads_;
    BlueprintSets sets_;
    BoardDealer dealer_;
    BoardStep step_;
    uint64_t steps_ = 0;
};

} // namespace tamarin
