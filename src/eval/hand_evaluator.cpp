#include "eval/hand_evaluator.h"

#include "eval/hand_value.h"
#include "eval/rank_masks.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <vector>

namespace tamarin {

namespace {

// Of the keys the sums alone: half the memory.
constexpr auto keySums = [] {
    std::array<uint64_t, 52> sums{};
    for (size_t card = 0; card < sums.size(); ++card)
        sums[card] = cardKeys[card].sum;
    return sums;
}();

// Calls visit(masks, sum) for every multiset of so many ranks from `from` on, at most four of each.
template <class Visit>
void forEachMultiset(RankMasks masks, uint32_t sum, uint32_t from, int left, const Visit& visit) {
    if (left == 0) {
        visit(masks, sum);
        return;
    }
    for (uint32_t rank = from; rank < 13; ++rank)
        if ((masks.quads >> rank & 1) == 0)
            forEachMultiset(withRank(masks, rank), sum + rankPowers[rank], rank, left - 1, visit);
}

} // namespace

HandKey keyOfCards(CardSet cards) {
    HandKey sum;
    for (; cards != 0; cards &= cards - 1) {
        const auto bit = static_cast<uint8_t>(std::countr_zero(cards));
        sum = sum + cardKeys[static_cast<uint8_t>((bit & 15U) << 2U | bit >> 4U)];
    }
    return sum;
}

// The fullest rows first: they are the hardest to find room for.
template <int cards, class Table>
void HandEvaluator::fill(Table& table) {
    struct Entry {
        uint32_t place;
        uint16_t value;
    };
    std::vector<std::vector<Entry>> rows(table.shifts.size());
    forEachMultiset({}, 0, 0, cards, [&](RankMasks masks, uint32_t sum) {
        const uint32_t value = handValueOfRank(rankWithoutFlush(showdownTables(), masks));
        rows[Table::rowOf(sum)].push_back({Table::placeOf(sum), static_cast<uint16_t>(value)});
    });
    std::vector<uint32_t> order;
    for (uint32_t row = 0; row < rows.size(); ++row)
        order.push_back(row);
    std::ranges::stable_sort(order, std::greater<>(),
                             [&](uint32_t row) { return rows[row].size(); });
    for (const uint32_t row : order) {
        const auto fits = [&](uint32_t shift) {
            return std::ranges::all_of(rows[row], [&](const Entry& entry) {
                return table.values[(entry.place + shift) % Table::size] == 0; // no hand's value
            });
        };
        uint32_t shift = 0;
        while (shift < Table::size && !fits(shift))
            ++shift;
        assert(shift < Table::size);
        table.shifts[row] = static_cast<uint16_t>(shift);
        for (const Entry& entry : rows[row]) {
            uint16_t& value = table.values[(entry.place + shift) % Table::size];
            assert(value == 0); // two sums of a row in one place would never be parted
            value = entry.value;
        }
    }
}

HandEvaluator::HandEvaluator() {
    fill<7>(seven_);
    fill<6>(six_);
    fill<5>(five_);
    for (uint32_t ranks = 0; ranks < flushes_.size(); ++ranks)
        if (std::popcount(ranks) >= 5)
            flushes_[ranks] =
                static_cast<uint16_t>(handValueOfRank(showdownTables().oneSuitVal[ranks]));
}

const HandEvaluator& HandEvaluator::shared() {
    static const HandEvaluator made;
    return made;
}

uint32_t HandEvaluator::rank7(const uint8_t* cards) const {
    HandKey hand;
    for (int i = 0; i < 7; ++i)
        hand = hand + cardKeys[cards[i]];
    return value<7>(hand);
}

// Four hands at a time, so that each one's look-ups go on while the others' wait. Flushes, of which
// a few in a hundred hands are, are put right afterwards: which cards they are matters to them
// alone.
void HandEvaluator::rankMany(const uint8_t (*hands)[7], uint16_t* values, size_t count) const {
    constexpr size_t together = 4;
    size_t i = 0;
    for (; i + together <= count; i += together) {
        std::array<uint64_t, together> sums;
        uint64_t flushes = 0;
        for (size_t k = 0; k < together; ++k) {
            const uint8_t* const cards = hands[i + k];
            sums[k] = keySums[cards[0]] + keySums[cards[1]] + keySums[cards[2]] +
                      keySums[cards[3]] + keySums[cards[4]] + keySums[cards[5]] + keySums[cards[6]];
        }
        for (size_t k = 0; k < together; ++k) {
            values[i + k] = static_cast<uint16_t>(seven_.at(static_cast<uint32_t>(sums[k])));
            flushes |= flushOf(sums[k]);
        }
        if (flushes != 0)
            for (size_t k = 0; k < together; ++k)
                if (flushOf(sums[k]) != 0)
                    values[i + k] = static_cast<uint16_t>(rank7(hands[i + k]));
    }
    for (; i < count; ++i)
        values[i] = static_cast<uint16_t>(rank7(hands[i]));
}

template <int cards>
void HandEvaluator::rankHoldings(const HandKey& board, uint16_t* values) const {
    std::array<HandKey, static_cast<size_t>(54 - cards)> left;
    size_t count = 0;
    for (uint8_t card = 0; card < 52; ++card)
        if ((board.cards & cardKeys[card].cards) == 0)
            left[count++] = cardKeys[card];
    assert(count == left.size());
    for (size_t high = 1; high < count; ++high) {
        const HandKey withHigh = board + left[high];
        for (size_t low = 0; low < high; ++low)
            *values++ = static_cast<uint16_t>(value<cards>(withHigh + left[low]));
    }
}

void HandEvaluator::rankHoldings(std::span<const uint8_t> board, uint16_t* values) const {
    assert(board.size() >= 3 && board.size() <= 5);
    HandKey key;
    for (const uint8_t card : board)
        key = key + cardKeys[card];
    switch (board.size()) {
    case 3:
        return rankHoldings<5>(key, values);
    case 4:
        return rankHoldings<6>(key, values);
    default:
        return rankHoldings<7>(key, values);
    }
}

} // namespace tamarin
