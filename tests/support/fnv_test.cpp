#include "support/fnv.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

template <class... Values>
uint64_t hashOf(Values... values) {
    Fnv1a hash;
    (hash.add(values), ...);
    return hash.value();
}

// The authors' own examples.
TEST(Fnv1a, GivesThePublishedValues) {
    EXPECT_EQ(hashOf(), 0xcbf29ce484222325U);
    EXPECT_EQ(hashOf(std::string_view("a")), 0xaf63dc4c8601ec8cU);
    EXPECT_EQ(hashOf(std::string_view("foobar")), 0x85944171f73967e8U);
}

TEST(Fnv1a, TakesNumbersByteByByte) {
    EXPECT_EQ(hashOf(uint32_t{0x6f6f6662}), hashOf(std::string_view("bfoo")));
    EXPECT_EQ(hashOf(int16_t{-2}), hashOf(uint16_t{0xFFFE}));
    EXPECT_EQ(hashOf(uint8_t{'a'}), 0xaf63dc4c8601ec8cU);
    EXPECT_NE(hashOf(uint8_t{1}), hashOf(uint16_t{1}));
}

TEST(Fnv1a, TakesDoublesByTheirBits) {
    EXPECT_EQ(hashOf(1.0), hashOf(uint64_t{0x3FF0000000000000}));
    EXPECT_NE(hashOf(0.0), hashOf(-0.0));
    EXPECT_NE(hashOf(1.0), hashOf(std::nextafter(1.0, 2.0)));
}

TEST(Fnv1a, KnowsOneNan) {
    const double quiet = std::numeric_limits<double>::quiet_NaN();
    const double other = std::bit_cast<double>(uint64_t{0xFFF8000000000123});
    ASSERT_TRUE(std::isnan(other));
    EXPECT_EQ(hashOf(quiet), hashOf(other));
    EXPECT_EQ(hashOf(quiet), hashOf(-quiet));
}

} // namespace
} // namespace tamarin::test
