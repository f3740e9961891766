// The rules engine: text, actions, showdowns, ranking.
#include "game/definition_file.h"
#include "game/game.h"

#include <vector>

#include <benchmark/benchmark.h>

namespace {

const tamarin::GamePtr limit =
    tamarin::readDefinitionFile(TAMARIN_SOURCE_DIR "/games/holdem.limit.2p.reverse_blinds.game");
const tamarin::GamePtr noLimit =
    tamarin::readDefinitionFile(TAMARIN_SOURCE_DIR "/games/holdem.nolimit.2p.reverse_blinds.game");

constexpr char limitRiver[] = "MATCHSTATE:1:17:crrc/crrc/rrc/cr:|9hQd/8dAs8s/4h/6d";
constexpr char noLimitRiver[] = "MATCHSTATE:0:3:cr300c/cr900c/cc/r2700:QsKh|/2c3d4h/Td/9c";
constexpr char showdown[] = "STATE:17:crrc/crrc/rrc/crc:KhKd|9hQd/8dAs8s/4h/6d";

void readRiverState(benchmark::State& run, const Game* game, const char* text) {
    MatchState state{};
    for (auto _ : run) {
        const int consumed = readMatchState(text, game, &state);
        if (consumed < 0) {
            run.SkipWithError("the state does not read");
            return;
        }
        benchmark::DoNotOptimize(state);
    }
    run.SetItemsProcessed(run.iterations());
}
void readRiverStateLimit(benchmark::State& run) {
    readRiverState(run, limit.get(), limitRiver);
}
void readRiverStateNoLimit(benchmark::State& run) {
    readRiverState(run, noLimit.get(), noLimitRiver);
}
BENCHMARK(readRiverStateLimit);
BENCHMARK(readRiverStateNoLimit);

void printRiverState(benchmark::State& run) {
    MatchState state{};
    readMatchState(limitRiver, limit.get(), &state);
    char text[4096];
    for (auto _ : run) {
        benchmark::DoNotOptimize(printMatchState(limit.get(), &state, sizeof text, text));
        benchmark::ClobberMemory();
    }
    run.SetItemsProcessed(run.iterations());
}
BENCHMARK(printRiverState);

// A call and a raise in turn, on the flop, undone by setting the counters back.
void applyAction(benchmark::State& run) {
    State state{};
    readState("STATE:1:cc/:KhKd|9hQd/8dAs8s", limit.get(), &state);
    const State before = state;
    const Action raise{actionRaise, 0};
    for (auto _ : run) {
        doAction(limit.get(), &raise, &state);
        benchmark::DoNotOptimize(state);
        state.numActions[1] = 0;
        state.maxSpent = before.maxSpent;
        state.spent[0] = before.spent[0];
        state.spent[1] = before.spent[1];
    }
    run.SetItemsProcessed(run.iterations());
}
BENCHMARK(applyAction);

void valueOfShowdown(benchmark::State& run) {
    State state{};
    readState(showdown, limit.get(), &state);
    for (auto _ : run)
        benchmark::DoNotOptimize(valueOfState(limit.get(), &state, 0));
    run.SetItemsProcessed(run.iterations());
}
BENCHMARK(valueOfShowdown);

// Random seven-card hands, from card bytes to the rank.
void rankSevenCards(benchmark::State& run) {
    constexpr size_t hands = 1 << 14;
    rng_state_t rng;
    init_genrand(&rng, 1);
    std::vector<State> deals(1);
    std::vector<uint8_t> cards;
    for (size_t i = 0; i < hands; ++i) {
        dealCards(limit.get(), &rng, &deals[0]);
        cards.insert(cards.end(), deals[0].holeCards[0], deals[0].holeCards[0] + 2);
        cards.insert(cards.end(), deals[0].boardCards, deals[0].boardCards + 5);
    }
    for (auto _ : run) {
        int sum = 0;
        for (size_t i = 0; i < hands; ++i) {
            CardSet set = 0;
            for (size_t c = 0; c < 7; ++c)
                set |= cardBit(cards[7 * i + c]);
            sum += rankCardSet(set);
        }
        benchmark::DoNotOptimize(sum);
    }
    run.SetItemsProcessed(run.iterations() * static_cast<int64_t>(hands));
}
BENCHMARK(rankSevenCards);

// Deals a hand of limit hold'em, plays it with random legal actions and values it for both seats.
void playRandomHand(benchmark::State& run) {
    rng_state_t rng;
    init_genrand(&rng, 1);
    State state{};
    for (auto _ : run) {
        initState(limit.get(), 0, &state);
        dealCards(limit.get(), &rng, &state);
        while (!state.finished) {
            Action action{static_cast<ActionType>(genrand_int32(&rng) % 3), 0};
            if (isValidAction(limit.get(), &state, 0, &action))
                doAction(limit.get(), &action, &state);
        }
        benchmark::DoNotOptimize(valueOfState(limit.get(), &state, 0));
        benchmark::DoNotOptimize(valueOfState(limit.get(), &state, 1));
    }
    run.SetItemsProcessed(run.iterations());
}
BENCHMARK(playRandomHand);

} // namespace
