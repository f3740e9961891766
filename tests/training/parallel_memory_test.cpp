// Memory that runs out on a worker reaches the caller, as it would from a plain loop: an exception
// that leaves a parallel region's body ends the process.
#include "game/games.h"
#include "holdem/deals.h"
#include "holdem/values.h"
#include "solver/games.h"
#include "solver/hashed_buckets.h"
#include "training/best_response.h"
#include "training/small_game_trainer.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <omp.h>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

// While it is set, parallel regions of two or more threads get no memory.
std::atomic<bool> noneInParallel{false};

void* take(size_t size) {
    void* const memory =
        noneInParallel && omp_in_parallel() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

void* operator new(size_t size) {
    return take(size);
}
void* operator new[](size_t size) {
    return take(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}

namespace tamarin::test {
namespace {

class NoMemoryInParallel {
public:
    NoMemoryInParallel() { noneInParallel = true; }
    ~NoMemoryInParallel() { noneInParallel = false; }
};

TEST(ParallelMemory, OfATrainerReachesTheCaller) {
    const GamePtr rules = kuhn3();
    const auto game = std::move(*SmallGame::make(*rules));
    TrainerConfig config;
    config.threads = 2;
    config.sampledDeals = 10'000; // several batches, side by side
    const auto trainer = makeTrainer(*game, config);
    const NoMemoryInParallel none;
    EXPECT_THROW(trainer->run(1), std::bad_alloc);
}

TEST(ParallelMemory, OfABestResponseReachesTheCaller) {
    const GamePtr rules = kuhn3();
    const auto game = std::move(*SmallGame::make(*rules));
    const Profile profile = makeTrainer(*game, {})->average();
    const NoMemoryInParallel none;
    EXPECT_THROW(evaluateProfile(*game, profile, 2), std::bad_alloc);
}

// Buckets and strategies that cannot be looked up.
class NoBuckets : public HoldemBuckets {
public:
    uint8_t bucket(int, int, int, const uint8_t*) const override {
        throw std::runtime_error("no buckets");
    }
};

class NoNodes : public NodeStore {
public:
    size_t count(int) const override { return 0; }
    bool forEach(int, const Visit&) const override { return true; }
    bool find(int, const std::string&, CFRNode&) const override {
        throw std::runtime_error("no nodes");
    }
};

TEST(ParallelMemory, WhatBucketsThrowReachesTheCaller) {
    const GamePtr game = parseGame(twoPlayerLimit);
    for (const size_t count : {1U, 64U}) {
        std::vector<BatchDeal> deals(count);
        EXPECT_THROW(fillBatch(*game, NoBuckets(), 1, DealStream::training, 0, 2, std::span(deals)),
                     std::runtime_error);
    }
}

TEST(ParallelMemory, WhatAStrategyThrowsReachesTheCaller) {
    const GamePtr game = parseGame(twoPlayerLimit);
    ValueSampling sampling;
    sampling.threads = 2;
    EXPECT_THROW((void)samplePlay(*game, HashedBuckets(), NoNodes(), 1000, sampling),
                 std::runtime_error);
}

} // namespace
} // namespace tamarin::test
