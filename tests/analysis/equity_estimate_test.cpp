#include "analysis/equity_estimate.h"

#include "analysis/all_deals.h"
#include "analysis/luck_free.h"

namespace tamarin::test {
namespace {

TEST(EquityEstimate, LeavesTheMeanAndTakesLuckAway) {
    const Table table(shortGame(2, 4, "1 1", "10 20", "0 2"));
    const BoardMargins margins(*table.game, table.deck);
    for (int seat = 0; seat < 2; ++seat) {
        const HandStrategy& own = *table.strategies[static_cast<size_t>(seat)];
        const EquityEstimate estimate(table.tree, own, margins);
        const LuckFree luckFree(*table.game, table.tree, table.deck, own, estimate);
        double plain = 0;
        double free = 0;
        double plainSquares = 0;
        double freeSquares = 0;
        table.forEachHand([&](const PlayedHand& hand, double probability, double payoff) {
            const auto result = luckFree.of(hand, seat);
            ASSERT_TRUE(result.ok());
            const double won = seat == 0 ? payoff : -payoff;
            plain += probability * won;
            free += probability * *result;
            plainSquares += probability * won * won;
            freeSquares += probability * *result * *result;
        });
        EXPECT_NEAR(free, plain, 1e-9);
        // What is left of the variance, by seat.
        const double left = (freeSquares - free * free) / (plainSquares - plain * plain);
        EXPECT_NEAR(left, seat == 0 ? 0.309365898971 : 0.321733987269, 1e-9);
    }
}

// Against a bet on the river the estimate knows the payoffs' two sides: a fold and the stake.
TEST(EquityEstimate, IsLevelAndSlopeOfTheMeanPlay) {
    const Table table(shortGame(2, 3, "1 1", "10 20", "0 1"));
    const BoardMargins margins(*table.game, table.deck);
    const SimpleStrategy uniform(table.tree, SimplePlay::uniform);
    const EquityEstimate estimate(table.tree, uniform, margins);
    // The last round after two calls and a bet: the second seat folds 10, or calls for 30.
    int32_t node = 0;
    for (const int action : {actionCall, actionCall, actionRaise})
        node = table.tree.nodes()[static_cast<size_t>(node)].child[action];
    const int second = table.tree.nodes()[static_cast<size_t>(node)].player;
    const ValueEstimate::View view{second, {}, {}};
    const std::vector<double> row{0.5, -1, 0};
    EXPECT_DOUBLE_EQ(estimate.at(view, row, node, 0), 0.5 * -10 + 0.5 * 30 * 0.5);
    EXPECT_DOUBLE_EQ(estimate.at(view, row, node, 1), 0.5 * -10 - 0.5 * 30);
    const ValueEstimate::View first{1 - second, {}, {}};
    EXPECT_DOUBLE_EQ(estimate.at(first, row, node, 0), 0.5 * 10 + 0.5 * 30 * 0.5);
    EXPECT_EQ(estimate.meanOfDeals(0), -estimate.meanOfDeals(1));
}

} // namespace
} // namespace tamarin::test
