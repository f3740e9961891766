#include "response/preflop_response.h"

#include "response/board_hands.h"
#include "response/plain_response.h"
#include "response/simple_play.h"

namespace tamarin::test {
namespace {

FlopSums sumsOf(const Measured& measured, LaneNumbers numbers = LaneNumbers::doubles) {
    const MeasuredGame game = measured.whole();
    const FlopResponse response(game, numbers);
    FlopSums sums(game);
    Work work;
    work.threads = 2;
    for (const PublicBoard& flop :
         measured.deck.extend(measured.deck.empty(), measured.game->numBoardCards[1])) {
        const auto values = response.on(flop, work);
        EXPECT_TRUE(values.ok());
        sums.add(*values, flop.weight);
    }
    return sums;
}

void expectPlain(const Measured& measured) {
    const FlopSums sums = sumsOf(measured);
    for (int seat = 0; seat < 2; ++seat) {
        const PreflopResponse before(measured.whole(), seat);
        EXPECT_NEAR(before.mean(before.best(sums.best(seat))),
                    PlainResponse(measured, seat, true).mean(), 1e-9)
            << seat;
        EXPECT_NEAR(before.mean(before.own(sums.value(seat))),
                    PlainResponse(measured, seat, false).mean(), 1e-9)
            << seat;
    }
}

TEST(PreflopResponse, FourRoundsAreAsThePlainRecursionHasThem) {
    expectPlain(Measured(shortGame(3, 3, "2 2 1 2", "10 10 20 20", "0 3 1 1")));
}

TEST(PreflopResponse, ThreeRoundsOfTwoSuitsAre) {
    expectPlain(Measured(shortGame(2, 5, "2 1 2", "10 10 20", "0 3 1")));
}

TEST(PreflopResponse, TwoRoundsOfFourSuitsAre) {
    expectPlain(Measured(shortGame(4, 3, "3 4", "10 10", "0 3"), 8));
}

// Of more classes than are added up beforehand: nearly every hand is one of its own.
TEST(PreflopResponse, ManyClassesAre) {
    const Measured measured(shortGame(2, 6, "1 2", "10 10", "0 3"), 5, 500);
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    EXPECT_GT(handsOnBoard(measured.deck, *measured.strategy, 1, flops[20], true).present[0].size(),
              24U);
    expectPlain(measured);
}

// Who always folds loses its blind, 10 chips or 5, and 15 for both seats: exact in any deck.
TEST(PreflopResponse, WhoAlwaysFoldsLosesTheBlinds) {
    Measured measured(shortGame(4, 3, "3 4", "10 10", "0 3"));
    measured.play(SimplePlay::fold);
    const FlopSums sums = sumsOf(measured, LaneNumbers::floats);
    for (int seat = 0; seat < 2; ++seat) {
        const PreflopResponse before(measured.whole(), seat);
        EXPECT_DOUBLE_EQ(before.mean(before.best(sums.best(seat))), seat == 0 ? 5 : 10);
    }
    const PreflopResponse before(measured.whole(), 0);
    EXPECT_DOUBLE_EQ(before.mean(before.own(sums.value(0))), 5); // the small blind acts first
}

// What other flops would have chosen wins no more than the best choice, and no less than the worst.
TEST(PreflopResponse, AChoiceOfOtherFlopsIsNoBetter) {
    const Measured measured(shortGame(4, 3, "3 4", "10 10", "0 3"), 4);
    const MeasuredGame game = measured.whole();
    const FlopResponse response(game);
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    std::array<FlopSums, 2> halves{FlopSums(game), FlopSums(game)};
    for (size_t f = 0; f < flops.size(); ++f) {
        const auto values = response.on(flops[f], Work{});
        ASSERT_TRUE(values.ok());
        halves[f % 2].add(*values, flops[f].weight);
    }
    EXPECT_EQ(halves[0].flops() + halves[1].flops(), 220);
    for (int seat = 0; seat < 2; ++seat) {
        const PreflopResponse before(game, seat);
        const auto mean = [&](size_t chooser, size_t value) {
            return before.mean(
                before.chosenBy(halves[chooser].best(seat), halves[value].best(seat)));
        };
        EXPECT_LE(mean(0, 1), mean(1, 1));
        EXPECT_LE(mean(1, 0), mean(0, 0));
        EXPECT_EQ(mean(1, 1), before.mean(before.best(halves[1].best(seat))));
        EXPECT_GT(mean(0, 1), before.mean(before.own(halves[1].best(seat))));
        LineValues wrong = halves[1].best(seat);
        for (double& value : wrong)
            value = -value;
        EXPECT_LT(before.mean(before.chosenBy(wrong, halves[1].best(seat))), mean(0, 1) - 0.1);
    }
}

} // namespace
} // namespace tamarin::test
