#include "training/holdem_trainer.h"

#include "holdem/deals.h"
#include "training/checkpoint_frame.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <omp.h>

namespace tamarin {

namespace {

constexpr CheckpointKind holdemKind{"tmrnhold", 3, "a checkpoint of hold'em training"};

static_assert(sizeof(SetNumbers) == 48);

std::string configText(const Game& game, const HoldemBuckets& buckets,
                       const HoldemTrainerConfig& config) {
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx",
                  static_cast<unsigned long long>(fingerprintOf(game, buckets)));
    return gameConfig(game) + "algorithm = " + algorithmName(config.algorithm) +
           "\nseed = " + std::to_string(config.seed) + "\nblock = " + std::to_string(config.block) +
           "\nbatch = " + std::to_string(config.batch) + "\nbuckets = " + hex + "\n";
}

HoldemRule ruleOf(Algorithm algorithm) {
    return algorithm == Algorithm::player    ? HoldemRule::player
           : algorithm == Algorithm::cfrPlus ? HoldemRule::counterfactualPlus
                                             : HoldemRule::counterfactual;
}

double weightOf(Algorithm algorithm, uint64_t t) {
    return algorithm == Algorithm::linear || algorithm == Algorithm::cfrPlus
               ? static_cast<double>(t + 1)
               : 1.0;
}

} // namespace

HoldemTrainer::HoldemTrainer(const Game& game, const HoldemBuckets& buckets,
                             const HoldemTrainerConfig& config)
    : game_(game), buckets_(buckets), config_(config), sets_(game),
      walk_(game, sets_, config.threads), batch_(config.batch) {
    assert(whyNotForHoldem(config.algorithm) == nullptr);
    assert(config.batch > 0 && config.block > 0);
    assert(config.algorithm != Algorithm::discounted || config.block % config.batch == 0);
}

void HoldemTrainer::dealCards(uint64_t t, State* state) const {
    drawDeal(game_, config_.seed, DealStream::training, t, state);
}

void HoldemTrainer::run(uint64_t iterations) {
    for (uint64_t i = 0; i < iterations; i += config_.batch) {
        fillBatch(game_, buckets_, config_.seed, DealStream::training, deals_,
                  threadsOf(config_.threads), batch_);
        for (size_t d = 0; d < batch_.size(); ++d)
            batch_[d].weight = weightOf(config_.algorithm, deals_ + d);
        walk_.iterate(ruleOf(config_.algorithm), batch_);
        deals_ += config_.batch;
        if (config_.algorithm == Algorithm::discounted && deals_ % config_.block == 0)
            discount(deals_ / config_.block);
    }
}

void HoldemTrainer::discount(uint64_t block) {
    const auto b = static_cast<double>(block);
    // The root is rounded alike everywhere; the library's pow() is not, where a processor lacks
    // FMA. EquilibriumTrainer takes t x sqrt(t) instead, which rounds differently. Both stay as
    // they are: strategies, checkpoints and the signature hang on these bits.
    const double power = std::sqrt(b * b * b);
    const double positive = power / (power + 1.0);
    const double average = b / (b + 1.0) * (b / (b + 1.0));
    SetNumbers* const numbers = sets_.numbers();
    const size_t count = sets_.numSets();
    const int threads = threadsOf(config_.threads);
    // Nothing in here throws.
#pragma omp parallel for schedule(static) num_threads(threads) default(none)                       \
    shared(numbers, count, positive, average)
    for (size_t i = 0; i < count; ++i) {
        for (int a = 0; a < numAbstractedActions; ++a) {
            numbers[i].regret[a] *= numbers[i].regret[a] > 0.0 ? positive : 0.5;
            numbers[i].strategy[a] *= average;
        }
    }
}

double HoldemTrainer::averageRegret() const {
    // Summed in pieces of a fixed size, so that the sum does not depend on the threads.
    constexpr size_t piece = 1 << 14U;
    const size_t count = sets_.numSets();
    const SetNumbers* const numbers = sets_.numbers();
    std::vector<double> sums((count + piece - 1) / piece);
    const int threads = threadsOf(config_.threads);
    // Nothing in here throws.
#pragma omp parallel for schedule(static) num_threads(threads) default(none)                       \
    shared(sums, numbers, count)
    for (size_t s = 0; s < sums.size(); ++s) {
        double part = 0.0;
        for (size_t i = s * piece; i < std::min(count, (s + 1) * piece); ++i)
            for (const double regret : numbers[i].regret)
                part += std::max(regret, 0.0);
        sums[s] = part;
    }
    double sum = 0.0;
    for (const double part : sums)
        sum += part;
    // Linear weights make a deal count as much as its number.
    const auto t = static_cast<double>(deals_);
    const double weight = config_.algorithm == Algorithm::linear ? t * (t + 1.0) / 2.0 : t;
    return weight == 0.0 ? 0.0 : sum / weight / static_cast<double>(sets_.numSets());
}

Status HoldemTrainer::writeCheckpoint(const std::string& path, FileSystem& files) const {
    return writeCheckpointFile(path, holdemKind, configText(game_, buckets_, config_), deals_,
                               {std::as_bytes(std::span(sets_.numbers(), sets_.numSets()))}, files);
}

Status HoldemTrainer::readCheckpoint(const std::string& path, FileSystem& files) {
    Result<CheckpointFile> file = CheckpointFile::open(path, holdemKind, files);
    if (!file)
        return Error{file.error()};
    if (Status same = file->madeWith(configText(game_, buckets_, config_)); !same)
        return same;
    if (Status read =
            file->read({std::as_writable_bytes(std::span(sets_.numbers(), sets_.numSets()))});
        !read)
        return read;
    deals_ = file->iteration();
    return {};
}

} // namespace tamarin
