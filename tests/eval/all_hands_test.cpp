// Every hand of five, six and seven cards by the table and by the evaluator in the cache, against
// the rules engine and the known counts.
#include "eval/hand_evaluator.h"
#include "eval/hand_value.h"
#include "eval/seven_card_table.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

const SevenCardTable& table() {
    static const SevenCardTable made = SevenCardTable::generate();
    return made;
}

const HandKey& cardKey(unsigned card) {
    static const std::array<HandKey, 52> keys = [] {
        std::array<HandKey, 52> made;
        for (uint8_t i = 0; i < 52; ++i)
            made[i] = keyOfCard(i);
        return made;
    }();
    return keys[card];
}

// Compares the values met with the showdown ranks of the same hands.
class Comparison {
public:
    void meet(int rank, uint32_t value) {
        uint32_t& known = valueOfRank_[static_cast<size_t>(rank)];
        if (known == 0)
            known = value;
        disagreements_ += known != value;
        ++counts_[value >> 12];
    }

    void agree(uint32_t value, uint32_t tables) { disagreements_ += value != tables; }

    // One value a rank, in the same strict order, and the counts of the categories.
    void check(const std::array<uint64_t, 9>& counts, size_t classes) const {
        EXPECT_EQ(disagreements_, 0U);
        uint32_t last = 0;
        size_t seen = 0;
        for (const uint32_t value : valueOfRank_) {
            if (value == 0)
                continue;
            EXPECT_GT(value, last);
            last = value;
            ++seen;
        }
        EXPECT_EQ(seen, classes);
        EXPECT_EQ(counts_[0], 0U);
        for (size_t i = 0; i < 9; ++i)
            EXPECT_EQ(counts_[i + 1], counts[i]) << categoryNames[i];
    }

private:
    std::array<uint32_t, 12116> valueOfRank_{};
    std::array<uint64_t, 16> counts_{};
    uint64_t disagreements_ = 0;
};

// Walks all sets of `left` more cards below `end`, carrying the table's state along; of hands of
// `size` cards, which the evaluator that stays in the cache ranks, too.
template <int size, int left>
void walkAll(Comparison& comparison, const HandKey& hand, uint32_t state, unsigned end) {
    const int32_t* entries = table().data();
    for (unsigned card = left - 1; card < end; ++card) {
        const HandKey now = hand + cardKey(card);
        const auto next = static_cast<uint32_t>(entries[state + card + 1]);
        if constexpr (left == 1) {
            const uint32_t value = size < 7 ? static_cast<uint32_t>(entries[next]) : next;
            comparison.meet(rankCardSet(now.cards), value);
            comparison.agree(HandEvaluator::shared().value<size>(now), value);
        } else {
            walkAll<size, left - 1>(comparison, now, next, card);
        }
    }
}

} // namespace

TEST(AllHands, OfFiveCards) {
    Comparison comparison;
    walkAll<5, 5>(comparison, {}, 53, 52);
    comparison.check({1302540, 1098240, 123552, 54912, 10200, 5108, 3744, 624, 40}, 7462);
}

TEST(AllHands, OfSixCards) {
    Comparison comparison;
    walkAll<6, 6>(comparison, {}, 53, 52);
    comparison.check({6612900, 9730740, 2532816, 732160, 361620, 205792, 165984, 14664, 1844},
                     6075);
}

TEST(AllHands, OfSevenCards) {
    Comparison comparison;
    walkAll<7, 7>(comparison, {}, 53, 52);
    comparison.check(
        {23294460, 58627800, 31433400, 6461620, 6180020, 4047644, 3473184, 224848, 41584}, 4824);
}

// From every state of up to five cards, two further cards lead to the same entry in either order.
// Every order of a hand follows from the others by exchanging neighbours, so all orders agree.
TEST(AllHands, InAnyOrder) {
    const int32_t* entries = table().data();
    size_t pairs = 0;
    size_t disagreements = 0;
    for (size_t row = 1; row <= sevenCardStates; ++row) {
        const int32_t* state = entries + row * 53;
        const auto step = static_cast<size_t>(*std::max_element(state + 1, state + 53));
        if (step < row * 53)
            break; // values: the rows of six cards, which come last
        for (int k = 2; k <= 52; ++k) {
            for (int j = 1; j < k; ++j) {
                if (state[k] == 0 || state[j] == 0)
                    continue; // the state holds one of the cards already
                disagreements += entries[state[k] + j] != entries[state[j] + k];
                ++pairs;
            }
        }
    }
    EXPECT_EQ(disagreements, 0U);
    EXPECT_GT(pairs, 250000000U);
}

} // namespace tamarin::test
