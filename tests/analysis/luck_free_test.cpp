#include "analysis/luck_free.h"

#include "analysis/all_deals.h"

#include <cmath>
#include <map>

namespace tamarin::test {
namespace {

// Means weighed with the probabilities of all that can happen, for one seat.
struct Means {
    double plain = 0;
    double luckFree = 0;
    double plainSquares = 0;
    double luckFreeSquares = 0;
    double total = 0;
    double least = HUGE_VAL;
    double most = -HUGE_VAL;

    double plainVariance() const { return plainSquares - plain * plain; }
    double variance() const { return luckFreeSquares - luckFree * luckFree; }
};

Means meansOf(const Table& table, const ValueEstimate& estimate, int seat) {
    const LuckFree luckFree(*table.game, table.tree, table.deck,
                            *table.strategies[static_cast<size_t>(seat)], estimate);
    Means means;
    table.forEachHand([&](const PlayedHand& hand, double probability, double payoff) {
        const auto result = luckFree.of(hand, seat);
        ASSERT_TRUE(result.ok());
        const double won = seat == 0 ? payoff : -payoff;
        means.total += probability;
        means.plain += probability * won;
        means.luckFree += probability * *result;
        means.plainSquares += probability * won * won;
        means.luckFreeSquares += probability * *result * *result;
        means.least = std::min(means.least, *result);
        means.most = std::max(means.most, *result);
    });
    return means;
}

// Any number, for any place.
PlainEstimate nonsense(const Table& table) {
    return {table, [](int32_t node, const std::array<HoleCards, 2>& hole,
                      const std::vector<uint8_t>& board) {
                uint64_t bits = static_cast<uint64_t>(node) + 1;
                for (const HoleCards& hand : hole)
                    for (const uint8_t card : hand)
                        bits = mixBits(bits * 64 + card + 1);
                for (const uint8_t card : board)
                    bits = mixBits(bits * 64 + card + 1);
                return 60 * unitInterval(bits) - 20;
            }};
}

PlainEstimate truth(const Table& table) {
    return {table,
            [&table](int32_t node, const std::array<HoleCards, 2>& hole,
                     const std::vector<uint8_t>& board) { return table.value(node, hole, board); }};
}

const std::vector<std::string>& games() {
    static const std::vector<std::string> all = {
        shortGame(2, 3, "2 2", "10 20", "0 1"),
        shortGame(2, 4, "1 1", "10 20", "0 2"),
        shortGame(3, 2, "1 1 1", "10 20 20", "0 1 1"),
    };
    return all;
}

TEST(LuckFree, HasTheTrueMeanWhateverTheEstimate) {
    for (const std::string& text : games())
        for (const auto& [own, other] : {std::pair{3U, 11U}, {8U, 21U}}) {
            const Table table(text, own, other);
            const PlainEstimate estimate = nonsense(table);
            for (int seat = 0; seat < 2; ++seat) {
                const Means means = meansOf(table, estimate, seat);
                EXPECT_NEAR(means.total, 1, 1e-9);
                EXPECT_NEAR(means.luckFree, means.plain, 1e-9);
                EXPECT_GT(std::abs(means.plain), 0.1); // there is something to be missed
            }
        }
}

TEST(LuckFree, WithTheTruthLeavesNothingButTheOpponentsChoices) {
    for (const std::string& text : {games()[0], games()[2]})
        for (int seat = 0; seat < 2; ++seat) {
            Table table(text);
            const Means means = meansOf(table, truth(table), seat);
            EXPECT_NEAR(means.luckFree, means.plain, 1e-9);
            EXPECT_GT(means.most - means.least, 1);
            EXPECT_LT(means.variance(), 0.8 * means.plainVariance());

            // One that has no choice leaves nothing at all.
            table.strategies[static_cast<size_t>(1 - seat)] =
                std::make_unique<SimpleStrategy>(table.tree, SimplePlay::call);
            const Means still = meansOf(table, truth(table), seat);
            EXPECT_NEAR(still.least, still.plain, 1e-9);
            EXPECT_NEAR(still.most, still.plain, 1e-9);
            EXPECT_GT(still.plainVariance(), 10);
        }
}

TEST(LuckFree, RefusesWhatTheStrategyNeverDoes) {
    Table table(games()[0]);
    const PlainEstimate estimate = nonsense(table);
    const SimpleStrategy call(table.tree, SimplePlay::call);
    const LuckFree luckFree(*table.game, table.tree, table.deck, call, estimate);
    const auto cards = table.deck.cards();
    const PlayedHand raised{{{{cards[0], cards[1]}, {cards[2], cards[3]}}}, {}, {2, 0}};
    // Seat 1 acts first: it is the one that raised.
    const auto refused = luckFree.of(raised, 1);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(), "seat 1 did what its strategy never does there");
}

} // namespace
} // namespace tamarin::test
