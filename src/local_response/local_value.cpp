#include "local_response/local_value.h"

#include "support/split_mix.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace tamarin {

LocalDeal drawLocalDeal(const PublicDeck& deck, const Game& game, uint64_t seed, uint64_t number) {
    HandRandom random(seed, number);
    std::vector<uint8_t> left = deck.cards();
    const auto draw = [&] {
        const auto at = static_cast<size_t>(random.next() * static_cast<double>(left.size()));
        const uint8_t card = left[at];
        left[at] = left.back();
        left.pop_back();
        return card;
    };
    LocalDeal deal{};
    for (uint8_t& card : deal.hole)
        card = draw();
    for (size_t i = 0; i < sumBoardCards(&game, game.numRounds - 1); ++i)
        deal.board[i] = draw();
    return deal;
}

// In batches: between them progress is told and a stop seen, and the deals of one are added up in
// their order, whichever thread played them.
LocalValue sampleLocalValue(const LocalGame& game, uint64_t hands, uint64_t seed,
                            const Work& work) {
    constexpr uint64_t batch = 64;
    const int threads = work.threadCount();
    std::vector<std::unique_ptr<LocalPlay>> plays(static_cast<size_t>(threads));
    std::vector<std::array<double, 2>> won(batch);
    std::array<RunningMoments, 2> seats;
    RunningMoments mean;
    LocalValue value;
    while (value.hands < hands && !work.shouldStop()) {
        const uint64_t count = std::min(batch, hands - value.hands);
        ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 1) num_threads(threads)
        for (uint64_t i = 0; i < count; ++i)
            errors.run([&] {
                auto& play = plays[static_cast<size_t>(omp_get_thread_num())];
                if (!play)
                    play = std::make_unique<LocalPlay>(game);
                won[i] = play->values(drawLocalDeal(game.deck, game.game, seed, value.hands + i));
            });
        errors.rethrow();
        for (uint64_t i = 0; i < count; ++i) {
            for (size_t seat = 0; seat < 2; ++seat)
                seats[seat].add(won[i][seat]);
            mean.add((won[i][0] + won[i][1]) / 2);
        }
        value.hands += count;
        work.report(value.hands, hands);
    }
    for (size_t seat = 0; seat < 2; ++seat)
        value.seats[seat] = interval95(seats[seat]);
    value.mean = interval95(mean);
    return value;
}

} // namespace tamarin
