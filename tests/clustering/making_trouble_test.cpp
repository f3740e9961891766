// What makeAbstraction refuses before any work.
#include "clustering/fake_abstraction.h"
#include "clustering/make_abstraction.h"
#include "clustering/sparse_abstraction.h"
#include "clustering/unfinished.h"
#include "support/lock.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class MakingTrouble : public ::testing::Test {
protected:
    MakingTrouble() {
        options.directory = directory.path();
        options.name = "x";
        options.counts = fakeCounts;
        options.stop = [] { return true; };
        options.log = [this](const std::string& line) { logged += line + "\n"; };
    }
    std::string error() const {
        const auto made = makeAbstraction(options);
        return made ? "(made)" : made.error();
    }
    std::string file(const std::string& name) const { return directory.file("lookup/x/" + name); }

    TempDirectory directory;
    MakeOptions options;
    std::string logged;
};

TEST_F(MakingTrouble, AStopLeavesWhatTheNextRunGoesOnFrom) {
    EXPECT_EQ(error(), "stopped");
    const auto begun = readUnfinished(file("unfinished"));
    ASSERT_TRUE(begun.ok()) << begun.error();
    EXPECT_EQ(begun->counts, fakeCounts);
    options.options.restarts = 9;
    EXPECT_NE(error().find("begun with other options: the number of restarts is 3 there and 9"),
              std::string::npos)
        << error();
    options.force = true;
    EXPECT_EQ(error(), "stopped");
    EXPECT_EQ(readUnfinished(file("unfinished"))->options.restarts, 9U);
}

TEST_F(MakingTrouble, ADamagedStateIsPutAside) {
    EXPECT_EQ(error(), "stopped");
    putContents(file("unfinished"), "tmrnabsu and not much more than that, and no checksum");
    EXPECT_EQ(error(), "stopped");
    EXPECT_NE(logged.find("unfinished.bad, beginning anew"), std::string::npos) << logged;
    EXPECT_TRUE(std::filesystem::exists(file("unfinished.bad")));
}

TEST_F(MakingTrouble, ARoundThatIsNotAsItWasLeftIsMadeAgain) {
    EXPECT_EQ(error(), "stopped");
    Unfinished begun = *readUnfinished(file("unfinished"));
    std::vector<uint16_t> buckets(169, 1);
    ASSERT_TRUE(writeBuckets(directory.file("lookup/x"), 0, buckets, begun.rounds[0]).ok());
    begun.rounds[0].buckets = 169;
    ASSERT_TRUE(writeUnfinished(file("unfinished"), begun).ok());
    EXPECT_EQ(error(), "stopped");
    EXPECT_EQ(logged, "");
    EXPECT_TRUE(readUnfinished(file("unfinished"))->done(0));
    buckets[5] = 2;
    putContents(file("preflop"), {reinterpret_cast<const char*>(buckets.data()), 2 * 169});
    EXPECT_EQ(error(), "stopped");
    EXPECT_NE(logged.find("preflop is not as it was left"), std::string::npos) << logged;
    EXPECT_FALSE(readUnfinished(file("unfinished"))->done(0));
}

TEST_F(MakingTrouble, ADescriptionThatDoesNotFitIsRefused) {
    ASSERT_TRUE(writeFake(directory.path(), "x").ok()); // of too few hands
    EXPECT_NE(error().find("--force makes it anew"), std::string::npos) << error();
    EXPECT_TRUE(std::filesystem::exists(file("abstraction")));
    options.force = true;
    EXPECT_EQ(error(), "stopped");
    EXPECT_FALSE(std::filesystem::exists(file("abstraction")));
}

TEST_F(MakingTrouble, OneMakesItAtATime) {
    ASSERT_TRUE(makeDirectories(directory.file("lookup/x")).ok());
    const auto lock = FileLock::take(file(".lock"));
    ASSERT_TRUE(lock.ok());
    EXPECT_NE(error().find("process"), std::string::npos) << error();
}

// A making that is killed after it wrote the description and before it removed its state.
class KilledAtTheEnd : public PlayingDirectory {};
TEST_F(KilledAtTheEnd, TheNextRunTidiesUp) {
    writeSparseAbstraction("x");
    MakeOptions options;
    options.name = "x";
    options.counts = sparseCounts;
    options.options = readDescription("lookup/x/abstraction")->options;
    Unfinished left;
    left.options = options.options;
    left.counts = options.counts;
    ASSERT_TRUE(writeUnfinished("lookup/x/unfinished", left).ok());
    const auto made = makeAbstraction(options);
    ASSERT_TRUE(made.ok()) << made.error();
    EXPECT_FALSE(made->made);
    EXPECT_FALSE(std::filesystem::exists("lookup/x/unfinished"));
    EXPECT_TRUE(std::filesystem::exists("lookup/x/abstraction"));
}

TEST_F(MakingTrouble, OptionsOutOfTheirRangesAreRefused) {
    const auto with = [&](const auto& spoil) {
        MakeOptions bad = options;
        spoil(bad);
        const auto made = makeAbstraction(bad);
        return made ? "(made)" : made.error();
    };
    EXPECT_EQ(with([](MakeOptions& bad) { bad.counts[2] = 0; }).rfind("'169-3-0-5' is no", 0), 0U);
    EXPECT_EQ(with([](MakeOptions& bad) { bad.counts[0] = 170; }).rfind("'170-3-4-5' is no", 0),
              0U);
    EXPECT_NE(with([](MakeOptions& bad) { bad.counts[3] = 65536; }).find("is no card abstraction"),
              std::string::npos);
    const std::string clusters = "a card abstraction takes 1 to 8 clusters of starting hands, not ";
    EXPECT_EQ(with([](MakeOptions& bad) { bad.options.clusters = 0; }), clusters + "0");
    EXPECT_EQ(with([](MakeOptions& bad) { bad.options.clusters = 9; }), clusters + "9");
    EXPECT_NE(with([](MakeOptions& bad) { bad.options.sample = 100'000'001; }).find("100000001"),
              std::string::npos);
    const std::string atLeast = with([](MakeOptions& bad) { bad.options.restarts = 0; });
    EXPECT_NE(atLeast.find("at least 1 restart"), std::string::npos) << atLeast;
    EXPECT_EQ(with([](MakeOptions& bad) { bad.options.iterations = 0; }), atLeast);
    EXPECT_EQ(with([](MakeOptions& bad) { bad.options.tolerance = 0; }), atLeast);
    EXPECT_NE(with([](MakeOptions& bad) {
                  bad.options.method = static_cast<AbstractionMethod>(2);
              }).find("no such method"),
              std::string::npos);
    EXPECT_EQ(directory.names(), std::set<std::string>{});
    EXPECT_EQ(with([](MakeOptions& good) { good.options.clusters = 8; }), "stopped");
}

TEST_F(MakingTrouble, ByPercentileTheOtherOptionsDoNotCount) {
    options.options.method = AbstractionMethod::percentile;
    options.options.seed = 5;
    EXPECT_EQ(error(), "stopped");
    options.options.seed = 6;
    options.options.restarts = 2;
    EXPECT_EQ(error(), "stopped");
    AbstractionOptions plain;
    plain.method = AbstractionMethod::percentile;
    EXPECT_EQ(readUnfinished(file("unfinished"))->options, plain);
}

TEST_F(MakingTrouble, ABadNameIsRefused) {
    options.name = "../x";
    EXPECT_NE(error().find("is no name"), std::string::npos);
    EXPECT_EQ(directory.names(), std::set<std::string>{});
}

} // namespace
} // namespace tamarin::test
