#include "response/flop_response.h"

#include "response/measured.h"

namespace tamarin::test {
namespace {

const std::string threeRounds = shortGame(4, 6, "2 2 2", "10 10 20", "0 3 1");

FlopValues on(const Measured& measured, size_t flop, int threads, LaneNumbers numbers) {
    Work work;
    work.threads = threads;
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    auto values = FlopResponse(measured.whole(), numbers).on(flops[flop], work);
    EXPECT_TRUE(values.ok());
    return std::move(*values);
}

TEST(FlopResponse, AnyNumberOfThreadsGivesTheSame) {
    const Measured measured(threeRounds);
    const FlopValues one = on(measured, 11, 1, LaneNumbers::floats);
    for (const int threads : {2, 3, 8}) {
        const FlopValues more = on(measured, 11, threads, LaneNumbers::floats);
        EXPECT_EQ(more.best, one.best);
        EXPECT_EQ(more.value, one.value);
        EXPECT_EQ(more.later, one.later);
    }
}

TEST(FlopResponse, FloatsAreNearDoubles) {
    const Measured measured(threeRounds);
    const FlopValues floats = on(measured, 17, 2, LaneNumbers::floats);
    const FlopValues doubles = on(measured, 17, 2, LaneNumbers::doubles);
    for (size_t seat = 0; seat < 2; ++seat)
        for (size_t i = 0; i < doubles.best[seat].size(); ++i)
            ASSERT_NEAR(floats.best[seat][i], doubles.best[seat][i], 0.01) << seat << " " << i;
    double largest = 0;
    for (size_t i = 0; i < doubles.value[1].size(); ++i) {
        ASSERT_NEAR(floats.value[1][i], doubles.value[1][i], 0.01) << i;
        largest = std::max(largest, std::abs(doubles.value[1][i]));
    }
    EXPECT_GT(largest, 1000); // summed over a few hundred hands of the opponent
}

// The best play wins no less than the strategy's own.
TEST(FlopResponse, TheBestIsNoWorse) {
    const Measured measured(threeRounds);
    const FlopValues values = on(measured, 30, 2, LaneNumbers::doubles);
    for (size_t seat = 0; seat < 2; ++seat)
        for (size_t i = 0; i < values.value[seat].size(); ++i)
            ASSERT_GE(values.best[seat][i], values.value[seat][i] - 1e-9);
}

// Who may choose earlier wins no less, and here more.
TEST(FlopResponse, TheBestFromTheTurnOnLiesBetween) {
    const Measured measured(threeRounds);
    const FlopValues values = on(measured, 30, 2, LaneNumbers::doubles);
    for (size_t seat = 0; seat < 2; ++seat) {
        ASSERT_EQ(values.later[seat].size(), 1U);
        double below = 0;
        double above = 0;
        for (size_t i = 0; i < values.value[seat].size(); ++i) {
            const double later = values.later[seat][0][i];
            ASSERT_GE(later, values.value[seat][i] - 1e-9);
            ASSERT_LE(later, values.best[seat][i] + 1e-9);
            below += later - values.value[seat][i];
            above += values.best[seat][i] - later;
        }
        EXPECT_GT(below, 100) << seat;
        EXPECT_GT(above, 100) << seat;
    }
}

// Plays as another strategy does, but never raises at some of the nodes where a seat acts. A
// ghost is a class of hands more that does everything, and that no hand is of.
class Reluctant : public HandStrategy {
public:
    Reluctant(const CompiledTree& tree, std::array<int, 2> every, bool ghost)
        : tree_(tree), random_(tree, 8), every_(every), ghost_(ghost) {}
    size_t numClasses(int seat, int round) const override {
        return random_.numClasses(seat, round) + (ghost_ ? 1U : 0U);
    }
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override {
        return random_.classOf(seat, round, cards);
    }
    ActionShares shares(int32_t node, size_t handClass) const override {
        const auto& at = tree_.nodes()[static_cast<size_t>(node)];
        if (handClass == random_.numClasses(at.player, at.round))
            return SimpleStrategy(tree_, SimplePlay::uniform).shares(node, 0);
        ActionShares shares = random_.shares(node, handClass);
        if (every_[at.player] != 0 && node % every_[at.player] == 0) {
            shares[1] += shares[2];
            shares[2] = 0;
        }
        return shares;
    }

private:
    const CompiledTree& tree_;
    RandomStrategy random_;
    std::array<int, 2> every_;
    bool ghost_;
};

// Lines that the opponent never takes are not walked, which changes no bit.
TEST(FlopResponse, WhatIsNeverDoneNeedNotBeWalked) {
    for (const std::array<int, 2> every :
         {std::array<int, 2>{2, 1}, std::array<int, 2>{1, 0}, std::array<int, 2>{0, 1}}) {
        const Measured measured(threeRounds);
        const auto flops = measured.deck.extend(measured.deck.empty(), 3);
        std::vector<uint64_t> memory;
        std::vector<FlopValues> found;
        for (const bool ghost : {true, false}) {
            const Reluctant strategy(measured.tree, every, ghost);
            const MeasuredGame game{*measured.game, measured.tree, *measured.rounds, measured.deck,
                                    strategy};
            const FlopResponse response(game);
            memory.push_back(response.memory(2));
            auto values = response.on(flops[23], Work{});
            ASSERT_TRUE(values.ok());
            found.push_back(std::move(*values));
        }
        EXPECT_LT(memory[1], memory[0] * 9 / 10);
        EXPECT_EQ(found[1].best, found[0].best);
        EXPECT_EQ(found[1].value, found[0].value);
        EXPECT_EQ(found[1].later, found[0].later);
    }
}

TEST(FlopResponse, StopsWhenAsked) {
    const Measured measured(threeRounds);
    Work work;
    work.stop = [] { return true; };
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    const auto values = FlopResponse(measured.whole()).on(flops[0], work);
    ASSERT_FALSE(values.ok());
    EXPECT_EQ(values.error(), "stopped");
}

TEST(FlopResponse, SaysHowFarItIs) {
    const Measured measured(threeRounds);
    uint64_t last = 0;
    uint64_t all = 0;
    Work work;
    work.threads = 1;
    work.progress = [&](uint64_t done, uint64_t total) {
        EXPECT_EQ(done, last + 1);
        last = done;
        all = total;
    };
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    ASSERT_TRUE(FlopResponse(measured.whole()).on(flops[3], work).ok());
    EXPECT_EQ(last, all);
    EXPECT_EQ(all, 2 * measured.deck.extend(flops[3], 1).size());
}

// Eight blocks on the turn and 71 on the river, of 1,326 rows of eight floats: for each thread and
// the flop, either seat's reach and three sums or two; and either seat's three for 49 turn cards.
TEST(FlopResponse, SaysWhatMemoryItTakes) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const CompiledTree tree(*game);
    const auto rounds = BettingRounds::of(*game, tree);
    ASSERT_TRUE(rounds.ok());
    const PublicDeck deck(*game);
    const SimpleStrategy strategy(tree, SimplePlay::uniform);
    const FlopResponse response({*game, tree, *rounds, deck, strategy});
    EXPECT_EQ(response.memory(1), ((4 * 8 + 3 * 71) * 4 + 3 * 8 * 2 * 49) * 1326 * 32U);
    EXPECT_EQ(response.memory(4), ((4 * 8 + 3 * 71) * 10 + 3 * 8 * 2 * 49) * 1326 * 32U);
}

} // namespace
} // namespace tamarin::test
