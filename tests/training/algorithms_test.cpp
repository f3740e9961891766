#include "training/algorithms.h"

#include <utility>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Algorithms, HaveTheirNames) {
    const std::pair<Algorithm, const char*> names[] = {
        {Algorithm::player, "player"},   {Algorithm::cfr, "cfr"},
        {Algorithm::cfrPlus, "cfr+"},    {Algorithm::linear, "lcfr"},
        {Algorithm::discounted, "dcfr"}, {Algorithm::predictive, "pcfr+"}};
    EXPECT_EQ(algorithmNames().size(), std::size(names));
    for (const auto& [algorithm, name] : names) {
        EXPECT_STREQ(algorithmName(algorithm), name);
        EXPECT_EQ(algorithmNamed(name), algorithm);
    }
    EXPECT_FALSE(algorithmNamed("CFR"));
    EXPECT_FALSE(algorithmNamed(""));
}

TEST(Algorithms, EveryTrainingHasItsDefault) {
    EXPECT_EQ(defaultAlgorithm(Trained::smallGame), Algorithm::discounted);
    EXPECT_EQ(defaultAlgorithm(Trained::twoPlayerHoldem), Algorithm::discounted);
    EXPECT_EQ(defaultAlgorithm(Trained::threePlayerHoldem), Algorithm::linear);
}

TEST(Algorithms, OnlyThePredictiveOneIsNotForHoldem) {
    for (const std::string& name : algorithmNames()) {
        const Algorithm algorithm = *algorithmNamed(name);
        EXPECT_EQ(whyNotForHoldem(algorithm) != nullptr, algorithm == Algorithm::predictive);
    }
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
} // namespace tamarin::test
