// Whole matches: the dealer, and built-in opponents in processes of their own, over local sockets.
#include <cstdio>
#include <string>

#include <benchmark/benchmark.h>

namespace {

void playMatch(benchmark::State& run, const char* game, const char* seats) {
    constexpr int hands = 10'000;
    const std::string command = std::string(TAMARIN_PROGRAM) + " match " + TAMARIN_SOURCE_DIR +
                                "/games/" + game + " " + seats + " --hands " +
                                std::to_string(hands) + " --seed 1 --quiet --json 2>&1";
    for (auto _ : run) {
        FILE* const match = popen(command.c_str(), "r");
        std::string said;
        char part[4096];
        while (match && std::fgets(part, sizeof part, match))
            said += part;
        if (!match || pclose(match) != 0) {
            run.SkipWithError(("the match failed: " + said).c_str());
            return;
        }
    }
    run.SetItemsProcessed(run.iterations() * hands);
}

// Ten thousand hands each, start and end of the processes included; items are hands.
BENCHMARK_CAPTURE(playMatch, kuhnThreeBots, "kuhn.limit.3p.game",
                  "--seat a=bot:rule --seat b=bot:random --seat c=bot:call")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(playMatch, limitTwoBots, "holdem.limit.2p.reverse_blinds.game",
                  "--seat a=bot:rule --seat b=bot:random")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
