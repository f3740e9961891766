#include "clustering/make_abstraction.h"

#include "clustering/abstraction_check.h"
#include "clustering/bucket_summary.h"
#include "clustering/unfinished.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <atomic>
#include <cmath>

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

// A starting hand as people write it: its hole cards in the deck, and its index.
struct StartingHand {
    uint32_t deals;
    size_t index;
};
StartingHand startingHand(const std::string& text) {
    static const std::string ranks = "23456789TJQKA";
    const bool suited = text.size() == 3 && text[2] == 's';
    const auto first = static_cast<uint8_t>(4 * ranks.find(text[0]));
    const auto second = static_cast<uint8_t>(4 * ranks.find(text[1]) + (suited ? 0 : 1));
    const uint8_t cards[] = {first, second};
    return {text[0] == text[1] ? 6U
            : suited           ? 4U
                               : 12U,
            hand_index_last(RoundIndexer(0).get(), cards)};
}
std::vector<StartingHand> allStartingHands() {
    const std::string ranks = "23456789TJQKA";
    std::vector<StartingHand> hands;
    for (size_t high = 0; high < ranks.size(); ++high)
        for (size_t low = 0; low <= high; ++low) {
            const std::string pair{ranks[high], ranks[low]};
            hands.push_back(startingHand(pair));
            if (low < high)
                hands.push_back(startingHand(pair + "s"));
        }
    return hands;
}

// Where every starting hand has a bucket by itself, the bucket is its place in the order of equity.
void expectTheOrderOfStartingHands(std::span<const uint16_t> preflop) {
    const std::pair<const char*, int> known[] = {{"AA", 168}, {"KK", 167}, {"QQ", 166}, {"32", 0}};
    for (const auto& [hand, bucket] : known)
        EXPECT_EQ(preflop[startingHand(hand).index], bucket) << hand;
    std::vector<uint16_t> sorted(preflop.begin(), preflop.end());
    std::sort(sorted.begin(), sorted.end());
    for (size_t i = 0; i < sorted.size(); ++i)
        EXPECT_EQ(sorted[i], i);
}

// Fewer buckets cut that order where so many hands of the deck are below: each hand goes where its
// middle one lies.
void expectSharesOfStartingHands(std::span<const uint16_t> order, std::span<const uint16_t> shares,
                                 uint32_t buckets) {
    std::vector<StartingHand> hands = allStartingHands();
    ASSERT_EQ(hands.size(), 169U);
    std::sort(hands.begin(), hands.end(), [&](const StartingHand& a, const StartingHand& b) {
        return order[a.index] < order[b.index];
    });
    uint32_t below = 0;
    for (const StartingHand& hand : hands) {
        EXPECT_EQ(shares[hand.index], (2 * below + hand.deals) * buckets / (2 * 1326))
            << below << ' ' << hand.index;
        below += hand.deals;
    }
    EXPECT_EQ(below, 1326U);
}

// The making goes on from the rounds after the pre-flop that another one made.
std::vector<uint16_t> preflopOfOther(MakeOptions options, const MadeAbstraction& made,
                                     uint32_t buckets) {
    options.name = "other";
    options.counts[0] = buckets;
    const std::string folder = options.directory + "/lookup/other";
    std::filesystem::create_directories(folder);
    Unfinished begun;
    begun.options = made.description.options;
    begun.counts = options.counts;
    for (size_t round = 1; round < holdemRounds; ++round) {
        begun.rounds[round] = made.description.rounds[round];
        std::filesystem::copy(made.folder + "/" + bucketFileNames[round],
                              folder + "/" + bucketFileNames[round]);
    }
    EXPECT_TRUE(writeUnfinished(folder + "/unfinished", begun).ok());
    const auto other = makeAbstraction(options);
    EXPECT_TRUE(other.ok()) << other.error();
    const auto opened = CardAbstraction::open(options.directory, "other");
    EXPECT_TRUE(opened.ok());
    return {opened->table(0).begin(), opened->table(0).end()};
}

// Every bucket has its share of the deck's hands, but for hands of one equity that stay together.
// They are the more the fewer equities there are.
void expectEqualShares(const CardAbstraction& abstraction, int round, double most) {
    const size_t count = abstraction.buckets(round);
    const auto buckets = summariseBuckets(round, abstraction.table(round), count, {}, {});
    ASSERT_TRUE(buckets.ok()) << buckets.error();
    uint64_t all = 0;
    for (const BucketSummary& bucket : *buckets)
        all += bucket.deckHands;
    for (size_t b = 0; b < count; ++b) {
        const double share = static_cast<double>((*buckets)[b].deckHands) *
                             static_cast<double>(count) / static_cast<double>(all);
        EXPECT_LT(std::abs(share - 1), most) << round << ' ' << b;
    }
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
    expectEqualShares(*opened, 1, 0.0001);
    expectEqualShares(*opened, 2, 0.03); // of the turn hands that win on every river
    expectEqualShares(*opened, 3, 0.003);
    expectTheOrderOfStartingHands(opened->table(0));
    expectSharesOfStartingHands(opened->table(0), preflopOfOther(options, *made, 20), 20);
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
