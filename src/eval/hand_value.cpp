#include "eval/hand_value.h"

#include "eval/rank_masks.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <vector>

namespace tamarin {

const std::array<const char*, handCategories> categoryNames{
    "High card", "One pair",   "Two pair",       "Three of a kind", "Straight",
    "Flush",     "Full house", "Four of a kind", "Straight flush"};

namespace {

struct Scales {
    std::array<uint16_t, straightFlushRank + 13> valueOfRank{};
    std::array<uint16_t, handValueCount> denseOfValue{};
};

uint32_t categoryOfRank(int rank) {
    constexpr std::array<int, handCategories - 1> starts{
        onePairRank, twoPairRank,   threeOfAKindRank, straightRank,
        flushRank,   fullHouseRank, fourOfAKindRank,  straightFlushRank};
    return 1 + static_cast<uint32_t>(std::upper_bound(starts.begin(), starts.end(), rank) -
                                     starts.begin());
}

// Calls visit(masks) for every multiset of five ranks with at most four of each.
template <class Visit>
void forEachRankMultiset(RankMasks masks, uint32_t from, int left, const Visit& visit) {
    if (left == 0) {
        visit(masks);
        return;
    }
    for (uint32_t rank = from; rank < 13; ++rank)
        if ((masks.quads >> rank & 1) == 0)
            forEachRankMultiset(withRank(masks, rank), rank, left - 1, visit);
}

Scales makeScales() {
    const ShowdownTables& tables = showdownTables();
    std::vector<bool> taken(straightFlushRank + 13, false);
    forEachRankMultiset({}, 0, 5, [&](RankMasks masks) {
        taken[static_cast<size_t>(rankWithoutFlush(tables, masks))] = true;
        if (masks.pairs == 0)
            taken[tables.oneSuitVal[masks.any]] = true;
    });

    Scales scales;
    std::array<uint32_t, handCategories> within{};
    uint16_t dense = 0;
    for (size_t rank = 0; rank < taken.size(); ++rank) {
        if (!taken[rank])
            continue;
        const uint32_t category = categoryOfRank(static_cast<int>(rank));
        const uint32_t value = category << 12 | ++within[category - 1];
        scales.valueOfRank[rank] = static_cast<uint16_t>(value);
        scales.denseOfValue[value] = ++dense;
    }
    assert(within == categorySizes && dense == handClasses);
    return scales;
}

const Scales& scales() {
    static const Scales made = makeScales();
    return made;
}

constexpr std::array<const char*, 13> rankNames{"two",   "three", "four", "five", "six",
                                                "seven", "eight", "nine", "ten",  "jack",
                                                "queen", "king",  "ace"};

std::string plural(uint32_t rank) {
    return std::string(rankNames[rank]) + (rank == 4 ? "es" : "s");
}

// Removes and returns the highest rank.
uint32_t takeTop(uint32_t& ranks) {
    const auto top = static_cast<uint32_t>(std::bit_width(ranks)) - 1;
    ranks &= ~(1U << top);
    return top;
}

// "ace-king-nine-five-two"
std::string best(uint32_t ranks, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            text += '-';
        text += rankNames[takeTop(ranks)];
    }
    return text;
}

std::string kickers(uint32_t ranks, int count) {
    std::string text = count == 1 ? ", kicker " : ", kickers ";
    return text += best(ranks, count);
}

} // namespace

uint32_t handValueOfRank(int showdownRank) {
    const Scales& made = scales();
    assert(showdownRank >= 0 && static_cast<size_t>(showdownRank) < made.valueOfRank.size());
    return made.valueOfRank[static_cast<size_t>(showdownRank)];
}

uint32_t denseRankOfValue(uint32_t value) {
    return value < handValueCount ? scales().denseOfValue[value] : 0;
}

std::string describeHand(CardSet cards) {
    const uint32_t value = handValueOf(cards);
    const uint32_t category = value >> 12;
    assert(category >= 1 && category <= handCategories);
    const RankMasks masks = rankMasksOf(cards);
    uint32_t any = masks.any;
    uint32_t pairs = masks.pairs;
    uint32_t trips = masks.trips;
    uint32_t quads = masks.quads;

    std::string text = categoryNames[category - 1];
    switch (category) {
    case 1:
        return text + ", " + best(any, 5);
    case 2: {
        const uint32_t pair = takeTop(pairs);
        return text + ", " + plural(pair) + kickers(any & ~(1U << pair), 3);
    }
    case 3: {
        const uint32_t high = takeTop(pairs);
        const uint32_t low = takeTop(pairs);
        return text + ", " + plural(high) + " and " + plural(low) +
               kickers(any & ~(1U << high) & ~(1U << low), 1);
    }
    case 4: {
        const uint32_t three = takeTop(trips);
        return text + ", " + plural(three) + kickers(any & ~(1U << three), 2);
    }
    case 5: // the ten straights, and straight flushes below, by top card: five to ace
        return text + ", " + rankNames[(value & 0xfff) + 2] + " high";
    case 6: {
        uint32_t flush = 0;
        for (int suit = 0; suit < 4; ++suit)
            if (const auto mask = static_cast<uint32_t>(cards >> (16 * suit) & 0x1fff);
                std::popcount(mask) >= 5)
                flush = mask;
        return text + ", " + best(flush, 5);
    }
    case 7: {
        const uint32_t three = takeTop(trips);
        uint32_t rest = pairs & ~(1U << three);
        return text + ", " + plural(three) + " over " + plural(takeTop(rest));
    }
    case 8: {
        const uint32_t four = takeTop(quads);
        return text + ", " + plural(four) + kickers(any & ~(1U << four), 1);
    }
    default:
        return text + ", " + rankNames[(value & 0xfff) + 2] + " high" +
               (value == largestHandValue ? " (royal flush)" : "");
    }
}

} // namespace tamarin
