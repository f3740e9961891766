// External sampling: walks of no-limit hold'em with the menus of menus/ and of two-player limit,
// over buckets as many as 169-200-200-200 has. Items are walks: two a deal.
#include "sampling/sampling_trainer.h"

#include <cassert>
#include <fstream>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

namespace tamarin {

namespace {

// Buckets that rise with the ranks, so that what is looked up is spread as with an abstraction.
class SpreadBuckets : public SeatBuckets {
public:
    uint32_t numBuckets(int round) const override { return round == 0 ? 169 : 200; }
    uint16_t bucket(int round, std::span<const uint8_t> hole,
                    std::span<const uint8_t> board) const override {
        uint32_t sum = hole[0] + 2U * hole[1];
        for (const uint8_t card : board)
            for (const uint8_t own : hole)
                sum += card / 4 == own / 4 ? 60U : card % 4U;
        return static_cast<uint16_t>(sum % numBuckets(round));
    }
};

GamePtr benchGame(const char* name) {
    std::ifstream file(std::string(TAMARIN_SOURCE_DIR "/games/") + name);
    std::ostringstream text;
    text << file.rdbuf();
    return gameFromText(text.str());
}

void walks(benchmark::State& state, const std::string& menuName) {
    const bool limit = menuName.empty();
    const GamePtr game = benchGame(limit ? "holdem.limit.2p.reverse_blinds.game"
                                         : "holdem.nolimit.2p.reverse_blinds.game");
    assert(game);
    const auto menu = BettingMenu::read(TAMARIN_SOURCE_DIR "/menus/" + menuName);
    assert(limit || menu);
    const MenuTree tree = limit ? MenuTree(*game) : MenuTree(*game, *menu);
    const SpreadBuckets buckets;
    SamplingOptions options;
    options.threads = static_cast<int>(state.range(0));
    SamplingTrainer trainer(*game, tree, buckets, options);
    trainer.run(5000); // until uniform play is over
    for (auto _ : state)
        trainer.run(options.batch);
    state.SetItemsProcessed(state.iterations() * options.batch * 2);
}
BENCHMARK_CAPTURE(walks, limit, "")->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(walks, tiny, "tiny.menu")->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(walks, middle, "middle.menu")->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(walks, wide, "wide.menu")->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();

} // namespace

} // namespace tamarin
