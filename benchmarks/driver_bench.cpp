// A decision inside the player, from the state that it has read to the action.
//
// The agent works in the playing directory that the environment variable TAMARIN_DIRECTORY names
// (run/ when it is not set); `./play GAME` or `tamarin prepare GAME` fills it. A benchmark whose
// strategy is not there is skipped: nothing is trained here.
#include "dealer/latency_histogram.h"
#include "driver/LimitHoldemAgent.h"
#include "game/game.h"
#include "support/clock.h"
#include "support/rng.h"
#include "support/silent_output.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

class OpenAgent : public LimitHoldemAgent {
public:
    using LimitHoldemAgent::LimitHoldemAgent;
    Action decide(const MatchState& seen) {
        state = seen;
        Action action{actionInvalid, 0};
        getAction(action);
        return action;
    }
    const Game* definition() const { return game; }
};

// States to act in, from hands in which everybody folds, calls or raises by chance.
std::vector<MatchState> randomDecisions(const Game* game, size_t count) {
    std::vector<MatchState> decisions;
    rng_state_t cards{};
    init_genrand(&cards, 1);
    while (decisions.size() < count) {
        State state;
        initState(game, 0, &state);
        dealCards(game, &cards, &state);
        while (!state.finished) {
            decisions.push_back({state, currentPlayer(game, &state)});
            Action action{actionCall, 0};
            int32_t least = 0;
            int32_t most = 0;
            const uint32_t draw = genrand_int32(&cards) % 8;
            if (draw == 0 && state.maxSpent > state.spent[currentPlayer(game, &state)])
                action.type = actionFold;
            else if (draw < 4 && raiseIsValid(game, &state, &least, &most))
                action = {actionRaise, least};
            doAction(game, &action, &state);
        }
    }
    decisions.resize(count);
    return decisions;
}

void decide(benchmark::State& run, const char* gameName, const char* strategy) {
    const char* const named = std::getenv("TAMARIN_DIRECTORY");
    const std::filesystem::path directory =
        named ? std::filesystem::path(named) : std::filesystem::path(TAMARIN_SOURCE_DIR) / "run";
    if (!std::filesystem::exists(directory / strategy)) {
        run.SkipWithError((directory.string() + " has no strategy for it").c_str());
        return;
    }
    const auto home = std::filesystem::current_path();
    std::filesystem::current_path(directory);
    std::optional<OpenAgent> agent;
    {
        const tamarin::SilentOutput silent; // what it says would run into the table of results
        agent.emplace(gameName);
    }
    std::filesystem::current_path(home);

    const std::vector<MatchState> decisions = randomDecisions(agent->definition(), 100'000);
    tamarin::LatencyHistogram latency;
    size_t next = 0;
    for (auto _ : run) {
        const tamarin::TimePoint start = tamarin::steadyClock().now();
        benchmark::DoNotOptimize(agent->decide(decisions[next]));
        latency.add(tamarin::steadyClock().now() - start);
        next = next + 1 == decisions.size() ? 0 : next + 1;
    }
    run.SetItemsProcessed(run.iterations());
    const auto microseconds = [&](double share) {
        return static_cast<double>(latency.quantile(share).count()) / 1e3;
    };
    run.counters["median_us"] = microseconds(0.5);
    run.counters["p99_us"] = microseconds(0.99);
}

BENCHMARK_CAPTURE(decide, limitTwo, "holdem.limit.2p.reverse_blinds.game",
                  "strategies/holdem.limit.2p/strategy");
BENCHMARK_CAPTURE(decide, noLimitTwo, "holdem.nolimit.2p.reverse_blinds.game",
                  "strategies/holdem.nolimit.2p/strategy");
BENCHMARK_CAPTURE(decide, limitThree, "holdem.limit.3p.game",
                  "strategies/holdem.limit.3p/strategy");

} // namespace
