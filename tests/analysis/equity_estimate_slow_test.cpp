// The estimate over the whole deck, whose pairs of hands before the flop take some seconds to
// count.
#include "analysis/all_deals.h"
#include "analysis/equity_estimate.h"
#include "analysis/luck_free.h"

namespace tamarin::test {
namespace {

// Two who only call: the estimate is the truth, and every hand comes out as the mean, 0. That the
// margins before the flop, on it, on the turn and on the river fit each other is in this, too.
TEST(EquityEstimate, OfTwoWhoCallLeavesNothing) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const PublicDeck deck(*game);
    const SimpleStrategy call(tree, SimplePlay::call);
    BoardMargins margins(*game, deck);
    ASSERT_TRUE(margins.prepare({}).ok());
    const EquityEstimate estimate(tree, call, margins);
    const LuckFree luckFree(*game, tree, deck, call, estimate);
    for (const char* text : {"STATE:0:cc/cc/cc/cc:2c7d|AsKh/4c5c6h/Td/2s",
                             "STATE:1:cc/cc/cc/cc:JcJd|9s9h/9cJh6h/Td/2s"}) {
        State state{};
        ASSERT_GT(readState(text, game.get(), &state), 0);
        const PlayedHand hand = playedHand(*game, state);
        for (int seat = 0; seat < 2; ++seat) {
            const auto result = luckFree.of(hand, seat);
            ASSERT_TRUE(result.ok());
            EXPECT_NEAR(*result, 0, 1e-9);
        }
    }
}

} // namespace
} // namespace tamarin::test
