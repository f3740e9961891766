#include "holdem/values.h"

#include "game/games.h"
#include "solver/hashed_buckets.h"
#include "training/holdem_trainer.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

GamePtr smallLimit(const char* definition, const char* raises) {
    std::string text = definition;
    text.replace(text.find("3 4 4 4"), 7, raises);
    return parseGame(text);
}

ValueSampling sampling(uint64_t deals, uint64_t responseDeals) {
    ValueSampling result;
    result.deals = deals;
    result.responseDeals = responseDeals;
    result.seed = 4;
    return result;
}

TEST(SampledValues, SumToZeroAndNoResponseLosesByMuch) {
    const GamePtr game = smallLimit(twoPlayerLimit, "1 1 1 1");
    const HashedBuckets buckets;
    HoldemTrainer trainer(*game, buckets, {Algorithm::linear, 3, 1000});
    trainer.run(3000);
    const SampledValue value = sampleValues(*game, buckets, trainer.sets(), sampling(2000, 0));
    EXPECT_NEAR(value.mean[0] + value.mean[1], 0.0, 1e-9);
    EXPECT_GT(value.error[0], 0.0);
    EXPECT_EQ(value.deals, 2000U);
    for (const int seat : {0, 1}) {
        const ResponseValue response =
            sampleResponse(*game, buckets, trainer.sets(), seat, sampling(2000, 3000));
        EXPECT_GT(response.gain, -3 * response.error);
        if (seat == 0) { // the other seat's response is valued on other deals
            EXPECT_NEAR(response.value.mean[0] - response.gain, value.mean[0], 1e-9);
        }
        // Against uniform play, which a fresh tree is, a trained response wins clearly.
        HoldemSets uniform(*game);
        EXPECT_GT(sampleResponse(*game, buckets, uniform, seat, sampling(2000, 3000)).gain,
                  10 * response.error);
    }
}

TEST(SampledValues, DoNotDependOnThreadsAndStopWhenTold) {
    const GamePtr game = smallLimit(twoPlayerLimit, "1 1 1 1");
    const HashedBuckets buckets;
    HoldemSets sets(*game);
    ValueSampling one = sampling(1000, 1000);
    one.threads = 1;
    ValueSampling three = one;
    three.threads = 3;
    EXPECT_EQ(sampleValues(*game, buckets, sets, one).mean[0],
              sampleValues(*game, buckets, sets, three).mean[0]);
    EXPECT_EQ(sampleResponse(*game, buckets, sets, 1, one).gain,
              sampleResponse(*game, buckets, sets, 1, three).gain);
    one.goOn = [](uint64_t done) { return done < 500; };
    EXPECT_EQ(sampleValues(*game, buckets, sets, one).deals, 512U);
}

// Playing hands out and walking the tree estimate the same number.
TEST(SampledPlay, AgreesWithWalks) {
    for (const char* definition : {twoPlayerLimit, threePlayerLimit}) {
        const GamePtr game = smallLimit(definition, "1 1 0 0");
        const HashedBuckets buckets;
        HoldemTrainer trainer(*game, buckets, {Algorithm::linear, 3, 1000});
        trainer.run(500);
        const SampledValue walked = sampleValues(*game, buckets, trainer.sets(), sampling(4000, 0));
        const auto played = samplePlay(*game, buckets, trainer.sets(), 60000, sampling(0, 0));
        ASSERT_TRUE(played.ok());
        double sum = 0.0;
        for (int p = 0; p < game->numPlayers; ++p) {
            EXPECT_NEAR(played->mean[p], walked.mean[p],
                        4 * std::hypot(played->error[p], walked.error[p]));
            EXPECT_LT(played->error[p], 0.25);
            sum += played->mean[p];
        }
        EXPECT_NEAR(sum, 0.0, 1e-9);
        const GamePtr other = smallLimit(definition, "0 1 0 0");
        const auto lacking = samplePlay(*other, buckets, trainer.sets(), 2000, sampling(0, 0));
        ASSERT_FALSE(lacking.ok());
        EXPECT_NE(lacking.error().find("no strategy of this game"), std::string::npos);
    }
}

} // namespace
} // namespace tamarin::test
