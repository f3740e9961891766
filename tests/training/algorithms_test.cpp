#include "training/algorithms.h"

#include <utility>

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

TEST(Algorithms, HaveTheirNames) {
    const std::pair<Algorithm, const char*> names[] = {
        {Algorithm::player, "player"},   {Algorithm::cfr, "cfr"},
        {Algorithm::cfrPlus, "cfr+"},    {Algorithm::linear, "lcfr"},
        {Algorithm::discounted, "dcfr"}, {Algorithm::predictive, "pcfr+"}};
    EXPECT_EQ(allAlgorithms().size(), std::size(names));
    for (const auto& [algorithm, name] : names) {
        EXPECT_STREQ(algorithmName(algorithm), name);
        EXPECT_EQ(algorithmNamed(name), algorithm);
    }
    EXPECT_FALSE(algorithmNamed("CFR"));
    EXPECT_FALSE(algorithmNamed(""));
}

TEST(Algorithms, EveryTrainingHasOneDefault) {
    EXPECT_EQ(defaultAlgorithm(Trained::smallGame), Algorithm::discounted);
    EXPECT_EQ(defaultAlgorithm(Trained::twoPlayerHoldem), Algorithm::discounted);
    EXPECT_EQ(defaultAlgorithm(Trained::threePlayerHoldem), Algorithm::linear);
    unsigned seen = 0;
    for (const AlgorithmInfo& info : allAlgorithms()) {
        EXPECT_EQ(seen & info.defaultFor, 0U) << info.name;
        seen |= info.defaultFor;
    }
    EXPECT_EQ(seen, 7U);
}

TEST(Algorithms, OnlyThePredictiveOneIsNotForHoldem) {
    for (const AlgorithmInfo& info : allAlgorithms())
        EXPECT_EQ(info.notForHoldem != nullptr, info.algorithm == Algorithm::predictive)
            << info.name;
}

TEST(Algorithms, HelpHasALineForEach) {
    const std::string help = algorithmHelp();
    EXPECT_TRUE(help.starts_with("cfr: plain sums\ncfr+: ")) << help;
    EXPECT_NE(help.find("the default for small games and two-player hold'em\npcfr+: "),
              std::string::npos)
        << help;
    EXPECT_NE(help.find("; not for hold'em\nplayer: "), std::string::npos) << help;
    EXPECT_FALSE(help.ends_with("\n"));
}

} // namespace
} // namespace tamarin::testing
