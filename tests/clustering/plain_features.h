// The features of a hand counted the plain way, from the rules engine's ranking.
#pragma once

#include "abstraction/random_cards.h"
#include "clustering/hand_features.h"
#include "game/showdown.h"

#include <array>
#include <map>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

// Wins in halves and deals of a hand (two hole cards, five board cards) against the opponents that
// a key is given for: by key.
struct PlainTally {
    uint32_t wins = 0;
    uint32_t deals = 0;
};
template <class KeyOf>
std::map<int, PlainTally> plainTallies(const std::vector<uint8_t>& cards, const KeyOf& keyOf) {
    CardSet board = 0;
    for (size_t i = 2; i < 7; ++i)
        board |= cardBit(cards[i]);
    const CardSet own = cardBit(cards[0]) | cardBit(cards[1]);
    const int rank = rankCardSet(board | own);
    std::map<int, PlainTally> tallies;
    for (uint8_t c = 1; c < deckCards; ++c)
        for (uint8_t d = 0; d < c; ++d) {
            const CardSet other = cardBit(c) | cardBit(d);
            if ((other & (board | own)) != 0)
                continue;
            const int against = rankCardSet(board | other);
            PlainTally& tally = tallies[keyOf(d, c)];
            tally.wins += against < rank ? 2U : against == rank ? 1U : 0U;
            ++tally.deals;
        }
    return tallies;
}

inline uint32_t plainPot(const std::vector<uint8_t>& cards) {
    const PlainTally tally = plainTallies(cards, [](uint8_t, uint8_t) { return 0; })[0];
    EXPECT_EQ(tally.deals, 990U);
    return tally.wins;
}

// The pot equities on all rivers that a hand of two hole cards and three or four board cards can
// meet.
inline std::vector<uint32_t> plainPots(std::vector<uint8_t> cards) {
    if (cards.size() == 7)
        return {plainPot(cards)};
    std::vector<uint32_t> pots;
    // In ascending order, so that a pair of turn and river comes once.
    const uint8_t first = cards.size() == 6 && cards[5] >= 64 ? cards[5] & 63U : 0;
    for (uint8_t card = first; card < deckCards; ++card) {
        std::vector<uint8_t> grown = cards;
        for (uint8_t& known : grown)
            known &= 63U;
        if (std::find(grown.begin(), grown.end(), card) != grown.end())
            continue;
        grown.push_back(card);
        if (grown.size() == 6)
            grown[5] |= 64U; // what comes next comes after it
        const std::vector<uint32_t> own = plainPots(grown);
        pots.insert(pots.end(), own.begin(), own.end());
    }
    return pots;
}

// A histogram's row by its definition: how many equities lie in bin j + 1 or above. A pot of p
// halves is in bin b when b / 49 <= p / 1980 < (b + 1) / 49, the last bin also at the end.
inline std::array<uint32_t, histogramWidth> plainCounts(const std::vector<uint32_t>& pots) {
    std::array<uint32_t, histogramWidth> counts{};
    for (const uint32_t pot : pots)
        for (uint32_t j = 0; j < histogramWidth; ++j)
            counts[j] += pot * 49 >= (j + 1) * 1980;
    return counts;
}

} // namespace tamarin::test
