// Every hand of every round: some seconds, and most of a gigabyte.
#include "abstraction/equity_counts.h"

#include "abstraction/plain_equity.h"
#include "abstraction/random_cards.h"
#include "eval/seven_card_table.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

EquityCounts countsWith(int threads) {
    Work work;
    work.threads = threads;
    auto counts = EquityCounts::compute(work);
    EXPECT_TRUE(counts.ok());
    return std::move(*counts);
}

const EquityCounts& allCounts() {
    static const EquityCounts counts = countsWith(0);
    return counts;
}

double equityOf(const EquityCounts& counts, uint8_t a, uint8_t b, bool overTwo) {
    const RoundIndexer indexer(0);
    const uint8_t cards[] = {a, b};
    const EquityCounts::PreflopWins& wins = counts.preflop()[hand_index_last(indexer.get(), cards)];
    return overTwo ? double(wins.overTwo) / (double(wins.flops) * flopRivers * riverDeals3)
                   : double(wins.overOne) / (double(wins.flops) * flopRivers * riverDeals2);
}

TEST(EquityCounts, AreTheSameWithOneThreadAndWithThree) {
    const EquityCounts one = countsWith(1);
    const EquityCounts three = countsWith(3);
    for (size_t b = 0; b < boardClasses[2]; ++b)
        ASSERT_TRUE(std::equal(one.river(b), one.river(b) + riverHoldings, three.river(b)));
    for (size_t b = 0; b < boardClasses[1]; ++b)
        ASSERT_TRUE(
            std::equal(one.turn(b), one.turn(b) + EquityCounts::turnHoldings, three.turn(b)));
    for (size_t b = 0; b < boardClasses[0]; ++b)
        ASSERT_TRUE(
            std::equal(one.flop(b), one.flop(b) + EquityCounts::flopHoldings, three.flop(b)));
}

// All 2,118,760 boards and 990 opponents of two pairs of hole cards, without any use of suits being
// alike.
TEST(EquityCounts, PreflopIsTheBruteForceOverEveryBoard) {
    const EquityCounts& counts = allCounts();
    const SevenCardTable table = SevenCardTable::generate();
    for (const auto& [a, b] : {std::pair<uint8_t, uint8_t>{48, 49}, {0, 21}}) {
        const uint8_t own[] = {a, b};
        uint8_t left[deckCards];
        ASSERT_EQ(cardsWithout(own, 2, left), 50U);
        uint64_t wins = 0;
        uint64_t deals = 0;
        for (uint32_t i = 0; i < 50; ++i)
            for (uint32_t j = i + 1; j < 50; ++j)
                for (uint32_t k = j + 1; k < 50; ++k)
                    for (uint32_t l = k + 1; l < 50; ++l)
                        for (uint32_t m = l + 1; m < 50; ++m) {
                            // One opponent a board, each as often as any other.
                            uint8_t seven[7] = {left[i], left[j], left[k], left[l], left[m], a, b};
                            const uint32_t value = table.rank7(seven);
                            uint8_t rest[deckCards];
                            const size_t count = cardsWithout(seven, 7, rest);
                            const int32_t* const entries = table.data();
                            int32_t state = sevenCardRowEntries;
                            for (int c = 0; c < 5; ++c)
                                state = entries[state + seven[c] + 1];
                            for (size_t c = 1; c < count; ++c) {
                                const int32_t row = entries[state + rest[c] + 1];
                                for (size_t d = 0; d < c; ++d)
                                    wins +=
                                        static_cast<uint32_t>(entries[row + rest[d] + 1]) < value;
                            }
                            deals += riverDeals2;
                        }
        EXPECT_EQ(equityOf(counts, a, b, false), double(wins) / double(deals));
    }
}

TEST(EquityCounts, KnownHands) {
    const EquityCounts& counts = allCounts();
    // Published heads-up odds against a random hand: win without ties.
    EXPECT_NEAR(equityOf(counts, 48, 49, false), 0.8493, 0.0001);
    EXPECT_NEAR(equityOf(counts, 44, 48, false), 0.6621, 0.0001);
    EXPECT_NEAR(equityOf(counts, 0, 21, false), 0.3204, 0.01);
    // Three-handed: aces stay ahead of two about as often as of one twice over.
    EXPECT_NEAR(equityOf(counts, 48, 49, true), 0.734, 0.002);
}

TEST(EquityCounts, RandomFlopIsThePlainCount) {
    const EquityCounts& counts = allCounts();
    const BoardSet flops(3);
    std::mt19937 random(5);
    const std::vector<uint8_t> cards = randomCards(random, 5);
    const std::vector<uint8_t> board(cards.begin(), cards.begin() + 3);
    const BoardSet::Place place = flops.find(board.data());
    const auto renamed = [&](uint8_t card) {
        return static_cast<uint8_t>((card & ~3U) | place.suit[card & 3U]);
    };
    const size_t holding =
        holdingOn(flops.board(place.number), 3, renamed(cards[3]), renamed(cards[4]));
    EXPECT_EQ(counts.flop(place.number)[holding], plainWins(board, cards[3], cards[4]));
}

} // namespace
} // namespace tamarin::test
