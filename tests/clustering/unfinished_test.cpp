#include "clustering/unfinished.h"

#include "clustering/fake_abstraction.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

Unfinished someUnfinished() {
    Unfinished unfinished;
    unfinished.options.seed = 5;
    unfinished.counts = fakeCounts;
    unfinished.rounds[0] = fakeDescription().rounds[0];
    unfinished.startingHandClusters = fakeDescription().startingHandClusters;
    unfinished.step = FitStep::river;
    unfinished.fit.restart = 1;
    unfinished.fit.iteration = 4;
    unfinished.fit.centres.assign(5 * 8, 3);
    unfinished.fit.distance = 77;
    unfinished.fit.best.assign(5 * 8, 4);
    unfinished.fit.bestDistance = 78;
    return unfinished;
}

TEST(Unfinished, IsReadAsWritten) {
    const TempDirectory directory;
    const Unfinished written = someUnfinished();
    ASSERT_TRUE(writeUnfinished(directory.file("u"), written).ok());
    const auto read = readUnfinished(directory.file("u"));
    ASSERT_TRUE(read.ok()) << read.error();
    EXPECT_EQ(*read, written);
    EXPECT_TRUE(read->done(0));
    EXPECT_FALSE(read->done(1));
}

TEST(Unfinished, WhatCannotBeIsRefused) {
    const TempDirectory directory;
    const auto refused = [&](const auto& spoil) {
        Unfinished bad = someUnfinished();
        spoil(bad);
        EXPECT_TRUE(writeUnfinished(directory.file("u"), bad).ok());
        return !readUnfinished(directory.file("u")).ok();
    };
    EXPECT_FALSE(refused([](Unfinished&) {}));
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.fit.centres.pop_back(); }));
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.fit.best.push_back(1); }));
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.step = static_cast<FitStep>(6); }));
    EXPECT_TRUE(
        refused([](Unfinished& bad) { bad.options.method = static_cast<AbstractionMethod>(2); }));
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.fit.best[3] = 5; })); // the first is not least
    EXPECT_FALSE(refused([](Unfinished& bad) { bad.fit.best.back() = 5; }));
    EXPECT_FALSE(refused([](Unfinished& bad) { bad.fit.centres[3] = 4; }));  // are sorted anyway
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.step = FitStep::turn; })); // wider centres
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.rounds[0].buckets = 168; }));
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.startingHandClusters[3] = 8; }));
    EXPECT_TRUE(refused([](Unfinished& bad) { bad.startingHandClusters.resize(168); }));
    EXPECT_TRUE(refused([](Unfinished& bad) {
        bad.fit.restart = bad.options.restarts; // done, but with no result
        bad.fit.best.clear();
    }));
}

// The turn's rows are wider than the river's, so that other bytes are of one row.
TEST(Unfinished, TheBestMustBeInTheOrderOfItsRound) {
    const TempDirectory directory;
    Unfinished turn = someUnfinished();
    turn.step = FitStep::turn;
    turn.fit.centres.clear();
    turn.fit.best.assign(4 * 48, 4);
    turn.fit.best[8] = 3;
    ASSERT_TRUE(writeUnfinished(directory.file("u"), turn).ok());
    EXPECT_TRUE(readUnfinished(directory.file("u")).ok());
    turn.fit.best[48] = 2; // of the second row
    ASSERT_TRUE(writeUnfinished(directory.file("u"), turn).ok());
    EXPECT_FALSE(readUnfinished(directory.file("u")).ok());
}

} // namespace
} // namespace tamarin::test
