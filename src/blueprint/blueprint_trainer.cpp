#include "blueprint/blueprint_trainer.h"

#include "training/checkpoint_frame.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <vector>

namespace tamarin {

namespace {

constexpr CheckpointKind blueprintKind{"tmrnbpck", 1, "a checkpoint of training a blueprint"};

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
    if (game.stack[0] != unboundedStack || game.stack[1] != unboundedStack)
        return Error{"a blueprint is for stacks that never run out"};
    return {};
}

BlueprintTrainer::BlueprintTrainer(const Game& game, const CompiledTree& tree,
                                   const HandBuckets& buckets, uint64_t seed, int threads)
    : game_(game), deck_(game), seed_(seed), threads_(Work{threads, {}, {}}.threadCount()),
      sets_(tree, bucketsOf(game, buckets)), dealer_(game, deck_, buckets),
      step_(sets_, dealer_.numHands(), threads_) {
    assert(fits(game));
}

uint64_t BlueprintTrainer::memory() const {
    return sets_.memory() + BoardStep::memory(sets_, dealer_.numHands(), threads_);
}

void BlueprintTrainer::step() {
    assert(steps_ < mostSteps);
    const DealtBoard board = dealer_.prepare(dealer_.draw(seed_, steps_));
    ++steps_;
    step_.run(board, static_cast<float>(steps_));
}

void BlueprintTrainer::run(uint64_t steps) {
    for (uint64_t i = 0; i < steps; ++i)
        step();
}

Status BlueprintTrainer::run(uint64_t steps, const Work& work) {
    for (uint64_t i = 0; i < steps; ++i) {
        if (work.shouldStop())
            return stopped();
        step();
        work.report(i + 1, steps);
    }
    return {};
}

TrainingMeasure BlueprintTrainer::measure() const {
    double sum = 0;
    for (const FloatRow& row : sets_.allRegrets())
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            sum += static_cast<double>(std::max(row.lanes[lane], 0.0F));
    const auto t = static_cast<double>(steps_);
    const double weights = std::max(t * (t + 1) / 2, 1.0);
    return AverageRegret{sum / weights / static_cast<double>(sets_.numSets())};
}

std::string BlueprintTrainer::configuration(uint64_t abstraction) const {
    std::string text = gameConfig(game_) + "seed = " + std::to_string(seed_) + '\n';
    for (int round = 0; round < game_.numRounds; ++round)
        text += "buckets of round " + std::to_string(round) + " = " +
                std::to_string(sets_.numBuckets(round)) + '\n';
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(abstraction));
    return text + "card abstraction = " + hex + '\n';
}

Status BlueprintTrainer::writeCheckpoint(const std::string& path, uint64_t abstraction,
                                         FileSystem& files) const {
    return writeCheckpointFile(path, blueprintKind, configuration(abstraction), steps_,
                               {std::as_bytes(sets_.allRegrets()), std::as_bytes(sets_.allSums())},
                               files);
}

Status BlueprintTrainer::readCheckpoint(const std::string& path, uint64_t abstraction,
                                        FileSystem& files) {
    Result<CheckpointFile> file = CheckpointFile::open(path, blueprintKind, files);
    if (!file)
        return Error{file.error()};
    if (Status same = file->madeWith(configuration(abstraction)); !same)
        return same;
    if (Status read = file->read(
            {std::as_writable_bytes(sets_.allRegrets()), std::as_writable_bytes(sets_.allSums())});
        !read)
        return read;
    steps_ = file->iteration();
    return {};
}

} // namespace tamarin
