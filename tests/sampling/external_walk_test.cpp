#include "sampling/external_walk.h"

#include "sampling/small_training.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

// Regrets that differ everywhere, some of them negative, so that strategies are mixed, pure and
// uniform.
void fillRegrets(test::SmallTraining& small) {
    SplitMix random(11);
    for (int32_t& regret : small.trainer.sets().allRegrets())
        regret = static_cast<int32_t>(random.below(3000)) - 1000;
}

test::SmallTraining::Shares currentOf(const test::SmallTraining& small) {
    return [&small](int32_t number, size_t bucket, double* shares) {
        const MenuTree::Node& node = small.tree.node(number);
        const int32_t* const regrets =
            small.trainer.sets().regrets() + small.trainer.sets().placeOf(node, bucket);
        double total = 0;
        for (size_t e = 0; e < node.numEdges; ++e)
            total += std::max(regrets[e], 0);
        for (size_t e = 0; e < node.numEdges; ++e)
            shares[e] = total > 0 ? std::max(regrets[e], 0) / total : 1.0 / node.numEdges;
    };
}

// What a walk adds on average, to regrets and to strategy sums, by looking at every deal: reach is
// that of all but the traverser.
struct Expected {
    const test::SmallTraining& small;
    test::SmallTraining::Shares strategy = currentOf(small);
    size_t traverser = 0;
    std::vector<double> regrets = std::vector<double>(small.trainer.sets().allRegrets().size());
    std::vector<double> sums = regrets;

    void visit(int32_t child, const std::vector<double>& reach) {
        if (child < 0)
            return;
        const MenuTree::Node& node = small.tree.node(child);
        const bool own = node.seat == traverser;
        std::vector<std::vector<double>> values;
        for (size_t e = 0; e < node.numEdges; ++e) {
            std::vector<double> below = reach;
            for (size_t d = 0; d < reach.size() && !own; ++d)
                below[d] *= small.share(strategy, child, e, d);
            const int32_t next = small.tree.edges(node)[e].child;
            visit(next, below);
            values.push_back(small.values(next, traverser, strategy, below, false));
        }
        for (size_t d = 0; d < reach.size(); ++d) {
            const size_t place = small.trainer.sets().placeOf(node, small.bucketOf(node, d));
            double mean = 0;
            for (size_t e = 0; e < node.numEdges; ++e)
                mean += small.share(strategy, child, e, d) * values[e][d];
            for (size_t e = 0; e < node.numEdges; ++e) {
                if (own)
                    regrets[place + e] += (values[e][d] - mean) * small.trainer.units();
                else
                    sums[place + e] +=
                        reach[d] * small.share(strategy, child, e, d) * ExternalWalk::wholeStrategy;
            }
        }
    }
};

struct Moments {
    double sum = 0;
    double squares = 0;
    void add(double x) {
        sum += x;
        squares += x * x;
    }
};

// The mean of many walks, within five deviations and the rounding of units and parts.
void compareWithExpected(const std::string& game, const std::string& menu, double leastRegret) {
    test::SmallTraining small(game, menu, {});
    fillRegrets(small);
    MenuSets& sets = small.trainer.sets();
    const DealSampler sampler(*small.game, small.buckets);
    Payoffs payoffs(*small.game, small.tree.settlements());
    ExternalWalk walk(sets);
    WalkLog log(1);
    constexpr size_t walks = 100'000;
    for (size_t seat = 0; seat < small.game->numPlayers; ++seat) {
        Expected expected{small};
        expected.traverser = seat;
        expected.visit(0, small.evenReach());
        std::vector<Moments> regrets(sets.allRegrets().size());
        std::vector<Moments> sums(regrets.size());
        State state{};
        std::vector<int32_t> values(small.tree.settlements().size());
        for (size_t i = 0; i < walks; ++i) {
            SampledDeal deal;
            sampler.draw(3, i, state);
            sampler.lookUp(state, deal);
            const double* const table = payoffs.table(payoffs.outcomeOf(state));
            for (size_t row = 0; row < values.size(); ++row)
                values[row] = static_cast<int32_t>(
                    std::lround(table[row * payoffs.stride() + seat] * small.trainer.units()));
            log.clear();
            walk.run(deal, seat, values.data(), mixBits(i + 77), {}, log);
            log.forEach(0, [&](const WalkLog::Entry& entry) {
                auto& moments = entry.kind == WalkLog::Kind::sums ? sums : regrets;
                for (size_t e = 0; e < entry.count; ++e)
                    moments[entry.place + e].add(entry.numbers[e]);
            });
        }
        double largest = 0;
        for (size_t i = 0; i < regrets.size(); ++i) {
            for (const auto& [moments, exact] : {std::pair(regrets[i], expected.regrets[i]),
                                                 std::pair(sums[i], expected.sums[i])}) {
                const double mean = moments.sum / walks;
                const double deviation = std::sqrt((moments.squares / walks - mean * mean) / walks);
                EXPECT_NEAR(mean, exact, 5 * deviation + 1.5) << "seat " << seat << " place " << i;
            }
            largest = std::max(largest, std::abs(expected.regrets[i]));
        }
        EXPECT_GT(largest, leastRegret);
    }
}

TEST(ExternalWalk, RegretsAreCounterfactualOnAverage) {
    compareWithExpected(test::smallNoLimit, "bets = 1 A", 2000);
    compareWithExpected(test::leduc, "", 1000);
    compareWithExpected(test::threePlayerKuhn, "", 500);
}

TEST(ExternalWalk, ReturnsWhatTheTraverserWins) {
    test::SmallTraining small(test::smallNoLimit, "bets = 1 A", {});
    fillRegrets(small);
    const DealSampler sampler(*small.game, small.buckets);
    Payoffs payoffs(*small.game, small.tree.settlements());
    ExternalWalk walk(small.trainer.sets());
    WalkLog log(1);
    State state{};
    SampledDeal deal;
    sampler.draw(1, 5, state);
    sampler.lookUp(state, deal);
    const double* const table = payoffs.table(payoffs.outcomeOf(state));
    std::vector<int32_t> values;
    for (size_t row = 0; row < small.tree.settlements().size(); ++row)
        values.push_back(static_cast<int32_t>(table[row * payoffs.stride()] * 4096));
    double sum = 0;
    constexpr int walks = 40'000;
    for (uint64_t i = 0; i < walks; ++i) {
        log.clear();
        sum += walk.run(deal, 0, values.data(), mixBits(i + 1), {}, log);
    }
    size_t number = 0; // of this deal among all
    while (!std::equal(std::begin(state.boardCards), std::begin(state.boardCards) + 1,
                       std::begin(small.deals[number].boardCards)) ||
           state.holeCards[0][0] != small.deals[number].holeCards[0][0] ||
           state.holeCards[1][0] != small.deals[number].holeCards[1][0])
        ++number;
    const auto all = small.values(0, 0, currentOf(small), small.evenReach(), false);
    const double exact = all[number] * static_cast<double>(small.deals.size());
    EXPECT_NEAR(sum / walks / 4096, exact, 0.1);
    EXPECT_GT(std::abs(exact), 0.2);
}

TEST(ExternalWalk, PrunedActionsAreLeftOut) {
    test::SmallTraining small(test::smallNoLimit, "bets = 1 A", {});
    const MenuTree::Node& root = small.tree.node(0);
    ASSERT_EQ(root.numEdges, 4); // fold, call, raise, all-in
    MenuSets& sets = small.trainer.sets();
    SampledDeal deal;
    for (size_t bucket = 0; bucket < 4; ++bucket) {
        sets.regrets()[sets.placeOf(root, bucket) + 0] = -500; // ends the hand: is looked at
        sets.regrets()[sets.placeOf(root, bucket) + 1] = -500;
        sets.regrets()[sets.placeOf(root, bucket) + 2] = -399;
    }
    ExternalWalk walk(sets);
    const auto logged = [&](ExternalWalk::Pruning pruning, size_t& entries) {
        WalkLog log(1);
        std::vector<int32_t> values(small.tree.settlements().size(), 100);
        values[0] = -100; // folded
        walk.run(deal, root.seat, values.data(), 5, pruning, log);
        entries = 0;
        std::vector<int32_t> ofRoot;
        log.forEach(0, [&](const WalkLog::Entry& entry) {
            ++entries;
            if (entry.kind == WalkLog::Kind::regrets &&
                entry.place == sets.placeOf(root, deal.buckets[0][root.seat]))
                ofRoot.assign(entry.numbers, entry.numbers + entry.count);
        });
        return ofRoot;
    };
    size_t all = 0;
    size_t fewer = 0;
    // Nothing is left out where no regret is positive: the strategy is uniform.
    EXPECT_EQ(logged({}, all), (std::vector<int32_t>{-150, 50, 50, 50}));
    EXPECT_EQ(logged({true, -400}, fewer), (std::vector<int32_t>{-150, 50, 50, 50}));
    EXPECT_EQ(fewer, all);
    for (size_t bucket = 0; bucket < 4; ++bucket)
        sets.regrets()[sets.placeOf(root, bucket) + 3] = 1;
    EXPECT_EQ(logged({}, all), (std::vector<int32_t>{-200, 0, 0, 0}));
    EXPECT_EQ(logged({true, -400}, fewer), (std::vector<int32_t>{-200, 0, 0, 0}));
    EXPECT_LT(fewer, all);
}

TEST(WalkLog, KeepsPlacesOfMoreThan32Bits) {
    WalkLog log(3);
    const uint64_t place = (uint64_t{5} << 32U) + 0xfedcba98U;
    for (size_t node = 0; node < 3; ++node) {
        int32_t* const numbers = log.add(WalkLog::Kind::sums, node * 64, place + node, 2);
        numbers[0] = -7;
        numbers[1] = static_cast<int32_t>(node);
    }
    for (size_t part = 0; part < 3; ++part) {
        int entries = 0;
        log.forEach(part, [&](const WalkLog::Entry& entry) {
            ++entries;
            EXPECT_EQ(entry.kind, WalkLog::Kind::sums);
            EXPECT_EQ(entry.place, place + part);
            EXPECT_EQ(entry.count, 2U);
            EXPECT_EQ(entry.numbers[0], -7);
            EXPECT_EQ(entry.numbers[1], static_cast<int32_t>(part));
        });
        EXPECT_EQ(entries, 1);
    }
}

} // namespace
} // namespace tamarin
