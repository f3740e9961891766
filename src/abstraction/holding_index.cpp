#include "abstraction/holding_index.h"

#include "index/hand_index_tables.h"
#include "index/multiset.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace tamarin {

namespace {

constexpr uint32_t ranks = 13;
constexpr uint32_t rankPairs = ranks * (ranks - 1) / 2;

// A suit's word is 16 x its hole cards + its board cards (hand_index.h).
constexpr uint32_t oneHoleCard = 16;

uint32_t colex(uint32_t set) {
    return handIndexTables.rank_set_to_index[set];
}

// The set among the ranks that are left when rank, not in it, is taken away.
uint32_t without(uint32_t set, uint32_t rank) {
    const uint32_t below = (1U << rank) - 1;
    return (set & below) | (set >> 1U & ~below);
}

} // namespace

// What one suit of a board contributes: its free ranks, and its suit index without a hole card and
// with one of each free rank.
//
// A suit index counts the hole cards' rank set first, by its number among all thirteen ranks, then
// the board's rank set, by its number among the ranks that the hole cards leave.
struct BoardSuit {
    uint32_t board = 0; // rank mask
    uint32_t bare = 0;  // suit index without a hole card
    size_t freeRanks = 0;
    std::array<uint8_t, ranks> rank{};     // free ranks, ascending
    std::array<uint32_t, ranks> single{};  // suit index with that free rank
    std::array<uint8_t, ranks> position{}; // of that card among the cards left

    uint32_t cards() const { return static_cast<uint32_t>(std::popcount(board)); }
};

namespace {

using Suits = std::array<BoardSuit, 4>;

Suits suitsOf(const uint8_t* board, int boardCards) {
    Suits suits;
    for (int i = 0; i < boardCards; ++i)
        suits[board[i] & 3U].board |= 1U << (board[i] >> 2U);
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(board, boardCards, left);
    assert(cardsLeft == deckCards - static_cast<size_t>(boardCards)); // no card twice
    for (size_t i = 0; i < cardsLeft; ++i) {
        BoardSuit& suit = suits[left[i] & 3U];
        const uint32_t rank = left[i] >> 2U;
        suit.rank[suit.freeRanks] = static_cast<uint8_t>(rank);
        suit.position[suit.freeRanks] = static_cast<uint8_t>(i);
        suit.single[suit.freeRanks++] = rank + ranks * colex(without(suit.board, rank));
    }
    for (BoardSuit& suit : suits)
        suit.bare = colex(suit.board);
    return suits;
}

// Index of a multiset of suit indices: with the members in ascending order, the sum of
// C(member + i, i + 1).
uint64_t multisetIndex(const std::array<uint64_t, 4>& members, size_t count) {
    uint64_t index = 0;
    for (size_t i = 0; i < count; ++i) {
        size_t place = 0;
        for (size_t j = 0; j < count; ++j)
            place += members[j] < members[i] || (members[j] == members[i] && j < i);
        index += groupBinomial(members[i] + place, static_cast<unsigned>(place) + 1);
    }
    return index;
}

// Both hole cards in one suit: no other suit holds two, so its index is a digit of its own.
void indexOneSuit(const BoardSuit& suit, uint64_t base, uint64_t factor, uint32_t* out) {
    for (size_t high = 1; high < suit.freeRanks; ++high) {
        const uint32_t upper = suit.rank[high];
        // The upper rank goes first: without it, the lower one still has its number.
        const uint32_t rest = without(suit.board, upper);
        for (size_t low = 0; low < high; ++low) {
            const uint32_t lower = suit.rank[low];
            const uint32_t pair = lower + upper * (upper - 1) / 2;
            const uint64_t suitIndex = pair + rankPairs * colex(without(rest, lower));
            out[holdingNumber(suit.position[low], suit.position[high])] =
                static_cast<uint32_t>(base + factor * suitIndex);
        }
    }
}

// One hole card in each of two suits, with the factors of their digits. Where both hold as many
// board cards, neither comes first: one digit, the first factor's, counts the multiset of the two.
void indexTwoSuits(const BoardSuit& a, const BoardSuit& b, uint64_t base, uint64_t factorA,
                   uint64_t factorB, uint32_t* out) {
    const bool alike = a.cards() == b.cards();
    for (size_t i = 0; i < a.freeRanks; ++i)
        for (size_t j = 0; j < b.freeRanks; ++j) {
            const uint64_t x = a.single[i];
            const uint64_t y = b.single[j];
            uint64_t index = base;
            if (alike) {
                const uint64_t more = std::max(x, y);
                index += factorA * (std::min(x, y) + more * (more + 1) / 2);
            } else {
                index += factorA * x + factorB * y;
            }
            const size_t p = a.position[i];
            const size_t q = b.position[j];
            out[holdingNumber(std::min(p, q), std::max(p, q))] = static_cast<uint32_t>(index);
        }
}

} // namespace

HoldingIndexer::HoldingIndexer(int round, const hand_indexer_t& indexer)
    : boardCards_(roundBoardCards[static_cast<size_t>(round)]), size_(indexer.round_size[1]) {
    assert(round >= 1 && round < holdemRounds);
    assert(indexer.rounds == 2 && indexer.cards_per_round[1] == boardCards_);
    assert(size_ <= UINT32_MAX);
    for (size_t i = 0; i < indexer.configurations[1]; ++i) {
        Configuration configuration{};
        std::copy_n(indexer.configuration[1][i], 4, configuration.words.begin());
        std::copy_n(indexer.configuration_to_suit_size[1][i], 4, configuration.suitSize.begin());
        configuration.offset = indexer.configuration_to_offset[1][i];
        configurations_.push_back(configuration);
    }
    assert(std::is_sorted(configurations_.begin(), configurations_.end(),
                          [](const auto& a, const auto& b) { return a.words < b.words; }));
}

const HoldingIndexer::Configuration& HoldingIndexer::find(std::array<uint32_t, 4> words) const {
    const auto at =
        std::lower_bound(configurations_.begin(), configurations_.end(), words,
                         [](const Configuration& c, const std::array<uint32_t, 4>& wanted) {
                             return c.words < wanted;
                         });
    assert(at != configurations_.end() && at->words == words);
    return *at;
}

// Suits with equal words are interchangeable and make one digit, their multiset; the digits follow
// each other from the greatest word down, the first one fastest (hand_index.h). A digit without
// hole cards is the same for all these holdings and goes into the base.
HoldingIndexer::Digits HoldingIndexer::digits(const Suits& suits, size_t s, size_t t) const {
    std::array<uint32_t, 4> words;
    for (size_t i = 0; i < 4; ++i)
        words[i] = suits[i].cards() + (uint32_t{i == s} + uint32_t{i == t}) * oneHoleCard;
    std::array<size_t, 4> order{0, 1, 2, 3};
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return words[a] > words[b]; });
    const Configuration& configuration =
        find({words[order[0]], words[order[1]], words[order[2]], words[order[3]]});

    Digits digits{configuration.offset, {}};
    uint64_t multiplier = 1;
    for (size_t first = 0; first < 4;) {
        size_t end = first;
        std::array<uint64_t, 4> members{};
        while (end < 4 && words[order[end]] == words[order[first]]) {
            digits.factor[order[end]] = multiplier;
            members[end - first] = suits[order[end]].bare;
            ++end;
        }
        const size_t count = end - first;
        if (words[order[first]] < oneHoleCard)
            digits.base += multisetIndex(members, count) * multiplier;
        multiplier *= multisetCount(configuration.suitSize[first], static_cast<unsigned>(count));
        first = end;
    }
    // The configuration has as many hands as the digits have values.
    assert(digits.base - configuration.offset < multiplier &&
           configuration.offset + multiplier <= size_);
    return digits;
}

void HoldingIndexer::indices(const uint8_t* board, uint32_t* out) const {
    const Suits suits = suitsOf(board, boardCards_);
    for (size_t s = 0; s < 4; ++s)
        for (size_t t = s; t < 4; ++t) {
            const auto [base, factor] = digits(suits, s, t);
            if (s == t)
                indexOneSuit(suits[s], base, factor[s], out);
            else
                indexTwoSuits(suits[s], suits[t], base, factor[s], factor[t], out);
        }
}

} // namespace tamarin
