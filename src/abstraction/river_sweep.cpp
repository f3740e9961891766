#include "abstraction/river_sweep.h"

#include "abstraction/boards.h"

#include <array>
#include <cassert>

namespace tamarin {

namespace {

constexpr size_t cardsLeft = 47;
constexpr size_t lanes = 48; // three vectors of sixteen; the last lane stays zero

// A holding with its hand's value, in one word to sort by: value << 12 | high << 6 | low.
using Keyed = uint32_t;

constexpr uint32_t valueOf(Keyed key) {
    return key >> 12U;
}

void rankHoldings(const SevenCardTable& table, const uint8_t* board, Keyed* keys) {
    uint8_t left[deckCards];
    [[maybe_unused]] const size_t count = cardsWithout(board, 5, left);
    assert(count == cardsLeft);
    const int32_t* const entries = table.data();
    int32_t state = sevenCardRowEntries;
    for (int i = 0; i < 5; ++i)
        state = entries[state + board[i] + 1];
    std::array<int32_t, cardsLeft> rows;
    for (size_t high = 0; high < cardsLeft; ++high)
        rows[high] = entries[state + left[high] + 1];
    Keyed* key = keys;
    for (uint32_t high = 1; high < cardsLeft; ++high) {
        const int32_t* const row = entries + rows[high] + 1;
        for (uint32_t low = 0; low < high; ++low)
            *key++ = static_cast<uint32_t>(row[left[low]]) << 12U | high << 6U | low;
    }
}

// By value, ascending: two passes over a byte each.
void sortByValue(Keyed* keys, Keyed* scratch) {
    for (const unsigned shift : {12U, 20U}) {
        std::array<uint16_t, 256> start{};
        for (size_t i = 0; i < riverHoldings; ++i)
            ++start[keys[i] >> shift & 0xffU];
        uint16_t sum = 0;
        for (uint16_t& entry : start) {
            const uint16_t size = entry;
            entry = sum;
            sum = static_cast<uint16_t>(sum + size);
        }
        for (size_t i = 0; i < riverHoldings; ++i)
            scratch[start[keys[i] >> shift & 0xffU]++] = keys[i];
        std::swap(keys, scratch);
    }
}

// The beaten holdings so far.
struct Beaten {
    int32_t count = 0;
    alignas(32) std::array<int16_t, lanes> with{};                    // by card
    alignas(32) std::array<std::array<int16_t, lanes>, lanes> pair{}; // 1 where {a, b} is beaten

    void add(size_t low, size_t high) {
        ++count;
        ++with[low];
        ++with[high];
        pair[low][high] = pair[high][low] = 1;
    }

    RiverWins winsOf(size_t low, size_t high) const {
        int32_t squares = 0;
        for (size_t c = 0; c < lanes; ++c) {
            const auto rest = static_cast<int16_t>(with[c] - pair[low][c] - pair[high][c]);
            squares += rest * rest;
        }
        // The holding's own cards belong to no holding that is left; {low, high} itself is not
        // beaten, so their lanes held exactly with[low] and with[high].
        const int32_t ofLow = with[low];
        const int32_t ofHigh = with[high];
        squares -= ofLow * ofLow + ofHigh * ofHigh;
        const int32_t wins = count - ofLow - ofHigh;
        const int32_t pairs = wins * wins + wins - squares;
        return static_cast<uint32_t>(wins) << riverWinsShift | static_cast<uint32_t>(pairs);
    }
};

} // namespace

void sweepRiver(const SevenCardTable& table, const uint8_t* board, RiverWins* wins) {
    std::array<Keyed, riverHoldings> keys;
    std::array<Keyed, riverHoldings> scratch;
    rankHoldings(table, board, keys.data());
    sortByValue(keys.data(), scratch.data());

    Beaten beaten;
    for (size_t begin = 0; begin < riverHoldings;) {
        size_t end = begin;
        while (end < riverHoldings && valueOf(keys[end]) == valueOf(keys[begin])) {
            const size_t low = keys[end] & 63U;
            const size_t high = keys[end] >> 6U & 63U;
            wins[holdingNumber(low, high)] = beaten.winsOf(low, high);
            ++end;
        }
        for (; begin < end; ++begin)
            beaten.add(keys[begin] & 63U, keys[begin] >> 6U & 63U);
    }
}

} // namespace tamarin
