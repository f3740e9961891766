#include "abstraction/table_contents.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string problemWith(std::vector<uint8_t> table, const EntryLimits& limits) {
    return problemOfEntries(std::span<const uint8_t>(table), limits);
}
std::string problemWith(std::vector<double> table, const EntryLimits& limits) {
    return problemOfEntries(std::span<const double>(table), limits);
}
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(TableContents, EveryKindHasItsRange) {
    EXPECT_EQ(problemWith(std::vector<uint8_t>{0, 9}, bucketEntries), "");
    EXPECT_EQ(problemWith(std::vector<uint8_t>{0, 9, 10, 11}, bucketEntries),
              "holds bucket 10 at hand 2 (byte 2), not 0..9");
    EXPECT_EQ(problemWith(std::vector<uint8_t>{255, 0}, bucketEntries),
              "holds bucket 255 at hand 0 (byte 0), not 0..9");
    EXPECT_EQ(problemWith(std::vector<uint8_t>{0, 100}, clusterEntries), "");
    EXPECT_EQ(problemWith(std::vector<uint8_t>{0, 101}, clusterEntries),
              "holds cluster 101 at hand 1 (byte 1), not 0..100");
    EXPECT_EQ(problemWith(std::vector<double>{0, 1}, equityEntries), "");
    EXPECT_EQ(problemWith(std::vector<double>{0, 1, 1.0000001}, equityEntries),
              "holds equity 1.0000001000000001 at hand 2 (byte 16), not 0..1");
    EXPECT_EQ(problemWith(std::vector<double>{0, -0.25}, equityEntries),
              "holds equity -0.25 at hand 1 (byte 8), not 0..1");
    EXPECT_EQ(problemWith(std::vector<double>{0.5, nan}, equityEntries),
              "holds equity nan at hand 1 (byte 8), not 0..1");
    EXPECT_EQ(problemWith(std::vector<double>{-1e300, 1e300}, utilityEntries), "");
    EXPECT_EQ(problemWith(std::vector<double>{0, infinite}, utilityEntries),
              "holds utility inf at hand 1 (byte 8), not a finite number");
    EXPECT_EQ(problemWith(std::vector<double>{nan, 0}, utilityEntries),
              "holds utility nan at hand 0 (byte 0), not a finite number");
}

TEST(TableContents, OfOneValueAreDamaged) {
    EXPECT_EQ(problemWith(std::vector<uint8_t>(5, 3), bucketEntries), "holds nothing but bucket 3");
    EXPECT_EQ(problemWith(std::vector<double>(5, -0.5), utilityEntries),
              "holds nothing but utility -0.5");
    std::vector<double> last(5, 0.0);
    last[4] = 0.125;
    EXPECT_EQ(problemWith(last, equityEntries), "");
    // One entry is not yet a table of one value.
    EXPECT_EQ(problemWith(std::vector<uint8_t>{3}, bucketEntries), "");
    EXPECT_EQ(problemWith(std::vector<uint8_t>{}, bucketEntries), "");
}

// Large tables are gone through in parts of 64 MiB, on several threads.
TEST(TableContents, ALargeTableIsLookedAtToItsEnd) {
    std::vector<uint8_t> table((size_t{1} << 26U) + 1000, 4);
    int parts = 0;
    const auto look = [&] {
        return problemOfEntries(std::span<const uint8_t>(table), bucketEntries, 2,
                                [&] { ++parts; });
    };
    EXPECT_EQ(look(), "holds nothing but bucket 4");
    EXPECT_EQ(parts, 2);
    table.back() = 5;
    EXPECT_EQ(look(), "");
    table.back() = 200;
    EXPECT_EQ(look(), "holds bucket 200 at hand 67109863 (byte 67109863), not 0..9");
    table[70'000] = 99;
    EXPECT_EQ(look(), "holds bucket 99 at hand 70000 (byte 70000), not 0..9");
}

} // namespace
} // namespace tamarin::test
