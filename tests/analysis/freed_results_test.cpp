#include "analysis/freed_results.h"

#include "analysis/all_deals.h"
#include "analysis/deal_value.h"

namespace tamarin::test {
namespace {

TEST(FreedResults, RefusesOtherGames) {
    EXPECT_TRUE(FreedResults::check(*loadGameFile("holdem.limit.2p.reverse_blinds.game")).ok());
    for (const char* name : {"holdem.limit.3p.game", "holdem.nolimit.2p.reverse_blinds.game",
                             "kuhn.limit.2p.game", "leduc.limit.2p.game"})
        EXPECT_EQ(FreedResults::check(*loadGameFile(name)).error(),
                  "results are freed of luck in limit games for two with two hole cards alone");
}

// Player 1 sits in seat 0 here, so that seats and players are not taken for each other.
TEST(FreedResults, SayWhatIsKnownOfSeatZero) {
    const Table table(shortGame(2, 4, "1 1", "10 20", "0 1"));
    std::array<std::shared_ptr<const HandStrategy>, 2> strategies;
    for (size_t seat = 0; seat < 2; ++seat)
        strategies[seat] = std::make_shared<RandomStrategy>(table.tree, seat == 0 ? 3 : 11);
    const BoardMargins margins(*table.game, table.deck);
    std::array<std::unique_ptr<EquityEstimate>, 2> estimates;
    std::array<std::unique_ptr<LuckFree>, 2> single;
    for (size_t seat = 0; seat < 2; ++seat) {
        estimates[seat] = std::make_unique<EquityEstimate>(table.tree, *strategies[seat], margins);
        single[seat] = std::make_unique<LuckFree>(*table.game, table.tree, table.deck,
                                                  *strategies[seat], *estimates[seat]);
    }
    FreedResults none(*table.game, table.tree);
    FreedResults first(*table.game, table.tree);
    FreedResults second(*table.game, table.tree);
    FreedResults both(*table.game, table.tree);
    first.know(1, strategies[0]);
    second.know(0, strategies[1]);
    both.know(1, strategies[0]);
    both.know(0, strategies[1]);
    EXPECT_FALSE(none.knowsAny());
    EXPECT_TRUE(first.knows(1));
    EXPECT_FALSE(first.knows(0));
    std::vector<SeatedHand> hands;
    table.forEachHand([&](const PlayedHand& hand, double, double) {
        if (hands.size() < 500)
            hands.push_back({hand, {1, 0}, static_cast<uint32_t>(hands.size())});
    });
    const std::array<const HandStrategy*, 2> bySeat{strategies[0].get(), strategies[1].get()};
    for (const SeatedHand& hand : hands) {
        const double own = *single[0]->of(hand.hand, 0);
        const double theirs = -*single[1]->of(hand.hand, 1);
        EXPECT_FALSE(none.of(hand)->luckFree);
        EXPECT_EQ(first.of(hand)->luckFree, own);
        EXPECT_EQ(second.of(hand)->luckFree, theirs);
        EXPECT_FALSE(first.of(hand)->expected);
        const auto freed = both.of(hand);
        EXPECT_EQ(freed->luckFree, (own + theirs) / 2);
        EXPECT_EQ(freed->expected, dealValue(*table.game, table.tree, bySeat, hand.hand.hole,
                                             wholeBoard(*table.game, table.deck, hand.hand)));
    }
    Work work;
    work.threads = 2;
    const auto all = both.of(hands, work);
    ASSERT_TRUE(all.ok());
    for (size_t i = 0; i < hands.size(); ++i)
        EXPECT_EQ((*all)[i].luckFree, both.of(hands[i])->luckFree);
}

TEST(FreedResults, NameTheFirstHandThatNoStrategyPlays) {
    const Table table(shortGame(2, 4, "1 1", "10 20", "0 1"));
    FreedResults results(*table.game, table.tree);
    results.know(0, std::make_shared<SimpleStrategy>(table.tree, SimplePlay::call));
    const auto& cards = table.deck.cards();
    const PlayedHand calls{
        {{{cards[0], cards[1]}, {cards[2], cards[3]}}}, {cards[4]}, {1, 1, 1, 1}};
    PlayedHand raises = calls;
    raises.actions = {2, 1, 1, 1};
    raises.hole[1] = {cards[6], cards[5]};
    const std::vector<SeatedHand> hands{
        {calls, {0, 1}, 40}, {raises, {1, 0}, 41}, {raises, {1, 0}, 42}};
    const auto freed = results.of(hands, {});
    ASSERT_FALSE(freed.ok());
    EXPECT_EQ(freed.error(), "hand 41: seat 1 did what its strategy never does there");
}

} // namespace
} // namespace tamarin::test
