#include "abstraction/river_sweep.h"

#include "abstraction/showdown_sweep.h"
#include "eval/hand_evaluator.h"

#include <array>

namespace tamarin {

namespace {

constexpr size_t cardsLeft = 47;
constexpr size_t lanes = 48; // three vectors of sixteen; the last lane stays zero
static_assert(riverHoldings == numHoldings(cardsLeft));

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

void sweepRiver(const uint8_t* board, RiverWins* wins) {
    std::array<uint16_t, riverHoldings> values;
    HandEvaluator::shared().rankHoldings({board, 5}, values.data());
    const HoldingOrder order(values.data(), cardsLeft);

    Beaten beaten;
    for (size_t begin = 0; begin < riverHoldings;) {
        const size_t end = order.groupEnd(begin);
        for (size_t i = begin; i < end; ++i)
            wins[order[i].number] = beaten.winsOf(order[i].low, order[i].high);
        for (; begin < end; ++begin)
            beaten.add(order[begin].low, order[begin].high);
    }
}

} // namespace tamarin
