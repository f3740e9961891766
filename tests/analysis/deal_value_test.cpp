#include "analysis/deal_value.h"

#include "analysis/all_deals.h"
#include "game/random_hand.h"

#include <set>

namespace tamarin::test {
namespace {

// The mean of the payoffs of all lines, weighed with their probabilities, deal by deal.
TEST(DealValue, IsTheMeanOverAllThatBothMayDo) {
    const Table table(shortGame(2, 3, "2 2", "10 20", "0 1"));
    const std::array<const HandStrategy*, 2> strategies{table.strategies[0].get(),
                                                        table.strategies[1].get()};
    std::map<std::vector<uint8_t>, std::pair<double, double>> deals; // value, probability
    double whole = 0;
    table.forEachHand([&](const PlayedHand& hand, double probability, double payoff) {
        whole += probability * payoff;
        if (hand.board.empty())
            return; // ended before the deal was known
        std::vector<uint8_t> cards(hand.hole[0].begin(), hand.hole[0].end());
        cards.insert(cards.end(), hand.hole[1].begin(), hand.hole[1].end());
        cards.insert(cards.end(), hand.board.begin(), hand.board.end());
        deals[cards];
    });
    ASSERT_EQ(deals.size(), 180U);
    double mean = 0;
    std::set<double> different;
    for (const auto& [cards, kept] : deals) {
        const std::array<HoleCards, 2> hole{{{cards[0], cards[1]}, {cards[2], cards[3]}}};
        const std::vector<uint8_t> board(cards.begin() + 4, cards.end());
        const double value = dealValue(*table.game, table.tree, strategies, hole, board);
        // By recursion, without the lines that end before the board counted apart.
        double plain = 0;
        const auto follow = [&](const auto& self, int32_t at) -> double {
            if (at < 0)
                return payoffAt(table.tree.settlements()[static_cast<size_t>(~at)], 0, hole[0],
                                hole[1], board);
            const auto& node = table.tree.nodes()[static_cast<size_t>(at)];
            const auto shown =
                board.begin() + static_cast<std::ptrdiff_t>(table.boardCards(node.round));
            const ActionShares shares = table.shares(at, hole[node.player], {board.begin(), shown});
            double sum = 0;
            for (size_t a = 0; a < shares.size(); ++a)
                if (node.child[a] != CompiledTree::noChild)
                    sum += shares[a] * self(self, node.child[a]);
            return sum;
        };
        plain = follow(follow, 0);
        EXPECT_NEAR(value, plain, 1e-12);
        mean += value / static_cast<double>(deals.size());
        different.insert(value);
    }
    EXPECT_NEAR(mean, whole, 1e-9);
    EXPECT_GT(different.size(), 50U);
}

TEST(WholeBoard, KeepsWhatWasShownAndIsAlikeForDuplicates) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const PublicDeck deck(*game);
    PlayedHand hand{{{{0, 5}, {51, 46}}}, {8, 12, 18}, {}};
    const auto board = wholeBoard(*game, deck, hand);
    ASSERT_EQ(board.size(), 5U);
    EXPECT_TRUE(std::equal(hand.board.begin(), hand.board.end(), board.begin()));
    std::set<uint8_t> all(board.begin(), board.end());
    all.insert({0, 5, 51, 46});
    EXPECT_EQ(all.size(), 9U);
    // The other hand of a duplicate deal may have been shown more of the board, or less.
    hand.actions = {2, 0};
    EXPECT_EQ(wholeBoard(*game, deck, hand), board);
    // Of hands that ended before the flop every card of the deck comes equally often.
    std::array<int, 52> seen{};
    hand.board.clear();
    int hands = 0;
    for (uint8_t a = 4; a < 52; ++a)
        for (uint8_t b = 4; b < a; ++b, ++hands) {
            hand.hole = {{{0, 1}, {a, b}}};
            for (const uint8_t card : wholeBoard(*game, deck, hand))
                ++seen[card];
        }
    EXPECT_EQ(seen[0] + seen[1], 0);
    for (uint8_t card = 4; card < 52; ++card) // about one in ten hands
        EXPECT_NEAR(seen[card], hands * 5 / 50.0, 45) << int{card};
}

} // namespace
} // namespace tamarin::test
