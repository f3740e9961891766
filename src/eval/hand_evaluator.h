// Hands of five to seven cards ranked by tables that stay in the cache: 250 kB, computed in some
// ten milliseconds, where the seven-card table has 124 MiB. The values are the same (hand_value.h).
//
// Every card has a key, and a hand's key is their sum: the ranks in powers of five, which tell how
// many there are of each, and a counter for each suit. Without a flush the ranks alone decide: the
// 49,205 multisets of seven ranks (18,395 of six, 6,175 of five) are found by a hash without
// collisions, whose rows are each moved to where they fit (Belazzougui, Botelho and Dietzfelbinger
// 2009, without their compression). With five cards of a suit nothing else counts, since seven
// cards with a flush hold no full house and no four of a kind.
//
// An object is read-only and may be used from any number of threads.
#pragma once

#include "game/showdown.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tamarin {

// Of one card or, added up, of a hand; cards that are added must all be different.
struct HandKey {
    uint64_t sum = 0;
    CardSet cards = 0;

    HandKey operator+(const HandKey& other) const { return {sum + other.sum, cards | other.cards}; }
};

// Bits 0..31: 5^rank. Bits 32..47: four bits a suit, 1 in the card's.
constexpr HandKey keyOfCard(uint8_t card) {
    uint64_t power = 1;
    for (int i = 0; i < card / 4; ++i)
        power *= 5;
    return {power | uint64_t{1} << (32 + 4 * (card % 4)),
            CardSet{1} << ((card & 3U) << 4U | card >> 2U)};
}

inline constexpr auto cardKeys = [] {
    std::array<HandKey, 52> keys{};
    for (uint8_t card = 0; card < 52; ++card)
        keys[card] = keyOfCard(card);
    return keys;
}();

// 5^rank, as in a key.
inline constexpr auto rankPowers = [] {
    std::array<uint32_t, 13> powers{};
    for (uint8_t rank = 0; rank < 13; ++rank)
        powers[rank] = static_cast<uint32_t>(keyOfCard(static_cast<uint8_t>(4 * rank)).sum);
    return powers;
}();

// The sum of the keys of a set of cards.
HandKey keyOfCards(CardSet cards);

class HandEvaluator {
public:
    // The tables, computed at the first call.
    static const HandEvaluator& shared();

    HandEvaluator(const HandEvaluator&) = delete;
    HandEvaluator& operator=(const HandEvaluator&) = delete;

    // The value of a hand of exactly so many cards.
    template <int cards>
    uint32_t value(const HandKey& hand) const {
        static_assert(cards >= 5 && cards <= 7);
        if (const uint64_t flush = flushOf(hand.sum); flush != 0)
            return flushValue(flush, hand.cards);
        const auto ranks = static_cast<uint32_t>(hand.sum);
        if constexpr (cards == 7)
            return seven_.at(ranks);
        else if constexpr (cards == 6)
            return six_.at(ranks);
        else
            return five_.at(ranks);
    }

    // The two halves of a value, for work on ranks without suits; the larger one is the hand's.
    // Seven ranks, at most four alike, by the sum of 5^rank as in a key; and the ranks of a suit,
    // whose value is 0 where they are fewer than five.
    uint32_t valueOfSevenRanks(uint32_t powers) const { return seven_.at(powers); }
    uint32_t valueOfSuit(uint32_t ranks) const { return flushes_[ranks]; }

    // Cards are bytes 0..51, all different; neither is checked.
    uint32_t rank7(const uint8_t* cards) const;
    void rankMany(const uint8_t (*hands)[7], uint16_t* values, size_t count) const;

    // The values of all hands of a board of 3, 4 or 5 cards and two of the others, which are
    // numbered in ascending order: low < high at high * (high - 1) / 2 + low. values: 1,176, 1,128
    // or 1,081 entries.
    void rankHoldings(std::span<const uint8_t> board, uint16_t* values) const;

private:
    // The rank sums of hands of one size. A sum is spread over 32 bits; the upper ones name its
    // row, others its place in the row, and the row's shift brings it to where no other sum is.
    template <unsigned bits, unsigned rowBits, uint32_t multiplier>
    struct Sums {
        static constexpr uint32_t size = 1U << bits;
        std::array<uint16_t, size> values{};
        std::array<uint16_t, 1U << rowBits> shifts{};

        static uint32_t rowOf(uint32_t sum) { return sum * multiplier >> (32 - rowBits); }
        static uint32_t placeOf(uint32_t sum) { return sum * multiplier >> 1U; }
        uint32_t at(uint32_t sum) const {
            return values[(placeOf(sum) + shifts[rowOf(sum)]) % size];
        }
    };

    HandEvaluator();
    template <int cards, class Table>
    static void fill(Table& table);
    template <int cards>
    void rankHoldings(const HandKey& board, uint16_t* values) const;

    // Not 0 where a suit has five cards: the highest bit of its counter, each having begun at 3.
    static uint64_t flushOf(uint64_t sum) {
        constexpr uint64_t start = uint64_t{0x3333} << 32U;
        constexpr uint64_t five = uint64_t{0x8888} << 32U;
        return (sum + start) & five;
    }
    uint32_t flushValue(uint64_t flush, CardSet cards) const {
        const int suit = (std::countr_zero(flush) - 35) / 4;
        return flushes_[cards >> (16 * suit) & 0x1fff];
    }

    // The multipliers are the first of their sequences with which no two sums of a row share a
    // place and every row found room.
    Sums<16, 13, 0x9e3779b1> seven_;
    Sums<15, 11, 0x2f7c8119> six_;
    Sums<13, 10, 0x9567cea9> five_;
    std::array<uint16_t, 1U << 13U> flushes_{}; // by the ranks of the suit
};

} // namespace tamarin
