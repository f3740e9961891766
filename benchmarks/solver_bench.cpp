// Training, values and best responses of three-player Kuhn, on one core.
//
// BM_Train and BM_TrainPlain leave the same sums; items are iterations. Their ratio in one run is
// what the compiled tree is worth. BM_Equilibrium is one algorithm each; items are iterations over
// all 24 deals, and after the run NashConv says how far a second's work comes.
#include "solver/cfr.h"
#include "training/best_response.h"
#include "training/trainer.h"

#include <cstdio>
#include <iostream>

#include <benchmark/benchmark.h>

using namespace tamarin;

namespace {

GamePtr kuhn() {
    FILE* const file = std::fopen(TAMARIN_SOURCE_DIR "/games/kuhn.limit.3p.game", "r");
    GamePtr game(readGame(file));
    std::fclose(file);
    return game;
}

class Quiet {
public:
    Quiet() : before_(std::cout.rdbuf(nullptr)) {}
    ~Quiet() {
        std::cout.rdbuf(before_);
        std::cout.clear();
    }

private:
    std::streambuf* before_;
};

void BM_Train(benchmark::State& state) {
    const Quiet quiet;
    const GamePtr game = kuhn();
    CFR solver(game.get());
    solver.train(1000);
    constexpr int iterations = 1'000'000;
    for (auto _ : state)
        solver.train(iterations);
    state.SetItemsProcessed(state.iterations() * iterations);
}
BENCHMARK(BM_Train)->Unit(benchmark::kMillisecond);

void BM_TrainPlain(benchmark::State& state) {
    const Quiet quiet;
    const GamePtr game = kuhn();
    CFR solver(game.get());
    solver.train(1000);
    constexpr int iterations = 10'000;
    for (auto _ : state)
        solver.trainPlain(iterations);
    state.SetItemsProcessed(state.iterations() * iterations);
}
BENCHMARK(BM_TrainPlain)->Unit(benchmark::kMillisecond);

void BM_CalcUtility(benchmark::State& state) {
    const Quiet quiet;
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
BENCHMARK(BM_CalcUtility)->ArgName("plain")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void BM_Equilibrium(benchmark::State& state) {
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
BENCHMARK(BM_Equilibrium)
    ->ArgNames({"", "iterations"})
    ->Args({static_cast<int>(Algorithm::player), 1'000'000})
    ->Args({static_cast<int>(Algorithm::cfr), 10'000})
    ->Args({static_cast<int>(Algorithm::cfrPlus), 10'000})
    ->Args({static_cast<int>(Algorithm::linear), 10'000})
    ->Args({static_cast<int>(Algorithm::discounted), 10'000})
    ->Args({static_cast<int>(Algorithm::predictive), 10'000})
    ->Unit(benchmark::kMillisecond);

void BM_BestResponse(benchmark::State& state) {
    const GamePtr game = kuhn();
    const auto small = std::move(*SmallGame::make(*game));
    const Profile profile = uniformProfile(*small);
    for (auto _ : state)
        benchmark::DoNotOptimize(evaluateProfile(*small, profile));
}
BENCHMARK(BM_BestResponse)->Unit(benchmark::kMicrosecond);

} // namespace
