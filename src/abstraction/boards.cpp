#include "abstraction/boards.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

std::array<uint32_t, 4> rankMasks(const uint8_t* cards, int count) {
    std::array<uint32_t, 4> masks{};
    for (int i = 0; i < count; ++i)
        masks[cards[i] & 3U] |= 1U << (cards[i] >> 2U);
    return masks;
}

// For each suit, its place when the suits are sorted by falling mask. Equal masks keep their order:
// either order renames the board to the same one.
std::array<uint8_t, 4> sortedPlaces(const std::array<uint32_t, 4>& masks) {
    std::array<uint8_t, 4> places{};
    for (size_t s = 0; s < 4; ++s)
        for (size_t t = 0; t < 4; ++t)
            places[s] = static_cast<uint8_t>(
                places[s] + (masks[t] > masks[s] || (masks[t] == masks[s] && t < s)));
    return places;
}

// Distinct orderings of the four masks.
uint8_t orderings(std::array<uint32_t, 4> masks) {
    std::sort(masks.begin(), masks.end());
    uint8_t count = 0;
    do {
        ++count;
    } while (std::next_permutation(masks.begin(), masks.end()));
    return count;
}

} // namespace

BoardSet::BoardSet(int cards) : cards_(cards) {
    assert(cards >= 3 && cards <= 5);
    const uint8_t structure[] = {static_cast<uint8_t>(cards)};
    [[maybe_unused]] const bool made = hand_indexer_init(1, structure, &indexer_);
    assert(made);
    boards_.resize(hand_indexer_size(&indexer_, 0));
    multiplicities_.resize(boards_.size());
    for (size_t number = 0; number < boards_.size(); ++number) {
        std::array<uint8_t, 5>& board = boards_[number];
        [[maybe_unused]] const bool found = hand_unindex(&indexer_, 0, number, board.data());
        assert(found);
        const std::array<uint32_t, 4> masks = rankMasks(board.data(), cards);
        const std::array<uint8_t, 4> places = sortedPlaces(masks);
        for (size_t i = 0; i < static_cast<size_t>(cards); ++i)
            board[i] = static_cast<uint8_t>((board[i] & ~3U) | places[board[i] & 3U]);
        std::sort(board.begin(), board.begin() + cards);
        multiplicities_[number] = orderings(masks);
    }
}

BoardSet::~BoardSet() {
    hand_indexer_free(&indexer_);
}

BoardSet::Place BoardSet::find(const uint8_t* cards) const {
    return {hand_index_last(&indexer_, cards), sortedPlaces(rankMasks(cards, cards_))};
}

size_t cardsWithout(const uint8_t* cards, int count, uint8_t* left) {
    uint64_t taken = 0;
    for (int i = 0; i < count; ++i)
        taken |= uint64_t{1} << cards[i];
    size_t size = 0;
    for (uint8_t card = 0; card < deckCards; ++card)
        if (!(taken >> card & 1U))
            left[size++] = card;
    return size;
}

} // namespace tamarin
