// A step of training a blueprint: all hands of one board through the betting of two-player limit
// hold'em, over buckets as many as 169-200-200-200 has. Items are boards.
#include "blueprint/blueprint_trainer.h"
#include "support/split_mix.h"

#include <cassert>
#include <fstream>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

namespace tamarin {

namespace {

// Buckets that rise with the ranks, so that neighbours share them, as those of an abstraction do.
class RankBuckets : public HandBuckets {
public:
    uint32_t numBuckets(int round) const override { return round == 0 ? 169 : 200; }
    void fill(int round, std::span<const uint8_t> board, std::span<const HoleCards> holdings,
              uint16_t* out) const override {
        for (size_t h = 0; h < holdings.size(); ++h) {
            uint32_t sum = holdings[h][0] + 2U * holdings[h][1];
            for (const uint8_t card : board)
                for (const uint8_t own : holdings[h])
                    sum += card / 4 == own / 4 ? 60U : 0U;
            out[h] = static_cast<uint16_t>(sum * 2 / 3 % numBuckets(round));
        }
    }
};

GamePtr limitHoldem() {
    std::ifstream file(TAMARIN_SOURCE_DIR "/games/holdem.limit.2p.reverse_blinds.game");
    std::ostringstream text;
    text << file.rdbuf();
    return gameFromText(text.str());
}

void boardStep(benchmark::State& state) {
    const GamePtr game = limitHoldem();
    assert(game);
    const CompiledTree tree(*game);
    const RankBuckets buckets;
    BlueprintTrainer trainer(*game, tree, buckets, 1, static_cast<int>(state.range(0)));
    trainer.run(10); // until uniform play is over
    for (auto _ : state)
        trainer.run(1);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(boardStep)->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime()->Unit(
    benchmark::kMillisecond);

} // namespace

} // namespace tamarin
