#include "abstraction/showdown_sweep.h"

#include <utility>

namespace tamarin {

// By value, ascending: two passes over a byte each.
HoldingOrder::HoldingOrder(const uint16_t* values, size_t cardsLeft)
    : cardsLeft_(cardsLeft), size_(numHoldings(cardsLeft)) {
    assert(cardsLeft <= deckCards);
    std::array<Holding, numHoldings(deckCards)> scratch;
    size_t number = 0;
    for (size_t high = 1; high < cardsLeft; ++high)
        for (size_t low = 0; low < high; ++low, ++number)
            holdings_[number] = {static_cast<uint16_t>(number), static_cast<uint8_t>(low),
                                 static_cast<uint8_t>(high)};
    Holding* from = holdings_.data();
    Holding* to = scratch.data();
    for (const unsigned shift : {0U, 8U}) {
        std::array<uint16_t, 256> start{};
        for (size_t i = 0; i < size_; ++i)
            ++start[values[i] >> shift & 0xffU];
        uint16_t sum = 0;
        for (uint16_t& entry : start)
            entry = static_cast<uint16_t>(std::exchange(sum, static_cast<uint16_t>(sum + entry)));
        for (size_t i = 0; i < size_; ++i)
            to[start[values[from[i].number] >> shift & 0xffU]++] = from[i];
        std::swap(from, to);
    }
    for (size_t begin = 0; begin < size_;) {
        size_t end = begin;
        while (end < size_ && values[holdings_[end].number] == values[holdings_[begin].number])
            ++end;
        groupEnd_[begin] = static_cast<uint16_t>(end);
        begin = end;
    }
}

} // namespace tamarin
