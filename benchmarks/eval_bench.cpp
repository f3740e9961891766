// Ranking and equity, in hands or deals a second.
//
// The cost of a random hand is that of the memory: the table has 124 MiB, and each of the last
// steps misses the caches: rankMany overlaps sixteen hands, which hand after hand cannot.
#include "eval/exact_equity.h"
#include "eval/hand_evaluator.h"
#include "eval/hand_table.h"
#include "eval/range_sweep.h"
#include "eval/sampled_equity.h"
#include "eval/seven_card_table.h"
#include "support/rng.h"

#include <array>
#include <vector>

#include <benchmark/benchmark.h>

using namespace tamarin;

namespace {

const SevenCardTable& table() {
    static const SevenCardTable made = SevenCardTable::generate();
    return made;
}

constexpr size_t handCount = 1 << 20;

struct Hand {
    uint8_t cards[7];
};

const std::vector<Hand>& randomHands() {
    static const std::vector<Hand> made = [] {
        std::vector<Hand> hands(handCount);
        SplitMix random(1);
        for (Hand& hand : hands) {
            CardSet used = 0;
            for (uint8_t& card : hand.cards) {
                do
                    card = static_cast<uint8_t>(random.below(52));
                while ((used & cardBit(card)) != 0);
                used |= cardBit(card);
            }
        }
        return hands;
    }();
    return made;
}

void setRate(benchmark::State& state, const char* what, uint64_t each) {
    state.counters[what] =
        benchmark::Counter(static_cast<double>(state.iterations()) * static_cast<double>(each),
                           benchmark::Counter::kIsRate);
}

// One after the other: the next hand's first step waits for this hand's value.
void rankHandAfterHand(benchmark::State& state) {
    const int32_t* const entries = table().data();
    uint64_t sum = 0;
    for (auto _ : state)
        for (const Hand& hand : randomHands()) {
            uint32_t at = 53 + static_cast<uint32_t>(sum & 0);
            for (const uint8_t card : hand.cards)
                at = static_cast<uint32_t>(entries[at + card + 1U]);
            sum += at;
            benchmark::DoNotOptimize(sum);
        }
    setRate(state, "hands", handCount);
}
BENCHMARK(rankHandAfterHand)->Unit(benchmark::kMillisecond);

void rankManyHands(benchmark::State& state) {
    const std::vector<Hand>& hands = randomHands();
    std::vector<uint32_t> values(handCount);
    table();
    for (auto _ : state) {
        table().rankMany(reinterpret_cast<const uint8_t(*)[7]>(hands.data()), values.data(),
                         handCount);
        benchmark::ClobberMemory();
    }
    setRate(state, "hands", handCount);
}
BENCHMARK(rankManyHands)->Unit(benchmark::kMillisecond);

// The same hands through tables that stay in the cache.
void rankManyHandsInTheCache(benchmark::State& state) {
    const std::vector<Hand>& hands = randomHands();
    std::vector<uint16_t> values(handCount);
    HandEvaluator::shared();
    for (auto _ : state) {
        HandEvaluator::shared().rankMany(reinterpret_cast<const uint8_t(*)[7]>(hands.data()),
                                         values.data(), handCount);
        benchmark::ClobberMemory();
    }
    setRate(state, "hands", handCount);
}
BENCHMARK(rankManyHandsInTheCache)->Unit(benchmark::kMillisecond);

// All 1,081 holdings of a board, for boards at random.
void rankHoldingsOfABoard(benchmark::State& state) {
    const std::vector<Hand>& hands = randomHands();
    std::vector<uint16_t> values(47 * 46 / 2);
    size_t next = 0;
    for (auto _ : state) {
        HandEvaluator::shared().rankHoldings({hands[next].cards, 5}, values.data());
        benchmark::ClobberMemory();
        next = (next + 1) % hands.size();
    }
    setRate(state, "hands", values.size());
}
BENCHMARK(rankHoldingsOfABoard)->Unit(benchmark::kMicrosecond);

// Calls visit(row, f) for every increasing six cards a..f, with the row of their state.
template <class Visit>
void forEachSixCards(const int32_t* t, const Visit& visit) {
    for (int a = 1; a <= 46; ++a) {
        const int32_t* ta = t + t[53 + a];
        for (int b = a + 1; b <= 47; ++b) {
            const int32_t* tb = t + ta[b];
            for (int c = b + 1; c <= 48; ++c) {
                const int32_t* tc = t + tb[c];
                for (int d = c + 1; d <= 49; ++d) {
                    const int32_t* td = t + tc[d];
                    for (int e = d + 1; e <= 50; ++e) {
                        const int32_t* te = t + td[e];
                        for (int f = e + 1; f <= 51; ++f)
                            visit(t + te[f], f);
                    }
                }
            }
        }
    }
}

// All 133,784,560 hands, prefixes shared: the values alone, added up.
void rankAllSevenCardHands(benchmark::State& state) {
    const int32_t* t = table().data();
    for (auto _ : state) {
        uint64_t sum = 0;
        forEachSixCards(t, [&](const int32_t* row, int f) {
            for (int g = f + 1; g <= 52; ++g)
                sum += static_cast<uint32_t>(row[g]);
        });
        benchmark::DoNotOptimize(sum);
    }
    setRate(state, "hands", 133784560);
}
BENCHMARK(rankAllSevenCardHands)->Unit(benchmark::kMillisecond);

// The same, and counted by category: a word with six bits a category, enough for the 46 last cards
// of a prefix.
void countAllSevenCardHands(benchmark::State& state) {
    const int32_t* t = table().data();
    std::array<uint64_t, 16> increment{};
    for (size_t category = 1; category <= 9; ++category)
        increment[category] = uint64_t{1} << (6 * (category - 1));
    const std::array<uint64_t, 9> expected{23294460, 58627800, 31433400, 6461620, 6180020,
                                           4047644,  3473184,  224848,   41584};
    for (auto _ : state) {
        std::array<uint64_t, 9> counts{};
        forEachSixCards(t, [&](const int32_t* row, int f) {
            uint64_t packed = 0;
            for (int g = f + 1; g <= 52; ++g)
                packed += increment[static_cast<size_t>(row[g] >> 12)];
            for (size_t i = 0; i < 9; ++i)
                counts[i] += packed >> (6 * i) & 63;
        });
        if (counts != expected)
            state.SkipWithError("the counts are wrong");
    }
    setRate(state, "hands", 133784560);
}
BENCHMARK(countAllSevenCardHands)->Unit(benchmark::kMillisecond);

void showdownRanking(benchmark::State& state) {
    std::vector<CardSet> sets;
    for (const Hand& hand : randomHands()) {
        CardSet set = 0;
        for (const uint8_t card : hand.cards)
            set |= cardBit(card);
        sets.push_back(set);
    }
    for (auto _ : state) {
        int sum = 0;
        for (const CardSet set : sets)
            sum += rankCardSet(set);
        benchmark::DoNotOptimize(sum);
    }
    setRate(state, "hands", handCount);
}
BENCHMARK(showdownRanking)->Unit(benchmark::kMillisecond);

void generateTable(benchmark::State& state) {
    std::vector<int32_t> entries(sevenCardEntries);
    for (auto _ : state)
        generateSevenCardTable(entries, static_cast<int>(state.range(0)));
}
BENCHMARK(generateTable)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// The family that fills the equity tables: 1,000 deals.
void evaluateOneHand(benchmark::State& state) {
    std::vector<int> entries(table().entries().begin(), table().entries().end());
    unsigned char cards[7] = {51, 46, 3, 17, 29, 41, 8};
    const auto players = static_cast<unsigned>(state.range(1));
    global_urng().seed(1);
    for (auto _ : state)
        benchmark::DoNotOptimize(state.range(0) == 2
                                     ? evaluateHand2(cards, players, entries.data())
                                     : evaluateHand7(cards, players, entries.data()));
    setRate(state, "deals", 1000);
}
BENCHMARK(evaluateOneHand)->Args({2, 2})->Args({2, 3})->Args({7, 2})->Args({7, 3});

void sampledEquityOfHand(benchmark::State& state) {
    const std::vector<HandRange> ranges{{"", {cardBit(51) | cardBit(46)}}};
    for (auto _ : state)
        benchmark::DoNotOptimize(
            sampledEquity(ranges, 0, static_cast<int>(state.range(0)), 65536, 1, 1));
    setRate(state, "deals", 65536);
}
BENCHMARK(sampledEquityOfHand)->Arg(1)->Arg(5)->Unit(benchmark::kMillisecond);

// Arguments: board cards, opponents.
void exactEquityOfHand(benchmark::State& state) {
    const std::array<uint8_t, 2> hole{51, 46};
    const std::array<uint8_t, 5> board{3, 17, 29, 41, 8};
    const std::span<const uint8_t> known(board.data(), static_cast<size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(exactEquity(hole, known, static_cast<int>(state.range(1))));
}
BENCHMARK(exactEquityOfHand)->ArgsProduct({{5, 4, 3, 0}, {1, 2}})->Unit(benchmark::kMicrosecond);

void exactPreflopAgainstAKnownHand(benchmark::State& state) {
    const std::array<CardSet, 2> hands{cardBit(51) | cardBit(46), cardBit(32) | cardBit(33)};
    for (auto _ : state)
        benchmark::DoNotOptimize(exactEquity(hands, 0, 0));
}
BENCHMARK(exactPreflopAgainstAKnownHand)->Unit(benchmark::kMillisecond);

// Boards before the flop, swept for ranges; the argument is the number of opponents with all hands.
void sweepOfARange(benchmark::State& state) {
    std::vector<HandRange> ranges{*parseHandRange("22+,A2s+,KTs+")};
    for (int64_t i = 0; i < state.range(0); ++i)
        ranges.push_back(*parseHandRange("random"));
    RangeSweep sweep(ranges, 0);
    sweep.listBoards();
    constexpr size_t boards = 1000;
    for (auto _ : state)
        benchmark::DoNotOptimize(sweep.count(0, boards));
    setRate(state, "boards", boards);
}
BENCHMARK(sweepOfARange)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

} // namespace
