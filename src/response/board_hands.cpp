#include "response/board_hands.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

BoardHands handsOnBoard(const PublicDeck& deck, const HandStrategy& strategy, int round,
                        const PublicBoard& board, bool ranked) {
    CardSet cards = 0;
    for (const uint8_t card : board.cards)
        cards |= cardBit(card);
    struct Ranked {
        int rank;
        BoardHands::Hand hand;
    };
    std::vector<Ranked> live;
    for (size_t h = 0; h < deck.holdings().size(); ++h) {
        const auto [low, high] = deck.holdings()[h];
        const CardSet hole = cardBit(deck.cards()[low]) | cardBit(deck.cards()[high]);
        if ((hole & cards) == 0)
            live.push_back(
                {ranked ? rankCardSet(hole | cards) : 0, {static_cast<uint16_t>(h), low, high}});
    }
    if (ranked)
        std::ranges::stable_sort(live, {}, &Ranked::rank);
    BoardHands made;
    made.hands.reserve(live.size());
    for (const Ranked& each : live)
        made.hands.push_back(each.hand);
    if (ranked) {
        made.groupEnd.resize(live.size());
        for (size_t i = live.size(); i-- > 0;)
            made.groupEnd[i] = i + 1 < live.size() && live[i + 1].rank == live[i].rank
                                   ? made.groupEnd[i + 1]
                                   : static_cast<uint16_t>(i + 1);
    }
    std::vector<uint8_t> hand(2);
    hand.insert(hand.end(), board.cards.begin(), board.cards.end());
    std::vector<uint16_t> place;
    for (int seat = 0; seat < 2; ++seat) {
        auto& classes = made.classes[static_cast<size_t>(seat)];
        auto& present = made.present[static_cast<size_t>(seat)];
        classes.resize(live.size());
        const size_t numClasses = strategy.numClasses(seat, round);
        if (numClasses == 1) {
            present = {0};
            continue; // all in the first place
        }
        constexpr uint16_t none = UINT16_MAX; // of fewer hands than that
        place.assign(numClasses, none);
        for (size_t i = 0; i < live.size(); ++i) {
            const auto hole = deck.cardsOf(made.hands[i].number);
            hand[0] = hole[0];
            hand[1] = hole[1];
            const uint16_t handClass = strategy.classOf(seat, round, hand);
            assert(handClass < numClasses);
            if (place[handClass] == none) {
                place[handClass] = static_cast<uint16_t>(present.size());
                present.push_back(handClass);
            }
            classes[i] = place[handClass];
        }
    }
    return made;
}

} // namespace tamarin
