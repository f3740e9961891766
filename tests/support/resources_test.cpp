#include "support/resources.h"

#include <gtest/gtest.h>

using namespace tamarin;

TEST(Resources, KnowsWhatTheMachineHas) {
    EXPECT_GT(availableMemory(), uint64_t{1} << 20);
    EXPECT_GT(freeDisk("/tmp"), 0U);
    // A path that does not exist yet lies on the disk of the directory above it.
    EXPECT_GT(freeDisk("/tmp/there/is/no/such/path"), 0U);
}

TEST(Resources, RefusesWithTheFigures) {
    EXPECT_TRUE(checkResources(1, 1, "/tmp").ok());
    const Status memory = checkResources(uint64_t{1} << 60, 1, "/tmp");
    ASSERT_FALSE(memory.ok());
    EXPECT_NE(memory.error().find("of memory"), std::string::npos) << memory.error();
    const Status disk = checkResources(1, uint64_t{1} << 60, "/tmp");
    ASSERT_FALSE(disk.ok());
    EXPECT_NE(disk.error().find("of disk at /tmp"), std::string::npos) << disk.error();
}
