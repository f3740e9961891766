// Renaming the suits of cards: hands and boards that a renaming turns into each other are alike
// where it leaves everything else as it is.
#pragma once

#include "game/showdown.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace tamarin {

// What each suit becomes.
using SuitOrder = std::array<int, 4>;

constexpr CardSet renameSuits(CardSet cards, const SuitOrder& order) {
    CardSet renamed = 0;
    for (size_t suit = 0; suit < order.size(); ++suit)
        renamed |= (cards >> (16 * suit) & 0x1fff) << (16 * order[suit]);
    return renamed;
}

// The renamings of which leaves(order) is true; the one that changes nothing comes first.
template <class Leaves>
std::vector<SuitOrder> suitOrders(const Leaves& leaves) {
    std::vector<SuitOrder> orders;
    SuitOrder order{0, 1, 2, 3};
    do
        if (leaves(order))
            orders.push_back(order);
    while (std::ranges::next_permutation(order).found);
    return orders;
}

} // namespace tamarin
