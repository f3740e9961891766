#include "clustering/make_abstraction.h"

#include "clustering/abstraction_check.h"
#include "clustering/unfinished.h"
#include "support/temp_directory.h"

#include <atomic>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

MakeOptions coarse(const TempDirectory& directory, const std::string& name) {
    MakeOptions options;
    options.directory = directory.path();
    options.name = name;
    options.counts = {20, 6, 7, 9};
    options.options.sample = 3000;
    options.options.restarts = 2;
    options.options.clusters = 5;
    options.saveSeconds = 0;
    return options;
}

std::array<std::string, 5> filesOf(const TempDirectory& directory, const std::string& name) {
    std::array<std::string, 5> files;
    const char* const names[] = {"preflop", "flop", "turn", "river", "abstraction"};
    for (size_t i = 0; i < files.size(); ++i)
        files[i] = contentsOf(directory.file("lookup/" + name + "/" + names[i]));
    return files;
}

// Two makings of the whole, with other numbers of threads, the second one stopped again and again.
TEST(MakeAbstraction, StoppedAndTakenUpItIsTheSame) {
    const TempDirectory directory;
    MakeOptions options = coarse(directory, "whole");
    options.threads = 1;
    const auto whole = makeAbstraction(options);
    ASSERT_TRUE(whole.ok()) << whole.error();
    EXPECT_TRUE(whole->made);
    EXPECT_FALSE(std::filesystem::exists(directory.file("lookup/whole/unfinished")));

    options = coarse(directory, "stopped");
    options.threads = 3;
    // A stop in each step: where it begins, and some way into it.
    std::string step;
    std::atomic<bool> stopping{false};
    std::vector<std::string> stoppedIn;
    options.progress = [&](const std::string& now, uint64_t done, uint64_t total) {
        if (std::find(stoppedIn.begin(), stoppedIn.end(), now) == stoppedIn.end() &&
            (2 * done > total || total < 20)) {
            step = now;
            stopping = true;
        }
    };
    options.stop = [&] { return stopping.load(); };
    auto made = makeAbstraction(options);
    while (!made) {
        ASSERT_EQ(made.error(), "stopped");
        stoppedIn.push_back(step);
        ASSERT_LT(stoppedIn.size(), 20U);
        EXPECT_FALSE(
            CardAbstraction::open(directory.path(), "stopped", CardAbstraction::Check::sizes).ok());
        stopping = false;
        made = makeAbstraction(options);
    }
    EXPECT_GE(stoppedIn.size(), 5U);
    EXPECT_EQ(made->description, whole->description);
    EXPECT_EQ(filesOf(directory, "stopped"), filesOf(directory, "whole"));

    // It is there now; other options are refused, and the same find it good.
    options = coarse(directory, "whole");
    const auto again = makeAbstraction(options);
    ASSERT_TRUE(again.ok()) << again.error();
    EXPECT_FALSE(again->made);
    options.options.seed = 2;
    const auto other = makeAbstraction(options);
    ASSERT_FALSE(other.ok());
    EXPECT_NE(other.error().find("the seed is 1 there and 2 here"), std::string::npos)
        << other.error();
    EXPECT_EQ(filesOf(directory, "stopped"), filesOf(directory, "whole"));

    AbstractionCheck check;
    check.directory = directory.path();
    check.name = "whole";
    check.hands = 100;
    const auto good = checkAbstraction(check);
    ASSERT_TRUE(good.ok()) << good.error();
    EXPECT_EQ(*good, (std::array<uint64_t, 4>{169, 10, 100, 100}));

    // A wrong bucket that the checksum vouches for is found.
    AbstractionDescription wrong = whole->description;
    auto& centres = wrong.rounds[3].centres;
    for (size_t i = 0; i < 8; ++i) // the weakest centre to the bottom
        centres[i] = 0;
    ASSERT_TRUE(writeDescription(directory.file("lookup/whole/abstraction"), wrong).ok());
    const auto bad = checkAbstraction(check);
    ASSERT_FALSE(bad.ok());
    EXPECT_NE(bad.error().find("lookup/whole/river: hand"), std::string::npos) << bad.error();
}

TEST(MakeAbstraction, Percentiles) {
    const TempDirectory directory;
    MakeOptions options;
    options.directory = directory.path();
    options.counts = {169, 10, 100, 7};
    options.options.method = AbstractionMethod::percentile;
    options.threads = 2;
    const auto made = makeAbstraction(options);
    ASSERT_TRUE(made.ok()) << made.error();
    EXPECT_EQ(made->folder, directory.file("lookup/169-10-100-7-percentile"));
    const auto opened = CardAbstraction::open(directory.path(), "169-10-100-7-percentile");
    ASSERT_TRUE(opened.ok()) << opened.error();
    for (int round = 0; round < holdemRounds; ++round) {
        std::vector<uint64_t> hands(opened->buckets(round));
        for (const uint16_t bucket : opened->table(round))
            ++hands[bucket];
        for (size_t bucket = 0; bucket < hands.size(); ++bucket)
            EXPECT_GT(hands[bucket], 0U) << round << ' ' << bucket;
    }
    // Every flop bucket has a tenth of the deck's hands, but for hands of one equity that stay
    // together.
    AbstractionCheck check;
    check.directory = directory.path();
    check.name = "169-10-100-7-percentile";
    check.hands = 200;
    const auto good = checkAbstraction(check);
    ASSERT_TRUE(good.ok()) << good.error();
    EXPECT_EQ((*good)[3], 200U);
}

} // namespace
} // namespace tamarin::test
