#include "eval/seven_card_generator.h"

#include "eval/hand_value.h"
#include "eval/seven_card_table.h"

#include <algorithm>
#include <array>
#include <random>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

namespace {

const SevenCardTable& table() {
    static const SevenCardTable made = SevenCardTable::generate();
    return made;
}

// count different cards drawn from the seed.
std::array<uint8_t, 52> deckFrom(uint32_t seed) {
    std::array<uint8_t, 52> deck{};
    for (uint8_t card = 0; card < 52; ++card)
        deck[card] = card;
    std::mt19937 random(seed);
    std::shuffle(deck.begin(), deck.end(), random);
    return deck;
}

CardSet setOf(const uint8_t* cards, int count) {
    CardSet set = 0;
    for (int i = 0; i < count; ++i)
        set |= cardBit(cards[i]);
    return set;
}

} // namespace

TEST(SevenCardGenerator, FirstRowsAreWhereTheyBelong) {
    const std::span<const int32_t> entries = table().entries();
    for (size_t i = 0; i <= 53; ++i)
        EXPECT_EQ(entries[i], 0);
    for (size_t k = 1; k <= 52; ++k)
        EXPECT_EQ(entries[53 + k], static_cast<int32_t>(53 * (k + 1)));
}

// Rows lie in order of size: every step from a row leads to a row of the next size, all of those
// are reached, and the seventh step yields a value.
TEST(SevenCardGenerator, EveryEntryIsAStateOrAValue) {
    const std::span<const int32_t> entries = table().entries();
    size_t first = 1;
    size_t end = 2;
    for (int cards = 0; cards < 6; ++cards) {
        std::vector<bool> reached;
        for (size_t row = first; row < end; ++row) {
            for (size_t k = 1; k <= 52; ++k) {
                const auto entry = static_cast<size_t>(entries[row * 53 + k]);
                if (entry == 0)
                    continue;
                ASSERT_EQ(entry % 53, 0U);
                ASSERT_GE(entry / 53, end);
                if (entry / 53 - end >= reached.size())
                    reached.resize(entry / 53 - end + 1);
                reached[entry / 53 - end] = true;
            }
            ASSERT_EQ(entries[row * 53] != 0, cards == 5);
        }
        EXPECT_EQ(std::count(reached.begin(), reached.end(), false), 0);
        first = end;
        end += reached.size();
    }
    EXPECT_EQ(end, sevenCardStates + 1);
    for (size_t row = first; row < end; ++row)
        for (size_t k = 0; k <= 52; ++k) {
            const int32_t entry = entries[row * 53 + k];
            ASSERT_TRUE(denseRankOfValue(static_cast<uint32_t>(entry)) > 0 ||
                        (entry == 0 && k > 0));
        }
}

TEST(SevenCardGenerator, RepeatedCardsGiveNoValueWhileTheSuitMatters) {
    uint8_t cards[7] = {51, 51, 3, 9, 17, 22, 30};
    EXPECT_EQ(table().rank7(cards), 0U);
    uint8_t flush[7] = {51, 47, 43, 39, 35, 51, 22};
    EXPECT_EQ(table().rank7(flush), 0U);
    uint8_t fiveAces[7] = {51, 50, 49, 48, 3, 7, 51};
    EXPECT_EQ(table().rank7(fiveAces), 0U);
}

TEST(SevenCardGenerator, ThreadsDoNotChangeTheTable) {
    const SevenCardTable three = SevenCardTable::generate(3);
    EXPECT_TRUE(std::equal(three.entries().begin(), three.entries().end(),
                           SevenCardTable::generate(1).entries().begin()));
}

TEST(SevenCardGenerator, ProgressNeverRunsBack) {
    std::vector<uint64_t> seen;
    SevenCardTable::generate(1, [&](uint64_t rows) { seen.push_back(rows); });
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_EQ(seen.back(), sevenCardStates);
}

TEST(SevenCardGenerator, DenseRanks) {
    const std::vector<int32_t> dense = makeDenseRankTable();
    ASSERT_EQ(dense.size(), 36875U);
    EXPECT_EQ(dense[36874], 7462);
    EXPECT_EQ(dense[4097], 1);
    EXPECT_EQ(dense[0], 0);
    EXPECT_EQ(std::count(dense.begin(), dense.end(), 0), 36875 - 7462);
}

TEST(SevenCardTable, ManyAtOnceAreRankedAsOneByOne) {
    uint8_t hands[29][7];
    for (uint32_t i = 0; i < 29; ++i) {
        const auto deck = deckFrom(i);
        std::copy_n(deck.begin(), 7, hands[i]);
    }
    uint32_t values[29];
    table().rankMany(hands, values, 29);
    for (size_t i = 0; i < 29; ++i)
        EXPECT_EQ(values[i], table().rank7(hands[i]));
}

RC_GTEST_PROP(SevenCardTable, RanksAsTheRulesDoInAnyOrder, (uint32_t seed)) {
    auto deck = deckFrom(seed);
    std::mt19937 random(seed);
    for (int order = 0; order < 4; ++order) {
        RC_ASSERT(table().rank7(deck.data()) == handValueOf(setOf(deck.data(), 7)));
        RC_ASSERT(table().rank6(deck.data()) == handValueOf(setOf(deck.data(), 6)));
        RC_ASSERT(table().rank5(deck.data()) == handValueOf(setOf(deck.data(), 5)));
        std::shuffle(deck.begin(), deck.begin() + 7, random);
    }
}

} // namespace tamarin::test
