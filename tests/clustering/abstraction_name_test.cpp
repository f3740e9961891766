#include "clustering/abstraction_name.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(AbstractionName, CountsAreReadAndWritten) {
    const auto counts = readBucketCounts("169-200-3000-65535");
    ASSERT_TRUE(counts.ok()) << counts.error();
    EXPECT_EQ(*counts, (BucketCounts{169, 200, 3000, 65535}));
    EXPECT_EQ(abstractionName(*counts, AbstractionMethod::emd), "169-200-3000-65535");
    EXPECT_EQ(abstractionName(*counts, AbstractionMethod::percentile),
              "169-200-3000-65535-percentile");
    EXPECT_TRUE(readBucketCounts("1-1-1-1").ok());
}

TEST(AbstractionName, OtherTextIsRefused) {
    for (const char* text :
         {"", "169", "169-200-200", "169-200-200-200-", "169-200-200-200-2", "170-1-1-1", "0-1-1-1",
          "1-0-1-1", "1-1-1-65536", "1-1-1-99999999999", "1--1-1-1", "+1-1-1-1", " 1-1-1-1",
          "01-1-1-1", "1-1-1-1 ", "1_1_1_1", "a-b-c-d"}) {
        const auto counts = readBucketCounts(text);
        ASSERT_FALSE(counts.ok()) << text;
        EXPECT_EQ(counts.error().find("'" + std::string(text) + "' is no card abstraction"), 0U);
    }
}

TEST(AbstractionName, IsOneFolder) {
    for (const char* name : {"169-200-200-200", "a", "My_own.2"})
        EXPECT_TRUE(checkAbstractionName(name).ok()) << name;
    for (const char* name : {"", ".", "..", "a/b", "/a", "a b", "a\n", "\xc3\xa4"})
        EXPECT_FALSE(checkAbstractionName(name).ok()) << name;
    EXPECT_TRUE(checkAbstractionName(std::string(200, 'a')).ok());
    EXPECT_FALSE(checkAbstractionName(std::string(201, 'a')).ok());
    EXPECT_EQ(abstractionFolder("run", "x"), "run/lookup/x");
    EXPECT_EQ(abstractionFolder(".", "x"), "lookup/x");
}

TEST(AbstractionName, Methods) {
    EXPECT_EQ(*methodNamed("emd"), AbstractionMethod::emd);
    EXPECT_EQ(*methodNamed("percentile"), AbstractionMethod::percentile);
    EXPECT_FALSE(methodNamed("EMD").ok());
}

} // namespace
} // namespace tamarin::test
