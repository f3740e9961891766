#include "clustering/abstraction_description.h"

#include "clustering/checked_file.h"
#include "clustering/fake_abstraction.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(AbstractionDescription, IsReadAsWritten) {
    const TempDirectory directory;
    AbstractionDescription description = fakeDescription();
    description.options = {AbstractionMethod::percentile, 2, 3, 4, 5, 6, 7};
    description.rounds[2].hands = 11;
    description.rounds[3].checksum = 12;
    ASSERT_TRUE(writeDescription(directory.file("d"), description).ok());
    const auto read = readDescription(directory.file("d"));
    ASSERT_TRUE(read.ok()) << read.error();
    EXPECT_EQ(*read, description);
    EXPECT_EQ(read->counts(), fakeCounts);
    EXPECT_EQ(read->rounds[1].meanDistance(), 91);
    EXPECT_EQ(RoundDescription{}.meanDistance(), 0);
}

TEST(AbstractionDescription, ImpossibleNumbersAreRefused) {
    const TempDirectory directory;
    const auto refused = [&](const AbstractionDescription& description) {
        EXPECT_TRUE(writeDescription(directory.file("d"), description).ok());
        const auto read = readDescription(directory.file("d"));
        return !read && read.error().find("holds numbers that no") != std::string::npos;
    };
    AbstractionDescription bad = fakeDescription();
    EXPECT_FALSE(refused(bad));
    bad.rounds[1].buckets = 0;
    EXPECT_TRUE(refused(bad));
    bad.rounds[1].buckets = 65536;
    EXPECT_TRUE(refused(bad));
    bad = fakeDescription();
    bad.rounds[3].centres.pop_back();
    EXPECT_TRUE(refused(bad));
    bad = fakeDescription();
    bad.startingHandClusters.pop_back();
    EXPECT_TRUE(refused(bad));
    bad = fakeDescription();
    bad.options.method = static_cast<AbstractionMethod>(2);
    EXPECT_TRUE(refused(bad));
}

TEST(AbstractionDescription, TheFirstDifferenceIsNamed) {
    const AbstractionOptions same;
    AbstractionOptions other;
    EXPECT_EQ(differenceOf(same, fakeCounts, other, fakeCounts), "");
    other.tolerance = 9;
    EXPECT_EQ(differenceOf(same, fakeCounts, other, fakeCounts),
              "the tolerance is 1000 there and 9 here");
    other.seed = 8;
    EXPECT_EQ(differenceOf(same, fakeCounts, other, fakeCounts), "the seed is 1 there and 8 here");
    EXPECT_EQ(differenceOf(same, fakeCounts, other, {169, 3, 4, 6}),
              "the number of buckets is 169-3-4-5 there and 169-3-4-6 here");
    other.method = AbstractionMethod::percentile;
    EXPECT_EQ(differenceOf(same, fakeCounts, other, {169, 3, 4, 6}),
              "the method is emd there and percentile here");
}

} // namespace
} // namespace tamarin::test
