// Any bytes as hands and cards the way people write them.
#include "eval/hand_range.h"

#include "fuzz/fuzz.h"

#include <algorithm>
#include <bit>
#include <string>

using namespace tamarin;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (const auto range = parseHandRange(text)) {
        expect(!range->hands.empty() && range->hands.size() <= 52 * 51 / 2, "1 to 1,326 hands");
        expect(std::adjacent_find(range->hands.begin(), range->hands.end(),
                                  std::greater_equal<>()) == range->hands.end(),
               "each hand once, in order");
        for (const CardSet hand : range->hands) {
            expect(std::popcount(hand) == 2, "a hand is two cards");
            const auto again = parseHandRange(printCardSet(hand));
            expect(again.ok() && again->hands.size() == 1 && again->hands[0] == hand,
                   "a hand prints and reads back");
        }
    }
    if (const auto cards = parseCards(text))
        expect(std::popcount(cardSetOf(*cards)) == static_cast<int>(cards->size()),
               "the cards are different");
    return 0;
}
