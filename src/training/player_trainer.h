// The player's own training as a trainer: CFR::train in blocks, from a seed.
//
// Each block is one call of CFR::train, which starts from a fresh deck; so whole blocks are all
// that a run consists of. Useless actions are eliminated where the player could do it, in games of
// one card and one round.
#pragma once

#include "training/small_game_trainer.h"

namespace tamarin {

class PlayerTrainer : public SmallGameTrainer {
public:
    PlayerTrainer(const SmallGame& game, uint64_t seed, int threads = 1);

    uint64_t block() const override { return 100'000; }
    void run(uint64_t iterations) override;
    uint64_t iteration() const override { return iteration_; }
    Profile average() const override;
    TrainerState state() const override;
    void restore(const TrainerState& state) override;

private:
    Game rules_;
    CFR solver_;
    uint64_t iteration_ = 0;
};

} // namespace tamarin
