#include "sampling/menu_play.h"

#include "sampling/small_training.h"
#include "support/temp_directory.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

// A trained blueprint of a small no-limit game.
struct PlayedSmall {
    PlayedSmall() : small(test::smallNoLimit, "bets = 1 A", {3, 1, 16, false}) {
        small.trainer.run(20'000);
        const MenuOrigin origin{
            {hashOfGame(*small.game), "small", 1, {4, 16}, 3, small.trainer.iteration()},
            "bets = 1 A\n",
            {}};
        const std::string path = directory.file("blueprint");
        EXPECT_TRUE(writeMenuBlueprint(path, small.trainer.sets(), origin).ok());
        auto opened = MenuBlueprint::open(path, *small.game);
        EXPECT_TRUE(opened.ok()) << opened.error();
        blueprint = std::make_unique<MenuBlueprint>(std::move(*opened));
    }

    test::TempDirectory directory;
    test::SmallTraining small;
    std::unique_ptr<MenuBlueprint> blueprint;
};

TEST(MenuPlay, DrawsByTheBlueprint) {
    const PlayedSmall played;
    MenuPlay play(*played.small.game, *played.blueprint, played.small.buckets);
    const MenuTree& tree = played.blueprint->tree();
    State state = played.small.deals[37];
    initState(played.small.game.get(), 0, &state);
    const size_t bucket = played.small.bucketOf(tree.node(0), 37);
    std::vector<int> counts(tree.node(0).numEdges);
    constexpr int hands = 20'000;
    for (uint64_t seed = 0; seed < hands; ++seed) {
        play.begin(seed);
        const Action action = play.act(state);
        for (size_t edge = 0; edge < counts.size(); ++edge) {
            const Action other = tree.action(tree.node(0), edge);
            counts[edge] += other.type == action.type && other.size == action.size;
        }
    }
    const auto parts = played.blueprint->parts(0, bucket);
    for (size_t edge = 0; edge < counts.size(); ++edge) {
        const double share = parts[edge] / 255.0;
        EXPECT_NEAR(counts[edge], hands * share, 5 * std::sqrt(hands * share * (1 - share)) + 1);
    }
    EXPECT_LT(*std::ranges::max_element(parts), 255);
}

// Bets of any size, and answers to them.
Action anyReply(const Game& game, const State& state, SplitMix& random) {
    int32_t least = 0;
    int32_t most = 0;
    if (random.below(2) == 0 && mayRaise(game, state, least, most))
        return {actionRaise, least + static_cast<int32_t>(
                                         random.below(static_cast<uint32_t>(most - least) + 1))};
    return {actionCall, 0};
}

// A hand that is followed from its beginning at each decision, its own actions too, is where it is
// when each action is followed as it is done.
TEST(MenuPlay, RepeatsAHandAsItWasPlayed) {
    const PlayedSmall played;
    const Game& game = *played.small.game;
    MenuPlay live(game, *played.blueprint, played.small.buckets);
    MenuPlay later(game, *played.blueprint, played.small.buckets);
    SplitMix random(5);
    int compared = 0;
    for (uint64_t hand = 0; hand < 10'000; ++hand) {
        State state = played.small.deals[hand % played.small.deals.size()];
        initState(&game, 0, &state);
        live.begin(hand);
        std::vector<std::pair<State, Action>> before;
        const uint32_t own = random.below(2);
        while (!state.finished) {
            const bool acts = currentPlayer(&game, &state) == own;
            Action action = anyReply(game, state, random);
            if (acts) {
                later.begin(hand);
                for (const auto& [at, done] : before)
                    if (currentPlayer(&game, &at) == own)
                        later.repeat(at, done);
                    else
                        later.see(at, done);
                action = live.act(state);
                const Action again = later.act(state);
                ASSERT_EQ(again.type, action.type);
                ASSERT_EQ(again.size, action.size);
                compared += before.size() > 2;
            } else {
                live.see(state, action);
            }
            before.emplace_back(state, action);
            doAction(&game, &action, &state);
        }
    }
    EXPECT_GT(compared, 1000);
}

// As after a loss of the connection: what another did in its place is followed by its size.
TEST(MenuPlay, GoesOnFromWhatItWouldNotHaveDone) {
    const PlayedSmall played;
    const Game& game = *played.small.game;
    MenuPlay play(game, *played.blueprint, played.small.buckets);
    SplitMix random(6);
    for (uint64_t hand = 0; hand < 10'000; ++hand) {
        State state = played.small.deals[hand % played.small.deals.size()];
        initState(&game, 0, &state);
        play.begin(hand);
        while (!state.finished) {
            Action action = anyReply(game, state, random);
            if (currentPlayer(&game, &state) == 1)
                play.see(state, action);
            else if (random.below(2) == 0)
                play.repeat(state, action);
            else
                action = play.act(state);
            ASSERT_FALSE(play.lost());
            ASSERT_TRUE(isValidAction(&game, &state, 0, &action));
            doAction(&game, &action, &state);
        }
    }
}

// Against itself, with the sizes of its tree: what it wins is the value of its strategy.
TEST(MenuPlay, WinsItsValueFromItself) {
    const PlayedSmall played;
    const Game& game = *played.small.game;
    MenuPlay first(game, *played.blueprint, played.small.buckets);
    MenuPlay second(game, *played.blueprint, played.small.buckets);
    double sum = 0;
    constexpr uint64_t hands = 60'000;
    for (uint64_t hand = 0; hand < hands; ++hand) {
        State state = played.small.deals[hand % played.small.deals.size()];
        initState(&game, 0, &state);
        first.begin(2 * hand);
        second.begin(2 * hand + 1);
        while (!state.finished) {
            const bool own = currentPlayer(&game, &state) == 0;
            Action action = own ? first.act(state) : second.act(state);
            (own ? second : first).see(state, action);
            ASSERT_TRUE(isValidAction(&game, &state, 0, &action));
            doAction(&game, &action, &state);
        }
        sum += valueOfState(&game, &state, 0);
    }
    EXPECT_NEAR(sum / hands, played.small.value(0, played.small.averages()), 0.05);
    EXPECT_GT(std::abs(sum / hands), 0.06);
}

} // namespace
} // namespace tamarin
