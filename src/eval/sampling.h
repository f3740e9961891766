// The sampling loop behind both families of evaluateHand functions.
//
// A deal completes the board and gives every opponent two cards; the hand wins when it beats all of
// them. A tie with anyone counts as a loss, not as half a win: the equity tables are made of such
// numbers. Which cards a deal uses, and therefore every random number drawn, is fixed:
//
//   deck[0 .. d-1]               the d board cards still missing
//   deck[d + 2k], deck[d + 2k+1] opponent k's cards
//
// The deck holds the unknown cards in ascending order at first and keeps its order from one deal to
// the next; each deal shuffles the positions it uses.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>

namespace tamarin {

// cards: knownCards (2, 5, 6 or 7) different card bytes, hole cards first. players counts the hand
// itself; without opponents the answer is 1 and nothing is drawn. shuffleDeck(deck, count, size)
// shuffles count positions of the deck; rankSeven(cards) ranks seven cards, larger is better.
// Returns wins / deals.
template <int knownCards, class ShuffleDeck, class RankSeven>
double sampleWinRate(const unsigned char* cards, unsigned int players, int deals,
                     const ShuffleDeck& shuffleDeck, const RankSeven& rankSeven) {
    static_assert(knownCards == 2 || (knownCards >= 5 && knownCards <= 7));
    constexpr int missing = 7 - knownCards;
    if (players <= 1)
        return 1.0;

    bool known[256] = {};
    for (int i = 0; i < knownCards; ++i)
        known[cards[i]] = true;
    unsigned char deck[52];
    int deckSize = 0;
    for (unsigned char card = 0; card < 52; ++card)
        if (!known[card])
            deck[deckSize++] = card;
    const auto opponents = static_cast<int>(std::min(players - 1, 52U));
    const int used = missing + 2 * opponents;
    assert(used <= deckSize);

    unsigned char own[7];
    unsigned char other[7];
    std::copy(cards, cards + knownCards, own);
    std::copy(cards + 2, cards + knownCards, other + 2);

    int wins = 0;
    int losses = 0;
    for (int deal = 0; deal < deals; ++deal) {
        shuffleDeck(deck, used, deckSize);
        for (int i = 0; i < missing; ++i)
            own[knownCards + i] = other[knownCards + i] = deck[i];
        const uint32_t value = rankSeven(own);
        bool beaten = false;
        for (int k = 0; k < opponents && !beaten; ++k) {
            other[0] = deck[missing + 2 * k];
            other[1] = deck[missing + 2 * k + 1];
            beaten = value <= rankSeven(other);
        }
        if (beaten)
            ++losses;
        else
            ++wins;
    }
    return static_cast<double>(wins) / (wins + losses);
}

} // namespace tamarin
