#include "abstraction/next_card.h"

#include <algorithm>
#include <array>

namespace tamarin {

namespace {

inline void addWins(Wins& sum, RiverWins wins) {
    sum.overOne += winsOverOne(wins);
    sum.overTwo += winsOverTwo(wins);
}
inline void addWins(Wins& sum, const Wins& wins) {
    sum.overOne += wins.overOne;
    sum.overTwo += wins.overTwo;
}

template <class Count>
void addRow(const Count* row, const std::array<uint32_t, deckCards>& positions, size_t cardsLeft,
            size_t without, Wins* sums) {
    for (size_t high = 1; high < cardsLeft; ++high) {
        if (high == without)
            continue;
        Wins* const sumsOfHigh = sums + holdingNumber(0, high);
        const uint32_t placeOfHigh = positions[high];
        const auto addRange = [&](size_t begin, size_t end) {
            for (size_t low = begin; low < end; ++low) {
                const uint32_t a = std::min(positions[low], placeOfHigh);
                const uint32_t b = std::max(positions[low], placeOfHigh);
                addWins(sumsOfHigh[low], row[b * (b - 1) / 2 + a]);
            }
        };
        addRange(0, std::min(high, without));
        addRange(without + 1, high);
    }
}

template <class Count>
void sumOverNext(const BoardSet& next, const uint8_t* board,
                 const std::function<const Count*(size_t)>& row, Wins* sums) {
    const int cards = next.cards() - 1;
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(board, cards, left);
    std::fill_n(sums, numHoldings(cardsLeft), Wins{});
    uint8_t grown[5];
    std::copy_n(board, cards, grown);
    for (size_t dealt = 0; dealt < cardsLeft; ++dealt) {
        grown[cards] = left[dealt];
        const BoardSet::Place place = next.find(grown);
        // Where each card that is left lies among the cards that the representative leaves.
        std::array<uint8_t, deckCards> positionOf;
        uint8_t leftThere[deckCards];
        const size_t count = cardsWithout(next.board(place.number), next.cards(), leftThere);
        for (size_t i = 0; i < count; ++i)
            positionOf[leftThere[i]] = static_cast<uint8_t>(i);
        std::array<uint32_t, deckCards> positions{};
        for (size_t i = 0; i < cardsLeft; ++i)
            if (i != dealt)
                positions[i] = positionOf[(left[i] & ~3U) | place.suit[left[i] & 3U]];
        addRow(row(place.number), positions, cardsLeft, dealt, sums);
    }
}

} // namespace

void sumNextCards(const BoardSet& next, const uint8_t* board,
                  const std::function<const RiverWins*(size_t)>& row, Wins* sums) {
    sumOverNext<RiverWins>(next, board, row, sums);
}
void sumNextCards(const BoardSet& next, const uint8_t* board,
                  const std::function<const Wins*(size_t)>& row, Wins* sums) {
    sumOverNext<Wins>(next, board, row, sums);
}

} // namespace tamarin
