#include "response/board_hands.h"

#include "response/measured.h"

#include <set>

namespace tamarin::test {
namespace {

TEST(BoardHands, SortsByWhatWinsAndGroupsEquals) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const PublicDeck deck(*game);
    const CompiledTree tree(*game);
    const RandomStrategy strategy(tree, 5);
    PublicBoard board;
    board.cards = {4, 21, 30, 31, 50};
    const BoardHands hands = handsOnBoard(deck, strategy, 3, board, true);
    ASSERT_EQ(hands.size(), 1081U);
    CardSet common = 0;
    for (const uint8_t card : board.cards)
        common |= cardBit(card);
    const auto rank = [&](size_t i) {
        const auto cards = deck.cardsOf(hands.hands[i].number);
        EXPECT_EQ(cards[0], deck.cards()[hands.hands[i].low]);
        EXPECT_EQ(cards[1], deck.cards()[hands.hands[i].high]);
        return rankCardSet(common | cardBit(cards[0]) | cardBit(cards[1]));
    };
    for (size_t i = 0; i + 1 < hands.size(); ++i) {
        ASSERT_LE(rank(i), rank(i + 1));
        ASSERT_EQ(rank(i) == rank(i + 1), hands.groupEnd[i] > i + 1);
        if (hands.groupEnd[i] > i + 1) {
            ASSERT_EQ(hands.groupEnd[i], hands.groupEnd[i + 1]);
        }
    }
    EXPECT_EQ(hands.groupEnd.back(), 1081U);
    for (int seat = 0; seat < 2; ++seat) {
        const auto& present = hands.present[static_cast<size_t>(seat)];
        EXPECT_EQ(std::set<uint16_t>(present.begin(), present.end()).size(), present.size());
        for (size_t i = 0; i < hands.size(); i += 7) {
            std::vector<uint8_t> cards(2);
            std::ranges::copy(deck.cardsOf(hands.hands[i].number), cards.begin());
            cards.insert(cards.end(), board.cards.begin(), board.cards.end());
            ASSERT_EQ(present[hands.classes[static_cast<size_t>(seat)][i]],
                      strategy.classOf(seat, 3, cards));
        }
    }
}

TEST(BoardHands, BeforeTheLastRoundTheyKeepTheDecksOrder) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const PublicDeck deck(*game);
    const CompiledTree tree(*game);
    PublicBoard board;
    board.cards = {0, 21, 30};
    const BoardHands hands =
        handsOnBoard(deck, SimpleStrategy(tree, SimplePlay::call), 1, board, false);
    ASSERT_EQ(hands.size(), 1176U);
    EXPECT_TRUE(std::ranges::is_sorted(hands.hands, {}, &BoardHands::Hand::number));
    EXPECT_EQ(hands.hands.front().number, 2U); // cards 1 and 2
    EXPECT_EQ(hands.present[0], (std::vector<uint16_t>{0}));
    EXPECT_EQ(hands.classes[1], std::vector<uint16_t>(1176, 0));
}

} // namespace
} // namespace tamarin::test
