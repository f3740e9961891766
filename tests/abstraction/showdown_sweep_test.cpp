#include "abstraction/showdown_sweep.h"

#include "abstraction/random_cards.h"
#include "eval/hand_evaluator.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Row = WeightRow<int32_t, 2>;

struct Sums {
    Row beaten;
    Row notBetter;
    Row all;
};

std::array<int32_t, 2> lanesOf(const Row& row) {
    return {row.lane[0], row.lane[1]};
}

// Weights that tell every holding and both lanes apart.
std::vector<Row> unequalWeights(size_t holdings) {
    std::vector<Row> weights(holdings);
    for (size_t h = 0; h < holdings; ++h)
        weights[h].lane =
            Row::Lanes{static_cast<int32_t>(h * h % 1009), static_cast<int32_t>(3 * h % 101)};
    return weights;
}

std::vector<Sums> sweep(const std::vector<uint16_t>& values, size_t cardsLeft,
                        const std::vector<Row>& weights) {
    std::vector<Sums> sums(values.size());
    sweepShowdowns(HoldingOrder(values.data(), cardsLeft), weights.data(),
                   [&](size_t number, const Row& beaten, const Row& notBetter, const Row& all) {
                       sums[number] = {beaten, notBetter, all};
                   });
    return sums;
}

// Every pair of holdings without a common card.
std::vector<Sums> plainSums(const std::vector<uint16_t>& values, size_t cardsLeft,
                            const std::vector<Row>& weights) {
    std::vector<Sums> sums(values.size());
    const auto forEachHolding = [&](const auto& visit) {
        for (size_t high = 1; high < cardsLeft; ++high)
            for (size_t low = 0; low < high; ++low)
                visit(low, high, holdingNumber(low, high));
    };
    forEachHolding([&](size_t a, size_t b, size_t own) {
        forEachHolding([&](size_t c, size_t d, size_t other) {
            if (c == a || c == b || d == a || d == b)
                return;
            sums[own].all.add(weights[other]);
            if (values[other] <= values[own])
                sums[own].notBetter.add(weights[other]);
            if (values[other] < values[own])
                sums[own].beaten.add(weights[other]);
        });
    });
    return sums;
}

void expectPlain(const std::vector<uint16_t>& values, size_t cardsLeft) {
    const std::vector<Row> weights = unequalWeights(values.size());
    const std::vector<Sums> fast = sweep(values, cardsLeft, weights);
    const std::vector<Sums> plain = plainSums(values, cardsLeft, weights);
    for (size_t h = 0; h < values.size(); ++h) {
        EXPECT_EQ(lanesOf(fast[h].beaten), lanesOf(plain[h].beaten)) << h;
        EXPECT_EQ(lanesOf(fast[h].notBetter), lanesOf(plain[h].notBetter)) << h;
        EXPECT_EQ(lanesOf(fast[h].all), lanesOf(plain[h].all)) << h;
    }
}

TEST(ShowdownSweep, SumsAsThePlainWayOnRiverBoards) {
    std::mt19937 random(5);
    for (int i = 0; i < 4; ++i) {
        const std::vector<uint8_t> board = randomCards(random, 5);
        std::vector<uint16_t> values(numHoldings(47));
        HandEvaluator::shared().rankHoldings(board, values.data());
        expectPlain(values, 47);
    }
}

TEST(ShowdownSweep, TakesAnyValuesForTheWholeDeck) {
    std::mt19937 random(6);
    std::vector<uint16_t> values(numHoldings(deckCards));
    for (uint16_t& value : values)
        value = static_cast<uint16_t>(random() % 40 * 1601);
    expectPlain(values, deckCards);
}

TEST(ShowdownSweep, AllHoldingsMayTie) {
    expectPlain(std::vector<uint16_t>(numHoldings(5), 7), 5);
}

TEST(HoldingOrder, IsByValueAndThenByNumber) {
    // The holdings of four cards: 01 02 12 03 13 23.
    const std::vector<uint16_t> values{500, 3, 500, 256, 3, 65535};
    const HoldingOrder order(values.data(), 4);
    ASSERT_EQ(order.size(), 6U);
    std::vector<int> numbers;
    std::vector<std::pair<int, int>> cards;
    for (size_t i = 0; i < order.size(); ++i) {
        numbers.push_back(order[i].number);
        cards.emplace_back(order[i].low, order[i].high);
    }
    EXPECT_EQ(numbers, (std::vector{1, 4, 3, 0, 2, 5}));
    EXPECT_EQ(cards,
              (std::vector<std::pair<int, int>>{{0, 2}, {1, 3}, {0, 3}, {0, 1}, {1, 2}, {2, 3}}));
    EXPECT_EQ(order.groupEnd(0), 2U);
    EXPECT_EQ(order.groupEnd(2), 3U);
    EXPECT_EQ(order.groupEnd(3), 5U);
    EXPECT_EQ(order.groupEnd(5), 6U);
}

} // namespace
} // namespace tamarin::test
