#include "abstraction/showdown_sweep.h"

#include <utility>

namespace tamarin {

namespace {

constexpr auto byNumber = [] {
    std::array<HoldingOrder::Holding, numHoldings(deckCards)> holdings{};
    for (size_t high = 1; high < deckCards; ++high)
        for (size_t low = 0; low < high; ++low) {
            const size_t number = holdingNumber(low, high);
            holdings[number] = {static_cast<uint16_t>(number), static_cast<uint8_t>(low),
                                static_cast<uint8_t>(high)};
        }
    return holdings;
}();

// In one word to sort by: value << 16 | number.
using Keyed = uint32_t;
constexpr Keyed numberMask = 0xffff;

} // namespace

// By value, ascending: two passes over a byte each.
HoldingOrder::HoldingOrder(const uint16_t* values, size_t cardsLeft)
    : cardsLeft_(cardsLeft), size_(numHoldings(cardsLeft)) {
    assert(cardsLeft <= deckCards);
    std::array<Keyed, numHoldings(deckCards)> keys;
    std::array<Keyed, numHoldings(deckCards)> scratch;
    std::array<uint16_t, 256> startOfLow{};
    std::array<uint16_t, 256> startOfHigh{};
    for (size_t i = 0; i < size_; ++i) {
        keys[i] = Keyed{values[i]} << 16U | static_cast<Keyed>(i);
        ++startOfLow[values[i] & 0xffU];
        ++startOfHigh[values[i] >> 8U];
    }
    const auto pass = [&](std::array<uint16_t, 256>& start, unsigned shift, const Keyed* from,
                          Keyed* to) {
        uint16_t sum = 0;
        for (uint16_t& entry : start)
            entry = static_cast<uint16_t>(std::exchange(sum, static_cast<uint16_t>(sum + entry)));
        for (size_t i = 0; i < size_; ++i)
            to[start[from[i] >> shift & 0xffU]++] = from[i];
    };
    pass(startOfLow, 16, keys.data(), scratch.data());
    pass(startOfHigh, 24, scratch.data(), keys.data());
    size_t begin = 0;
    for (size_t i = 0; i < size_; ++i) {
        holdings_[i] = byNumber[keys[i] & numberMask];
        if ((keys[i] ^ keys[begin]) > numberMask) {
            groupEnd_[begin] = static_cast<uint16_t>(i);
            begin = i;
        }
    }
    if (size_ > 0)
        groupEnd_[begin] = static_cast<uint16_t>(size_);
}

} // namespace tamarin
