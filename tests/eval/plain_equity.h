// The oracle of the equity tests: every deal enumerated, every hand ranked, nothing clever.
#pragma once

#include "eval/equity.h"
#include "eval/hand_range.h"
#include "game/showdown.h"

#include <bit>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace plain {

inline CardSet cards(const std::string& text) {
    const auto parsed = tamarin::parseCards(text);
    EXPECT_TRUE(parsed.ok()) << text;
    return tamarin::cardSetOf(*parsed);
}

// Every hand of two of the cards that are not used.
inline std::vector<CardSet> handsWithout(CardSet used) {
    std::vector<CardSet> hands;
    for (uint8_t a = 0; a < 52; ++a)
        for (uint8_t b = 0; b < a; ++b)
            if (((cardBit(a) | cardBit(b)) & used) == 0)
                hands.push_back(cardBit(a) | cardBit(b));
    return hands;
}

// hands[0] against the other hands and `opponents` random ones, from card `from` of the board on.
inline void enumerate(tamarin::DealCounts& counts, std::vector<CardSet>& hands, CardSet board,
                      CardSet used, int missing, uint8_t from, int opponents) {
    if (missing > 0) {
        for (uint8_t card = from; card < 52; ++card)
            if ((used & cardBit(card)) == 0)
                enumerate(counts, hands, board | cardBit(card), used | cardBit(card), missing - 1,
                          static_cast<uint8_t>(card + 1), opponents);
        return;
    }
    if (opponents > 0) {
        for (const CardSet hand : handsWithout(used)) {
            hands.push_back(hand);
            enumerate(counts, hands, board, used | hand, 0, 52, opponents - 1);
            hands.pop_back();
        }
        return;
    }
    ++counts.deals;
    const int own = rankCardSet(board | hands[0]);
    size_t tied = 0;
    for (size_t i = 1; i < hands.size(); ++i) {
        const int other = rankCardSet(board | hands[i]);
        if (other > own)
            return;
        tied += other == own;
    }
    ++counts.best[tied];
}

inline tamarin::DealCounts equity(std::vector<CardSet> hands, CardSet board, int opponents) {
    CardSet used = board;
    for (const CardSet hand : hands)
        used |= hand;
    tamarin::DealCounts counts;
    enumerate(counts, hands, board, used, 5 - std::popcount(board), 0, opponents);
    return counts;
}

} // namespace plain
