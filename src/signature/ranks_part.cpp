// Ranks: all of the table in strides, and the same random hands by every road.
#include "eval/hand_value.h"
#include "signature/parts.h"
#include "support/rng.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace tamarin {

namespace {

constexpr size_t rankedHands = 20'000;
constexpr size_t handsInWords = 500;
constexpr size_t stride = 7; // no divisor of a row: all columns are met

// count different cards at the front of the deck.
void draw(rng_state_t& generator, std::array<uint8_t, 52>& deck, size_t count) {
    for (size_t i = 0; i < count; ++i)
        std::swap(deck[i], deck[i + genrand_int32(&generator) % (deck.size() - i)]);
}

CardSet setOf(const uint8_t* cards, size_t count) {
    CardSet set = 0;
    for (size_t i = 0; i < count; ++i)
        set |= cardBit(cards[i]);
    return set;
}

} // namespace

void addRanks(Fnv1a& hash, const SevenCardTable& table) {
    static_assert(sevenCardRowEntries % stride != 0);
    const auto entries = table.entries();
    for (size_t i = 0; i < entries.size(); i += stride)
        hash.add(entries[i]);
    for (const int32_t rank : makeDenseRankTable())
        hash.add(rank);

    rng_state_t generator;
    init_genrand(&generator, 7);
    std::array<uint8_t, 52> deck;
    std::iota(deck.begin(), deck.end(), uint8_t{0});
    std::vector<std::array<uint8_t, 7>> drawn(rankedHands);
    for (size_t h = 0; h < rankedHands; ++h) {
        draw(generator, deck, 7);
        std::copy_n(deck.begin(), 7, drawn[h].begin());
        const uint8_t* const cards = drawn[h].data();
        hash.add(table.rank5(cards));
        hash.add(table.rank6(cards));
        hash.add(table.rank7(cards));
        for (size_t count = 1; count <= 7; ++count)
            hash.add(rankCardSet(setOf(cards, count)));
        for (size_t count = 5; count <= 7; ++count) {
            const CardSet set = setOf(cards, count);
            hash.add(handValueOf(set));
            hash.add(denseRankOfValue(handValueOf(set)));
            if (h < handsInWords)
                hash.add(describeHand(set));
        }
    }
    std::vector<uint32_t> values(rankedHands);
    table.rankMany(reinterpret_cast<const uint8_t(*)[7]>(drawn.data()), values.data(), rankedHands);
    for (const uint32_t value : values)
        hash.add(value);
}

} // namespace tamarin
