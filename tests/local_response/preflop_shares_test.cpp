#include "local_response/preflop_shares.h"

#include "eval/preflop_equity.h"
#include "local_response/plain_local.h"
#include "local_response/roll_out.h"
#include "local_response/showdown_counts.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Of so many boards the standard error is at most 0.5 / sqrt(boards).
TEST(PreflopShares, LieAboutTheExactOnes) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const PublicDeck deck(*game);
    const auto drawn = PreflopShares::draw(*game, deck, 400, 1, {2, {}, {}});
    ASSERT_TRUE(drawn.ok());
    const RollOut rollOut(*game, deck, &*drawn);
    EXPECT_TRUE(rollOut.can(0));
    EXPECT_FALSE(rollOut.isExact(0));
    const auto number = [&](const char* low, const char* high) {
        uint8_t a = 0;
        uint8_t b = 0;
        EXPECT_TRUE(readCard(low, &a) > 0 && readCard(high, &b) > 0);
        return static_cast<uint16_t>(deck.numberOf(a, b));
    };
    // Pairs against what dominates them, suits that matter and do not.
    const std::vector<std::pair<uint16_t, uint16_t>> pairs{
        {number("2c", "2d"), number("As", "Kh")}, {number("As", "Ah"), number("Kd", "Kc")},
        {number("Jh", "Th"), number("As", "Kd")}, {number("As", "Kd"), number("Jh", "Th")},
        {number("7c", "2d"), number("7h", "2s")}, {number("Ah", "3h"), number("Qh", "8h")}};
    for (const auto& [own, other] : pairs) {
        std::vector<double> shares;
        rollOut.against(deck.cardsOf(own), {}, std::vector<uint16_t>{other}, shares);
        const std::array<CardSet, 2> hands{setOfCards(deck.cardsOf(own)),
                                           setOfCards(deck.cardsOf(other))};
        EXPECT_NEAR(shares[0], equityOf(exactPreflopEquity(hands, 0)).pot, 4 * 0.5 / 20) << own;
    }
}

// Hands alike have the same answers against hands alike, whatever the suits; threads change none.
TEST(PreflopShares, KnowHandsUpToSuits) {
    const GamePtr game = parseGame(shortGame(4, 4, "2 2 2", "10 10 20", "0 3 1"));
    const PublicDeck deck(*game);
    const auto one = PreflopShares::draw(*game, deck, 50, 9, {1, {}, {}});
    const auto two = PreflopShares::draw(*game, deck, 50, 9, {3, {}, {}});
    const auto other = PreflopShares::draw(*game, deck, 50, 8, {1, {}, {}});
    const auto renamings = deck.empty().symmetry;
    ASSERT_EQ(renamings.size(), 24U);
    std::set<double> different;
    size_t moved = 0;
    for (size_t own = 0; own < deck.holdings().size(); own += 5)
        for (size_t h = 0; h < deck.holdings().size(); h += 3) {
            const auto a = deck.cardsOf(own);
            const auto b = deck.cardsOf(h);
            if ((setOfCards(a) & setOfCards(b)) != 0)
                continue;
            const auto share = [&](const PreflopShares& shares, const SuitRenaming& to) {
                std::vector<double> row;
                const std::array<uint8_t, 2> hole{renamed(a[0], to), renamed(a[1], to)};
                shares.against(hole,
                               std::vector<uint16_t>{static_cast<uint16_t>(
                                   deck.numberOf(renamed(b[0], to), renamed(b[1], to)))},
                               row);
                return row[0];
            };
            const double plain = share(*one, renamings[0]);
            different.insert(plain);
            EXPECT_EQ(share(*two, renamings[0]), plain);
            moved += share(*other, renamings[0]) != plain ? 1U : 0U;
            for (const SuitRenaming& to : renamings)
                EXPECT_EQ(share(*one, to), plain);
        }
    EXPECT_GT(different.size(), 50U);
    EXPECT_GT(moved, 100U);
}

TEST(PreflopShares, CanBeStopped) {
    const GamePtr game = parseGame(shortGame(4, 4, "2 2 2", "10 10 20", "0 3 1"));
    const PublicDeck deck(*game);
    const auto drawn = PreflopShares::draw(*game, deck, 5, 1, {1, {}, [] { return true; }});
    ASSERT_FALSE(drawn.ok());
    EXPECT_EQ(drawn.error(), stopped().message);
}

} // namespace
} // namespace tamarin::test
