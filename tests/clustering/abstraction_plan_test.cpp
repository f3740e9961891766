#include "clustering/abstraction_plan.h"

#include "clustering/fake_abstraction.h"
#include "clustering/unfinished.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(AbstractionPlan, SaysWhatFilesThereWillBe) {
    const TempDirectory directory;
    MakeOptions options;
    options.directory = directory.path();
    options.counts = {169, 200, 200, 200};
    const AbstractionPlan plan = planAbstraction(options);
    EXPECT_EQ(plan.state, AbstractionPlan::State::missing);
    ASSERT_EQ(plan.files.size(), 5U);
    EXPECT_EQ(plan.files[0].path, directory.file("lookup/169-200-200-200/preflop"));
    EXPECT_EQ(plan.files[0].bytes, 338U);
    EXPECT_EQ(plan.files[3].bytes, 246312508U);
    EXPECT_GT(plan.disk, 276806530U);
    EXPECT_LT(plan.memory, 2'000'000'000U);
    EXPECT_EQ(directory.names(), std::set<std::string>{});
    options.counts = {169, 9000, 9000, 9000};
    const AbstractionPlan wide = planAbstraction(options);
    EXPECT_GT(wide.seconds, plan.seconds);
    EXPECT_GT(wide.memory, plan.memory);
    EXPECT_LT(wide.memory, 2'000'000'000U);
}

TEST(AbstractionPlan, SeesWhatIsBegun) {
    const TempDirectory directory;
    MakeOptions options;
    options.directory = directory.path();
    options.name = "x";
    options.counts = {169, 3, 4, 5};
    ASSERT_TRUE(makeDirectories(directory.file("lookup/x")).ok());
    Unfinished begun;
    begun.counts = options.counts;
    ASSERT_TRUE(writeUnfinished(directory.file("lookup/x/unfinished"), begun).ok());
    const AbstractionPlan plan = planAbstraction(options);
    EXPECT_EQ(plan.state, AbstractionPlan::State::begun);
    EXPECT_EQ(plan.files.size(), 5U);
    begun.rounds[3].buckets = 5;
    ASSERT_TRUE(writeUnfinished(directory.file("lookup/x/unfinished"), begun).ok());
    const AbstractionPlan rest = planAbstraction(options);
    EXPECT_EQ(rest.files.size(), 4U); // the river is done
    EXPECT_EQ(rest.disk + 246312508U, plan.disk);
    options.options.seed = 2;
    const AbstractionPlan other = planAbstraction(options);
    EXPECT_EQ(other.state, AbstractionPlan::State::different);
    EXPECT_NE(other.problem.find("begun with other options: the seed is 1 there and 2 here"),
              std::string::npos)
        << other.problem;
    options.force = true;
    const AbstractionPlan anew = planAbstraction(options);
    EXPECT_EQ(anew.state, AbstractionPlan::State::missing);
    EXPECT_EQ(anew.disk, plan.disk);
}

TEST(AbstractionPlan, ByPercentileOnlyCountsMatter) {
    const TempDirectory directory;
    MakeOptions options;
    options.directory = directory.path();
    options.name = "x";
    options.counts = {169, 3, 4, 5};
    options.options.method = AbstractionMethod::percentile;
    options.options.seed = 9;
    options.options.sample = 5000;
    ASSERT_TRUE(makeDirectories(directory.file("lookup/x")).ok());
    Unfinished begun;
    begun.counts = options.counts;
    begun.options.method = AbstractionMethod::percentile;
    ASSERT_TRUE(writeUnfinished(directory.file("lookup/x/unfinished"), begun).ok());
    EXPECT_EQ(planAbstraction(options).state, AbstractionPlan::State::begun);
    options.counts[1] = 4;
    EXPECT_EQ(planAbstraction(options).state, AbstractionPlan::State::different);
}

TEST(AbstractionPlan, WhatCannotBeReadIsNoAbstraction) {
    const TempDirectory directory;
    ASSERT_TRUE(writeFake(directory.path(), "x").ok());
    MakeOptions options;
    options.directory = directory.path();
    options.name = "x";
    options.counts = fakeCounts;
    const AbstractionPlan plan = planAbstraction(options); // of too few hands
    EXPECT_EQ(plan.state, AbstractionPlan::State::different);
    EXPECT_NE(plan.problem.find("hands on the"), std::string::npos) << plan.problem;
}

} // namespace
} // namespace tamarin::test
