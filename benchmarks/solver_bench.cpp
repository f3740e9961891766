// Training, values and best responses of three-player Kuhn, on one core; training of limit hold'em
// for two, with buckets that need no tables.
//
// trainKuhn and trainKuhnPlain leave the same sums, as do trainHoldem and trainHoldemPlain; items
// are iterations. The ratio of two in one run is what the compiled tree is worth.
// trainToEquilibrium is one algorithm each; items are iterations over all 24 deals, and after the
// run NashConv says how far a second's work comes.
#include "game/definition_file.h"
#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "solver/cfr.h"
#include "support/silent_output.h"
#include "training/best_response.h"
#include "training/small_game_trainer.h"

#include <benchmark/benchmark.h>

using namespace tamarin;

namespace {

GamePtr kuhn() {
    return readDefinitionFile(TAMARIN_SOURCE_DIR "/games/kuhn.limit.3p.game");
}

template <class Train>
void trainKuhnBy(benchmark::State& state, int iterations, Train train) {
    const SilentOutput silent;
    const GamePtr game = kuhn();
    CFR solver(game.get());
    solver.train(1000);
    for (auto _ : state)
        train(solver, static_cast<unsigned long long>(iterations));
    state.SetItemsProcessed(state.iterations() * iterations);
}

void trainKuhn(benchmark::State& state) {
    trainKuhnBy(state, 1'000'000, [](CFR& solver, unsigned long long n) { solver.train(n); });
}
BENCHMARK(trainKuhn)->Unit(benchmark::kMillisecond);

void trainKuhnPlain(benchmark::State& state) {
    trainKuhnBy(state, 10'000, [](CFR& solver, unsigned long long n) { solver.trainPlain(n); });
}
BENCHMARK(trainKuhnPlain)->Unit(benchmark::kMillisecond);

void calcKuhnUtility(benchmark::State& state) {
    const SilentOutput silent;
    const GamePtr game = kuhn();
    CFR solver(game.get());
    solver.train(1000);
    double value[3];
    for (auto _ : state) {
        if (state.range(0) != 0)
            solver.calcUtilityPlain(value);
        else
            solver.calcUtility(value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(calcKuhnUtility)->ArgName("plain")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void trainToEquilibrium(benchmark::State& state) {
    const GamePtr game = kuhn();
    const auto small = std::move(*SmallGame::make(*game));
    TrainerConfig config;
    config.algorithm = static_cast<Algorithm>(state.range(0));
    state.SetLabel(algorithmName(config.algorithm));
    double nashConv = 0.0;
    for (auto _ : state) {
        const auto trainer = makeTrainer(*small, config);
        trainer->run(static_cast<uint64_t>(state.range(1)));
        state.PauseTiming();
        nashConv = evaluateProfile(*small, trainer->average()).nashConv();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(1));
    state.counters["NashConv"] = nashConv;
}
BENCHMARK(trainToEquilibrium)
    ->ArgNames({"", "iterations"})
    ->Args({static_cast<int>(Algorithm::player), 1'000'000})
    ->Args({static_cast<int>(Algorithm::cfr), 10'000})
    ->Args({static_cast<int>(Algorithm::cfrPlus), 10'000})
    ->Args({static_cast<int>(Algorithm::linear), 10'000})
    ->Args({static_cast<int>(Algorithm::discounted), 10'000})
    ->Args({static_cast<int>(Algorithm::predictive), 10'000})
    ->Unit(benchmark::kMillisecond);

void bestResponse(benchmark::State& state) {
    const GamePtr game = kuhn();
    const auto small = std::move(*SmallGame::make(*game));
    const Profile profile = uniformProfile(*small);
    for (auto _ : state)
        benchmark::DoNotOptimize(evaluateProfile(*small, profile));
}
BENCHMARK(bestResponse)->Unit(benchmark::kMicrosecond);

// As cheap as a bucket can be, so that what is measured is the walk.
class BucketOfFirstCard : public HoldemBuckets {
public:
    uint8_t bucket(int /*players*/, int round, int /*seat*/, const uint8_t* cards) const override {
        return static_cast<uint8_t>((int{cards[0]} + round) % int{holdemBuckets});
    }
};

template <class Train>
void trainHoldemBy(benchmark::State& state, int iterations, Train train) {
    const SilentOutput silent;
    const GamePtr game =
        readDefinitionFile(TAMARIN_SOURCE_DIR "/games/holdem.limit.2p.reverse_blinds.game");
    const BucketOfFirstCard buckets;
    CFR solver(game.get());
    solver.setHoldemBuckets(&buckets);
    solver.trainHoldem(100); // makes the tree, for both
    for (auto _ : state)
        train(solver, static_cast<unsigned long long>(iterations));
    state.SetItemsProcessed(state.iterations() * iterations);
}

void trainHoldem(benchmark::State& state) {
    trainHoldemBy(state, 20'000, [](CFR& solver, unsigned long long n) { solver.trainHoldem(n); });
}
BENCHMARK(trainHoldem)->Unit(benchmark::kMillisecond);

void trainHoldemPlain(benchmark::State& state) {
    trainHoldemBy(state, 100,
                  [](CFR& solver, unsigned long long n) { solver.trainHoldemPlain(n); });
}
BENCHMARK(trainHoldemPlain)->Unit(benchmark::kMillisecond);

} // namespace
