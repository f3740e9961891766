#include "response/real_value.h"

#include "response/plain_response.h"

#include <cmath>

namespace tamarin::test {
namespace {

// All flops of a short deck, worked out.
struct AllFlops {
    explicit AllFlops(const std::string& text, uint64_t seed = 3) : measured(text, seed) {
        const MeasuredGame game = measured.whole();
        const FlopResponse response(game, LaneNumbers::doubles);
        flops = measured.deck.extend(measured.deck.empty(), 3);
        for (const PublicBoard& flop : flops) {
            auto found = response.on(flop, Work{});
            EXPECT_TRUE(found.ok());
            values.push_back(std::move(*found));
        }
    }
    ValuesOfFlop ofFlop() const {
        return [this](size_t place) -> const FlopValues& { return values[place]; };
    }
    // The gains with the own play before the flop, over all flops.
    double afterFlop() const {
        double sum = 0;
        double weight = 0;
        for (size_t place = 0; place < flops.size(); ++place) {
            sum += flops[place].weight * gainsAfterFlop(measured.whole(), values[place]);
            weight += flops[place].weight;
        }
        return sum / weight;
    }

    Measured measured;
    std::vector<PublicBoard> flops;
    std::vector<FlopValues> values;
};

TEST(RealValue, OfAllFlopsIsThePlainOne) {
    const AllFlops all(shortGame(4, 3, "3 2", "10 10", "0 3"));
    const RealValue value = realValue(all.measured.whole(), all.flops, all.ofFlop());
    double gains = 0;
    for (int seat = 0; seat < 2; ++seat) {
        const auto at = static_cast<size_t>(seat);
        EXPECT_NEAR(value.best[at], PlainResponse(all.measured, seat, true).mean(), 1e-9);
        EXPECT_NEAR(value.value[at], PlainResponse(all.measured, seat, false).mean(), 1e-9);
        gains += value.best[at] - value.value[at];
        for (const size_t holding : {size_t{0}, size_t{17}, size_t{40}}) {
            const auto hand = all.measured.deck.cardsOf(holding);
            EXPECT_NEAR(value.gainOfClass[at][all.measured.deck.handClassOf(holding)],
                        PlainResponse(all.measured, seat, true).ofHand(hand) -
                            PlainResponse(all.measured, seat, false).ofHand(hand),
                        1e-9);
        }
    }
    EXPECT_NEAR(value.value[0] + value.value[1], 0, 1e-9); // nobody takes a share
    EXPECT_NEAR(value.gains(), gains, 1e-12);
    EXPECT_LT(all.afterFlop(), gains); // the choice before the flop is worth something
    EXPECT_GT(all.afterFlop(), 0);
}

// Means over many samples are the whole's, and 95 intervals in 100 hold it.
TEST(RealValue, SamplesEstimateTheWhole) {
    const AllFlops all(shortGame(4, 4, "2 2", "10 10", "0 3"), 12);
    const MeasuredGame game = all.measured.whole();
    const double after = all.afterFlop();
    const double whole = realValue(game, all.flops, all.ofFlop()).gains();
    RunningMoments means;
    double crossed = 0;
    double biased = 0;
    int held = 0;
    constexpr int samples = 400;
    for (uint64_t seed = 0; seed < samples; ++seed) {
        const auto gains = sampledGains(game, drawFlops(all.flops, 16, seed), all.ofFlop());
        means.add(gains.afterFlop.mean);
        held += std::abs(gains.afterFlop.mean - after) <= gains.afterFlop.halfWidth ? 1 : 0;
        crossed += gains.crossed.mean / samples;
        biased += gains.biased.mean / samples;
        EXPECT_LE(gains.crossed.mean, gains.biased.mean + 1e-9);
        EXPECT_LE(gains.afterFlop.mean, gains.biased.mean + 1e-9);
    }
    const Interval mean = interval95(means);
    EXPECT_NEAR(mean.mean, after, 1.6 * mean.halfWidth);
    EXPECT_GT(held, samples * 0.92);
    EXPECT_LT(held, samples); // an interval that always holds it is too wide
    EXPECT_LE(crossed, whole + 0.02);
    EXPECT_GE(biased, whole - 0.02);
}

} // namespace
} // namespace tamarin::test
