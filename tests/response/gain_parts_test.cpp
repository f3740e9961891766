#include "response/gain_parts.h"

#include "response/plain_response.h"

#include <cmath>

namespace tamarin::test {
namespace {

// All flops of a short deck, worked out.
struct FlopsInParts {
    explicit FlopsInParts(const std::string& text, uint64_t seed = 3, int threads = 2)
        : measured(text, seed) {
        const FlopResponse response(measured.whole(), LaneNumbers::doubles);
        flops = measured.deck.extend(measured.deck.empty(), 3);
        Work work;
        work.threads = threads;
        for (const PublicBoard& flop : flops) {
            auto found = response.on(flop, work);
            EXPECT_TRUE(found.ok());
            values.push_back(std::move(*found));
        }
    }
    ValuesOfFlop ofFlop() const {
        return [this](size_t place) -> const FlopValues& { return values[place]; };
    }
    GainParts parts() const { return gainParts(measured.whole(), flops, ofFlop()); }

    Measured measured;
    std::vector<PublicBoard> flops;
    std::vector<FlopValues> values;
};

const std::string twoShortRounds = shortGame(4, 3, "3 2", "10 10", "0 3");
const std::string threeShortRounds = shortGame(2, 4, "2 1 2", "10 10 20", "0 3 1");
const std::string fourShortRounds = shortGame(3, 3, "2 2 1 2", "10 10 20 20", "0 3 1 1");

// What a seat wins that plays best from a round on.
double valueFrom(const Measured& measured, int seat, int round) {
    const auto chooses = [&, round](int32_t node) {
        return measured.tree.nodes()[static_cast<size_t>(node)].round >= round;
    };
    return PlainResponse(measured, seat, chooses).mean();
}

void expectRounds(const std::string& text) {
    const FlopsInParts all(text);
    const GainParts parts = all.parts();
    const auto rounds = static_cast<int>(parts.rounds.size());
    ASSERT_EQ(rounds, all.measured.game->numRounds);
    for (int seat = 0; seat < 2; ++seat) {
        double after = PlainResponse(all.measured, seat, false).mean();
        for (int round = rounds - 1; round >= 0; --round) {
            const double from = valueFrom(all.measured, seat, round);
            const double part =
                parts.rounds[static_cast<size_t>(round)].seat[static_cast<size_t>(seat)];
            EXPECT_NEAR(part, from - after, 1e-9) << seat << " " << round;
            EXPECT_GT(part, 0.01) << seat << " " << round; // there is something to be compared
            after = from;
        }
    }
}

TEST(GainParts, OfTwoRoundsAreThePlainOnes) {
    expectRounds(twoShortRounds);
}

TEST(GainParts, OfThreeRoundsAreThePlainOnes) {
    expectRounds(threeShortRounds);
}

TEST(GainParts, OfFourRoundsAreThePlainOnes) {
    expectRounds(fourShortRounds);
}

bool isBelow(const CompiledTree& tree, int32_t node, int32_t above) {
    while (node != above) {
        const int32_t edge = tree.nodes()[static_cast<size_t>(node)].parentEdge;
        if (edge == CompiledTree::noEdge)
            return false;
        node = edge / numAbstractedActions;
    }
    return true;
}

// The plain gain of the hands with which a seat's best play at its first decision is each action.
std::array<double, numAbstractedActions> plainFirst(const Measured& measured, int seat,
                                                    int32_t node) {
    const PublicDeck& deck = measured.deck;
    const auto chooses = [&, node](int32_t at) { return isBelow(measured.tree, at, node); };
    const PlainResponse own(measured, seat, false);
    std::array<double, numAbstractedActions> gains{};
    for (size_t c = 0; c < deck.numHandClasses(); ++c) {
        size_t holding = 0;
        while (deck.handClassOf(holding) != c)
            ++holding;
        const auto hand = deck.cardsOf(holding);
        size_t best = numAbstractedActions;
        double highest = 0;
        for (size_t a = 0; a < gains.size(); ++a) {
            if (measured.tree.nodes()[static_cast<size_t>(node)].child[a] == CompiledTree::noChild)
                continue;
            PlainResponse response(measured, seat, chooses);
            response.force(node, a);
            const double value = response.ofHand(hand);
            if (best == numAbstractedActions || value > highest) {
                best = a;
                highest = value;
            }
        }
        gains[best] += deck.handClassSize(c) * (highest - own.ofHand(hand)) /
                       static_cast<double>(deck.holdings().size());
    }
    return gains;
}

// By the rules of the blinds seat 1 acts first: it has one first decision, seat 0 two.
TEST(GainParts, OfFirstDecisionsAreThePlainOnes) {
    const FlopsInParts all(twoShortRounds, 5);
    const GainParts parts = all.parts();
    ASSERT_EQ(parts.first.size(), 3U + 2U + 3U);
    size_t different = 0;
    for (const GainParts::First& first : parts.first) {
        const double plain = plainFirst(all.measured, first.seat, first.node)[first.action];
        EXPECT_NEAR(first.gain.mean, plain, 1e-9) << first.seat << first.node << first.action;
        EXPECT_EQ(first.gain.halfWidth, 0);
        different += plain > 0.001 ? 1 : 0;
    }
    EXPECT_GE(different, 3U);
}

// What each of the two does in a deal comes before the other could tell it apart: the best
// response's hands and the strategy's own are as many.
TEST(GainParts, SayHowManyHandsGoThere) {
    const FlopsInParts all(twoShortRounds, 5);
    const GainParts parts = all.parts();
    std::array<double, 2> hands{};
    std::array<double, 2> own{};
    for (const GainParts::First& first : parts.first) {
        hands[static_cast<size_t>(first.seat)] += first.hands;
        own[static_cast<size_t>(first.seat)] += first.ownHands;
    }
    EXPECT_NEAR(hands[1], 1, 1e-12); // the first to act always acts
    EXPECT_NEAR(own[1], 1, 1e-12);
    EXPECT_NEAR(hands[0], own[0], 1e-12);
    // Where the first to act folds, the other never acts.
    double folds = 0;
    for (const GainParts::First& first : parts.first)
        if (first.seat == 1 && first.action == actionFold)
            folds = first.ownHands;
    EXPECT_GT(folds, 0.05);
    EXPECT_NEAR(hands[0], 1 - folds, 1e-12);
    EXPECT_NE(parts.first[0].hands, parts.first[0].ownHands);
}

TEST(GainParts, OfHandsAreThePlainOnes) {
    const FlopsInParts all(threeShortRounds);
    const GainParts parts = all.parts();
    ASSERT_EQ(parts.hands.size(), all.measured.deck.numHandClasses());
    double dealt = 0;
    for (const GainParts::Hand& hand : parts.hands)
        dealt += hand.dealt;
    EXPECT_NEAR(dealt, 1, 1e-12);
    for (const size_t holding : {size_t{0}, size_t{17}, size_t{25}})
        for (int seat = 0; seat < 2; ++seat) {
            const auto hand = all.measured.deck.cardsOf(holding);
            EXPECT_NEAR(parts.hands[all.measured.deck.handClassOf(holding)]
                            .gain.seat[static_cast<size_t>(seat)],
                        PlainResponse(all.measured, seat, true).ofHand(hand) -
                            PlainResponse(all.measured, seat, false).ofHand(hand),
                        1e-9);
        }
}

// Each of the three ways to look at it adds up to the same.
void expectSums(const GainParts& parts, double whole) {
    EXPECT_NEAR(parts.whole.both.mean, whole, 1e-9);
    EXPECT_NEAR(parts.whole.seat[0] + parts.whole.seat[1], whole, 1e-9);
    double rounds = 0;
    for (const GainParts::Part& part : parts.rounds)
        rounds += part.both.mean;
    EXPECT_NEAR(rounds, whole, 1e-9);
    double hands = 0;
    for (const GainParts::Hand& hand : parts.hands)
        hands += hand.dealt * hand.gain.both.mean;
    EXPECT_NEAR(hands, whole, 1e-9);
    std::array<double, 2> first{};
    for (const GainParts::First& each : parts.first)
        first[static_cast<size_t>(each.seat)] += each.gain.mean;
    EXPECT_NEAR(first[0], parts.whole.seat[0], 1e-9);
    EXPECT_NEAR(first[1], parts.whole.seat[1], 1e-9);
}

TEST(GainParts, AddUpToTheWhole) {
    const FlopsInParts all(fourShortRounds, 8);
    const RealValue value = realValue(all.measured.whole(), all.flops, all.ofFlop());
    expectSums(all.parts(), value.gains());
    EXPECT_NEAR(all.parts().whole.seat[0], value.best[0] - value.value[0], 1e-12);
    EXPECT_GT(std::abs(all.parts().whole.seat[0] - all.parts().whole.seat[1]), 0.1);
}

TEST(GainParts, OfASampleAddUpToTheCrossedFigure) {
    const FlopsInParts all(threeShortRounds, 8);
    const MeasuredGame game = all.measured.whole();
    const FlopSample sample = drawFlops(all.flops, 12, 4);
    const GainParts parts = gainParts(game, sample, all.ofFlop());
    const SampledGains gains = sampledGains(game, sample, all.ofFlop());
    expectSums(parts, gains.crossed.mean);
    EXPECT_NEAR(parts.whole.both.halfWidth, gains.crossed.halfWidth, 1e-9);
    double afterFlop = 0;
    for (size_t round = 1; round < parts.rounds.size(); ++round)
        afterFlop += parts.rounds[round].both.mean;
    EXPECT_NEAR(afterFlop, gains.afterFlop.mean, 1e-9);
    EXPECT_GT(gains.crossed.halfWidth, 0.01);
}

// Means over many samples: of the later rounds they are the whole's, and intervals hold it.
TEST(GainParts, SamplesEstimateTheRounds) {
    const FlopsInParts all(shortGame(4, 4, "2 2 1", "10 10 20", "0 3 1"), 12);
    const GainParts whole = all.parts();
    constexpr int samples = 200;
    std::array<RunningMoments, 3> means;
    std::array<int, 3> held{};
    for (uint64_t seed = 0; seed < samples; ++seed) {
        const auto parts =
            gainParts(all.measured.whole(), drawFlops(all.flops, 16, seed), all.ofFlop());
        for (size_t round = 0; round < 3; ++round) {
            const Interval& part = parts.rounds[round].both;
            means[round].add(part.mean);
            held[round] +=
                std::abs(part.mean - whole.rounds[round].both.mean) <= part.halfWidth ? 1 : 0;
        }
    }
    for (size_t round = 1; round < 3; ++round) {
        const Interval mean = interval95(means[round]);
        EXPECT_NEAR(mean.mean, whole.rounds[round].both.mean, 1.6 * mean.halfWidth) << round;
        EXPECT_GT(held[round], samples * 0.9) << round;
        EXPECT_LT(held[round], samples) << round; // one that always holds it is too wide
    }
    const Interval first = interval95(means[0]);
    EXPECT_LT(first.mean, whole.rounds[0].both.mean + first.halfWidth); // no better a choice
}

// Finished flops of the first version say nothing of the rounds.
TEST(GainParts, WithoutLaterValuesHaveNoRounds) {
    FlopsInParts all(threeShortRounds);
    const FlopSample sample = drawFlops(all.flops, 12, 4);
    const size_t lost = sample.pairs[2][1];
    all.values[lost].later = {};
    EXPECT_TRUE(all.parts().rounds.empty());
    EXPECT_TRUE(gainParts(all.measured.whole(), sample, all.ofFlop()).rounds.empty());
    EXPECT_GT(all.parts().whole.both.mean, 1);
}

TEST(GainParts, AnyNumberOfThreadsGivesTheSame) {
    const GainParts one = FlopsInParts(fourShortRounds, 8, 1).parts();
    const GainParts more = FlopsInParts(fourShortRounds, 8, 3).parts();
    for (size_t round = 0; round < 4; ++round)
        EXPECT_EQ(one.rounds[round].seat, more.rounds[round].seat);
    for (size_t i = 0; i < one.first.size(); ++i)
        EXPECT_EQ(one.first[i].gain.mean, more.first[i].gain.mean);
    for (size_t c = 0; c < one.hands.size(); ++c)
        EXPECT_EQ(one.hands[c].gain.seat, more.hands[c].gain.seat);
}

} // namespace
} // namespace tamarin::test
