#include "response/sample_measure.h"

#include "response/measured.h"

namespace tamarin::test {
namespace {

const std::string shortRounds = shortGame(4, 4, "2 2", "10 10", "0 3");

TEST(SampleMeasure, IsThatOfTheSampleOfItsSeed) {
    const Measured measured(shortRounds, 12);
    const auto made = SampleMeasure::of(*measured.game, measured.tree, 8, 5);
    ASSERT_TRUE(made.ok());
    std::vector<std::pair<uint64_t, uint64_t>> reports;
    Work work;
    work.progress = [&](uint64_t done, uint64_t total) { reports.emplace_back(done, total); };
    const auto found = made->measure(*measured.strategy, work);
    ASSERT_TRUE(found.ok());

    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    const FlopSample sample = drawFlops(flops, 8, 5);
    std::vector<FlopValues> values(flops.size());
    const FlopResponse response(measured.whole());
    for (const size_t place : sample.distinct()) {
        auto of = response.on(flops[place], Work{});
        ASSERT_TRUE(of.ok());
        values[place] = std::move(*of);
    }
    const SampledGains gains = sampledGains(
        measured.whole(), sample, [&](size_t place) -> const FlopValues& { return values[place]; });
    EXPECT_EQ(found->afterFlop.mean, gains.afterFlop.mean);
    EXPECT_EQ(found->afterFlop.halfWidth, gains.afterFlop.halfWidth);
    EXPECT_EQ(found->crossed.mean, gains.crossed.mean);
    EXPECT_EQ(found->biased.mean, gains.biased.mean);
    EXPECT_NE(gains.crossed.mean, gains.afterFlop.mean);

    EXPECT_EQ(made->distinctFlops(), sample.distinct().size());
    ASSERT_EQ(reports.size(), sample.distinct().size() + 1);
    EXPECT_EQ(reports.front(), (std::pair<uint64_t, uint64_t>{0, reports.size() - 1}));
    EXPECT_EQ(reports.back(),
              (std::pair<uint64_t, uint64_t>{reports.size() - 1, reports.size() - 1}));
}

TEST(SampleMeasure, StopsWhenAskedAndRefusesOtherGames) {
    const Measured measured(shortRounds);
    const auto made = SampleMeasure::of(*measured.game, measured.tree, 2, 1);
    ASSERT_TRUE(made.ok());
    Work work;
    work.stop = [] { return true; };
    const auto found = made->measure(*measured.strategy, work);
    ASSERT_FALSE(found.ok());
    EXPECT_EQ(found.error(), "stopped");

    const GamePtr kuhn = loadGameFile("kuhn.limit.2p.game");
    const CompiledTree tree(*kuhn);
    const auto refused = SampleMeasure::of(*kuhn, tree, 2, 1);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(), "only games for two with two rounds or more can be measured so");
}

} // namespace
} // namespace tamarin::test
