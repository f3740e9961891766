#include "local_response/roll_out.h"

#include "eval/exact_equity.h"
#include "local_response/plain_local.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::vector<uint16_t> disjoint(const PublicDeck& deck, const Cards& cards) {
    std::vector<uint16_t> holdings;
    for (size_t h = 0; h < deck.holdings().size(); ++h) {
        const auto hand = deck.cardsOf(h);
        if (!has(cards, hand[0]) && !has(cards, hand[1]))
            holdings.push_back(static_cast<uint16_t>(h));
    }
    return holdings;
}

// In hold'em, from the flop on, what `equity` counts.
TEST(RollOut, CountsWhatTheExactEquityCounts) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const PublicDeck deck(*game);
    const RollOut rollOut(*game, deck);
    EXPECT_FALSE(rollOut.can(0));
    EXPECT_TRUE(rollOut.can(1));
    const Cards hole{12, 17};
    const Cards board{13, 22, 30, 45, 50};
    for (const size_t out : {3U, 4U, 5U}) {
        Cards known = hole;
        known.insert(known.end(), board.begin(), board.begin() + static_cast<ptrdiff_t>(out));
        const auto holdings = disjoint(deck, known);
        std::vector<double> shares;
        rollOut.against(hole, {board.data(), out}, holdings, shares);
        ASSERT_EQ(shares.size(), holdings.size());
        CardSet cards = 0;
        for (size_t i = 0; i < out; ++i)
            cards |= cardBit(board[i]);
        for (size_t i = 0; i < holdings.size(); i += out == 3 ? 97 : 13) {
            const auto other = deck.cardsOf(holdings[i]);
            const std::array<CardSet, 2> hands{cardBit(hole[0]) | cardBit(hole[1]),
                                               cardBit(other[0]) | cardBit(other[1])};
            EXPECT_DOUBLE_EQ(shares[i], equityOf(exactEquity(hands, cards, 0)).pot);
        }
    }
}

// Hands of four cards, which the tables of seven do not know, before and after the board.
TEST(RollOut, RanksShortHands) {
    const GamePtr game = parseGame(shortGame(3, 4, "2 2 2", "10 10 20", "0 1 1"));
    const PublicDeck deck(*game);
    const RollOut rollOut(*game, deck);
    EXPECT_TRUE(rollOut.can(0));
    const Cards hole{deck.cards()[0], deck.cards()[7]};
    const auto holdings = disjoint(deck, hole);
    std::vector<double> shares;
    rollOut.against(hole, {}, holdings, shares);
    double least = 1;
    double most = 0;
    for (size_t i = 0; i < holdings.size(); ++i) {
        const auto other = deck.cardsOf(holdings[i]);
        double sum = 0;
        double boards = 0;
        eachBoard(*game, deck, {hole[0], hole[1], other[0], other[1]}, [&](const Cards& board) {
            sum += 0.5 * (1 + showdown(hole, {other[0], other[1]}, board));
            boards += 1;
        });
        EXPECT_NEAR(shares[i], sum / boards, 1e-12);
        least = std::min(least, shares[i]);
        most = std::max(most, shares[i]);
    }
    EXPECT_LT(least, 0.35);
    EXPECT_GT(most, 0.65);
}

} // namespace
} // namespace tamarin::test
