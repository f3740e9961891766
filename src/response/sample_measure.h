// Strategies of a game measured on the same few flops, one after the other: how a training comes
// along. What the draw of the flops does to a figure it does to all of them, so that they differ by
// less than their intervals say.
#pragma once

#include "abstraction/work.h"
#include "response/real_value.h"

#include <cstdint>
#include <vector>

namespace tamarin {

class SampleMeasure {
public:
    // flops: to draw, an even number above 0. The error says why a game cannot be measured. Game
    // and tree must outlive the object.
    static Result<SampleMeasure> of(const Game& game, const CompiledTree& tree, size_t flops,
                                    uint64_t seed);

    // In chips a hand. stopped() when work was stopped; progress is in flops.
    Result<SampledGains> measure(const HandStrategy& strategy, const Work& work) const;

    size_t distinctFlops() const { return sample_.distinct().size(); }

private:
    SampleMeasure(const Game& game, const CompiledTree& tree, BettingRounds rounds)
        : game_(&game), tree_(&tree), rounds_(std::move(rounds)), deck_(game) {}

    const Game* game_;
    const CompiledTree* tree_;
    BettingRounds rounds_;
    PublicDeck deck_;
    std::vector<PublicBoard> flops_;
    FlopSample sample_;
};

} // namespace tamarin
