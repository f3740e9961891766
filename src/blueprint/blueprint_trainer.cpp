#include "blueprint/blueprint_trainer.h"

#include <cassert>
#include <vector>

namespace tamarin {

namespace {

std::vector<uint32_t> bucketsOf(const Game& game, const HandBuckets& buckets) {
    std::vector<uint32_t> counts;
    for (int round = 0; round < game.numRounds; ++round)
        counts.push_back(buckets.numBuckets(round));
    return counts;
}

} // namespace

Status BlueprintTrainer::fits(const Game& game) {
    if (game.numPlayers != 2)
        return Error{"a blueprint is for two players, and the game has " +
                     std::to_string(game.numPlayers)};
    if (game.bettingRule != limitRule) // the tree here has no sizes of bets
        return Error{"a blueprint is for limit games so far"};
    if (game.numHoleCards != 2)
        return Error{"a blueprint is for games with two hole cards"};
    if (game.stack[0] != game.stack[1])
        return Error{"a blueprint is for stacks of one size"};
    return {};
}

BlueprintTrainer::BlueprintTrainer(const Game& game, const CompiledTree& tree,
                                   const HandBuckets& buckets, uint64_t seed, int threads)
    : deck_(game), seed_(seed), threads_(Work{threads, {}, {}}.threadCount()),
      sets_(tree, bucketsOf(game, buckets)), dealer_(game, deck_, buckets),
      step_(sets_, dealer_.numHands(), threads_) {
    assert(fits(game));
}

uint64_t BlueprintTrainer::memory() const {
    return sets_.memory() + BoardStep::memory(sets_, dealer_.numHands(), threads_);
}

Status BlueprintTrainer::run(uint64_t steps, const Work& work) {
    assert(steps <= mostSteps && steps_ <= mostSteps - steps);
    for (uint64_t i = 0; i < steps; ++i) {
        if (work.shouldStop())
            return stopped();
        const DealtBoard board = dealer_.prepare(dealer_.draw(seed_, steps_));
        ++steps_;
        step_.run(board, static_cast<float>(steps_));
        work.report(i + 1, steps);
    }
    return {};
}

} // namespace tamarin
