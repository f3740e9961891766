#include "response/public_deck.h"

#include "abstraction/boards.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace tamarin {

namespace {

// Of the suits from first on, the plain one first.
std::vector<SuitRenaming> allRenamings(uint8_t first) {
    std::vector<SuitRenaming> renamings;
    for (uint8_t a = 0; a < MAX_SUITS; ++a)
        for (uint8_t b = 0; b < MAX_SUITS; ++b)
            for (uint8_t c = 0; c < MAX_SUITS; ++c)
                for (uint8_t d = 0; d < MAX_SUITS; ++d) {
                    const SuitRenaming suits{a, b, c, d};
                    bool fits = (1U << a | 1U << b | 1U << c | 1U << d) == (1U << MAX_SUITS) - 1;
                    for (uint8_t suit = 0; suit < first; ++suit)
                        fits = fits && suits[suit] == suit;
                    if (fits)
                        renamings.push_back(suits);
                }
    return renamings;
}

} // namespace

PublicDeck::PublicDeck(const Game& game) {
    // As the rules engine deals: a short deck lacks its lowest ranks and its first suits.
    for (int rank = MAX_RANKS - game.numRanks; rank < MAX_RANKS; ++rank)
        for (int suit = MAX_SUITS - game.numSuits; suit < MAX_SUITS; ++suit) {
            const auto card = static_cast<uint8_t>(rank * MAX_SUITS + suit);
            places_[card] = static_cast<uint8_t>(cards_.size());
            cards_.push_back(card);
        }
    for (size_t high = 1; high < cards_.size(); ++high)
        for (size_t low = 0; low < high; ++low)
            holdings_.push_back({static_cast<uint8_t>(low), static_cast<uint8_t>(high)});

    renamings_ = allRenamings(static_cast<uint8_t>(MAX_SUITS - game.numSuits));

    constexpr size_t none = SIZE_MAX;
    handClasses_.assign(holdings_.size(), none);
    for (size_t h = 0; h < holdings_.size(); ++h) {
        if (handClasses_[h] == none) {
            const auto cards = cardsOf(h);
            for (const SuitRenaming& renaming : renamings_)
                handClasses_[numberOf(renamed(cards[0], renaming), renamed(cards[1], renaming))] =
                    handClassSizes_.size();
            handClassSizes_.push_back(0);
        }
        ++handClassSizes_[handClasses_[h]];
    }
}

size_t PublicDeck::numberOf(uint8_t card, uint8_t other) const {
    const auto [low, high] = std::minmax(places_[card], places_[other]);
    assert(low < high);
    return holdingNumber(low, high);
}

HoleCards PublicDeck::cardsOf(size_t holding) const {
    return {cards_[holdings_[holding].low], cards_[holdings_[holding].high]};
}

PublicBoard PublicDeck::empty() const {
    return {{}, renamings_, 1};
}

// Every set of so many cards is turned by every symmetry of the board; the least of the sets that
// come out stands for all of them, and the symmetries that leave it as it is stay.
std::vector<PublicBoard> PublicDeck::extend(const PublicBoard& board, unsigned count) const {
    std::vector<uint8_t> left;
    for (const uint8_t card : cards_)
        if (std::ranges::find(board.cards, card) == board.cards.end())
            left.push_back(card);
    assert(count >= 1 && count <= left.size());
    std::vector<PublicBoard> boards;
    std::vector<bool> chosen(left.size());
    std::fill_n(chosen.begin(), count, true);
    do {
        std::vector<uint8_t> next;
        for (size_t i = 0; i < left.size(); ++i)
            if (chosen[i])
                next.push_back(left[i]);
        PublicBoard extended{board.cards, {}, 0};
        bool least = true;
        for (const SuitRenaming& suits : board.symmetry) {
            std::vector<uint8_t> image;
            for (const uint8_t card : next)
                image.push_back(renamed(card, suits));
            std::ranges::sort(image);
            least = least && image >= next;
            if (image == next)
                extended.symmetry.push_back(suits);
        }
        if (!least)
            continue;
        extended.weight = static_cast<unsigned>(board.symmetry.size() / extended.symmetry.size());
        extended.cards.insert(extended.cards.end(), next.begin(), next.end());
        boards.push_back(std::move(extended));
    } while (std::prev_permutation(chosen.begin(), chosen.end()));
    return boards;
}

} // namespace tamarin
