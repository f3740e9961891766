// Indexing and unindexing, per structure and round, on hands drawn beforehand; items are hands.
#include "index/hand_index.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr size_t hands = 1 << 16;

struct Structure {
    std::vector<uint8_t> cards;
    hand_indexer_t indexer;
    unsigned total = 0;

    explicit Structure(std::vector<uint8_t> cardsPerRound) : cards(std::move(cardsPerRound)) {
        if (!hand_indexer_init(static_cast<unsigned>(cards.size()), cards.data(), &indexer))
            std::abort();
        for (uint8_t n : cards)
            total += n;
    }
    ~Structure() { hand_indexer_free(&indexer); }
    Structure(const Structure&) = delete;
    Structure& operator=(const Structure&) = delete;

    unsigned lastRound() const { return static_cast<unsigned>(cards.size()) - 1; }

    std::vector<uint8_t> randomHands() const {
        std::mt19937 random(1);
        std::vector<uint8_t> deck(52);
        for (size_t i = 0; i < deck.size(); ++i)
            deck[i] = static_cast<uint8_t>(i);
        std::vector<uint8_t> drawn;
        for (size_t hand = 0; hand < hands; ++hand)
            for (size_t i = 0; i < total; ++i) {
                std::swap(deck[i], deck[i + random() % (deck.size() - i)]);
                drawn.push_back(deck[i]);
            }
        return drawn;
    }
};

void indexLast(benchmark::State& state, std::vector<uint8_t> cardsPerRound) {
    const Structure structure(std::move(cardsPerRound));
    const auto cards = structure.randomHands();
    for (auto _ : state) {
        hand_index_t sum = 0;
        for (size_t hand = 0; hand < hands; ++hand)
            sum += hand_index_last(&structure.indexer, &cards[hand * structure.total]);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(hands));
}

void indexAll(benchmark::State& state, std::vector<uint8_t> cardsPerRound) {
    const Structure structure(std::move(cardsPerRound));
    const auto cards = structure.randomHands();
    for (auto _ : state) {
        hand_index_t sum = 0;
        hand_index_t indices[4];
        for (size_t hand = 0; hand < hands; ++hand)
            sum += hand_index_all(&structure.indexer, &cards[hand * structure.total], indices);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(hands));
}

// Random indices; tables are filled in index order, where branches are far easier to foretell.
void unindex(benchmark::State& state, std::vector<uint8_t> cardsPerRound, bool inOrder) {
    const Structure structure(std::move(cardsPerRound));
    const unsigned round = structure.lastRound();
    const hand_index_t size = hand_indexer_size(&structure.indexer, round);
    std::mt19937_64 random(1);
    std::vector<hand_index_t> indices(hands);
    for (size_t i = 0; i < hands; ++i)
        indices[i] = inOrder ? (size / 2 + i) % size : random() % size;
    uint8_t cards[52];
    for (auto _ : state) {
        for (hand_index_t index : indices)
            if (!hand_unindex(&structure.indexer, round, index, cards))
                std::abort();
        benchmark::DoNotOptimize(cards);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(hands));
}

void init(benchmark::State& state, std::vector<uint8_t> cardsPerRound) {
    for (auto _ : state)
        Structure structure(cardsPerRound);
}

using Rounds = std::vector<uint8_t>;

BENCHMARK_CAPTURE(indexLast, preflop, Rounds{2});
BENCHMARK_CAPTURE(indexLast, flop, Rounds{2, 3});
BENCHMARK_CAPTURE(indexLast, turn, Rounds{2, 4});
BENCHMARK_CAPTURE(indexLast, river, Rounds{2, 5});
BENCHMARK_CAPTURE(indexLast, fourRounds, Rounds{2, 3, 1, 1});
BENCHMARK_CAPTURE(indexAll, fourRounds, Rounds{2, 3, 1, 1});
BENCHMARK_CAPTURE(unindex, preflop, Rounds{2}, false);
BENCHMARK_CAPTURE(unindex, flop, Rounds{2, 3}, false);
BENCHMARK_CAPTURE(unindex, turn, Rounds{2, 4}, false);
BENCHMARK_CAPTURE(unindex, river, Rounds{2, 5}, false);
BENCHMARK_CAPTURE(unindex, riverInOrder, Rounds{2, 5}, true);
BENCHMARK_CAPTURE(unindex, fourRounds, Rounds{2, 3, 1, 1}, false);
BENCHMARK_CAPTURE(init, river, Rounds{2, 5})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(init, fourRounds, Rounds{2, 3, 1, 1})->Unit(benchmark::kMicrosecond);

} // namespace
