#include "blueprint/ending_sweep.h"

#include "blueprint/short_game.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

// Reaches, factors and chips that differ by hand, place and lane.
struct Ending {
    Ending()
        : training(test::shortGame(4, 5, "1 1", "10 20", "0 3"), {4, 6}),
          board(training.dealer.prepare(training.dealer.draw(2, 3))), size(board.hands.size()),
          places(board.rounds[1].present.size()), start(size), factor(places), own(places),
          sums(places), value(size) {
        SplitMix random(11);
        const auto fill = [&](std::vector<FloatRow>& rows) {
            for (FloatRow& row : rows)
                for (size_t lane = 0; lane < lanesInBlock; ++lane)
                    row.lanes[lane] = static_cast<float>(random.below(1000)) / 1000;
        };
        for (auto* rows : {&start, &factor, &own, &sums, &value})
            fill(*rows);
        sumsBefore = sums;
        valueBefore = value;
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            chips[lane] = static_cast<float>(lane) - 2;
    }
    EndingReach reach(bool withFactor) const {
        return {start.data(), withFactor ? factor.data() : nullptr, board.rounds[1].places.data(),
                places};
    }
    EndingGain gain(bool withFactor) {
        return {sums.data(), value.data(), withFactor ? own.data() : nullptr, chips};
    }

    // rank: of a hand among those of the board, or the same for all where somebody folds.
    void expectAdded(bool withFactor, bool fold) const {
        std::vector<size_t> rank(size);
        for (size_t g = 0, i = 0; g < board.groupEnds.size(); ++g)
            for (; i < board.groupEnds[g]; ++i)
                rank[i] = g;
        std::vector<std::array<double, lanesInBlock>> wanted(places);
        for (size_t i = 0; i < size; ++i) {
            const size_t place = board.rounds[1].places[i];
            for (size_t lane = 0; lane < lanesInBlock; ++lane) {
                double won = 0;
                for (size_t j = 0; j < size; ++j) {
                    const auto& a = board.hands[i];
                    const auto& b = board.hands[j];
                    if (a.low == b.low || a.low == b.high || a.high == b.low || a.high == b.high)
                        continue;
                    const double met =
                        start[j].lanes[lane] *
                        (withFactor ? factor[board.rounds[1].places[j]].lanes[lane] : 1.0F);
                    won += fold ? met : rank[i] == rank[j] ? 0 : rank[i] > rank[j] ? met : -met;
                }
                won *= chips[lane];
                wanted[place][lane] += won;
                EXPECT_NEAR(value[i].lanes[lane],
                            valueBefore[i].lanes[lane] +
                                won * (withFactor ? own[place].lanes[lane] : 1.0F),
                            2e-4);
            }
        }
        for (size_t place = 0; place < places; ++place)
            for (size_t lane = 0; lane < lanesInBlock; ++lane)
                EXPECT_NEAR(sums[place].lanes[lane],
                            sumsBefore[place].lanes[lane] + wanted[place][lane], 2e-3);
    }

    test::ShortTraining training;
    DealtBoard board;
    size_t size;
    size_t places;
    std::vector<FloatRow> start, factor, own, sums, value, sumsBefore, valueBefore;
    FloatRow::Lanes chips{};
};

TEST(EndingSweep, FoldsAsPairByPair) {
    for (const bool withFactor : {false, true}) {
        Ending ending;
        EndingSweep sweep(ending.size);
        sweep.fold(ending.board, ending.reach(withFactor), ending.gain(withFactor));
        ending.expectAdded(withFactor, true);
    }
}

TEST(EndingSweep, ShowdownsAsPairByPair) {
    for (const bool withFactor : {false, true}) {
        Ending ending;
        EndingSweep sweep(ending.size);
        sweep.showdown(ending.board, ending.reach(withFactor), ending.gain(withFactor));
        ending.expectAdded(withFactor, false);
    }
}

// As at a fold and a call behind the same bet; and sums that are not forgotten stay.
TEST(EndingSweep, SumsAreKeptForTheSameReach) {
    Ending folded;
    Ending shown;
    EndingSweep sweep(folded.size);
    sweep.fold(folded.board, folded.reach(true), folded.gain(true));
    sweep.showdown(folded.board, folded.reach(true), shown.gain(true));
    folded.expectAdded(true, true);
    shown.expectAdded(true, false);
    Ending other;
    std::swap(folded.start[0], folded.start[1]);
    other.start = folded.start;
    sweep.forget();
    sweep.showdown(folded.board, folded.reach(true), other.gain(true));
    other.expectAdded(true, false);
}

TEST(EndingSweep, NothingIsAddedWhereNoHandComes) {
    Ending ending;
    EndingSweep sweep(ending.size);
    for (FloatRow& row : ending.factor)
        row = {};
    sweep.showdown(ending.board, ending.reach(true), ending.gain(true));
    sweep.fold(ending.board, ending.reach(true), ending.gain(true));
    for (size_t i = 0; i < ending.size; ++i)
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            EXPECT_EQ(ending.value[i].lanes[lane], ending.valueBefore[i].lanes[lane]);
}

} // namespace
} // namespace tamarin
