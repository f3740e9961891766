#include "support/resources.h"

#include "support/temp_directory.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

using namespace tamarin;

TEST(Resources, KnowsWhatTheMachineHas) {
    EXPECT_GT(availableMemory(), uint64_t{1} << 20);
    EXPECT_GT(freeDisk("/tmp"), 0U);
    // A path that does not exist yet lies on the disk of the directory above it.
    EXPECT_GT(freeDisk("/tmp/there/is/no/such/path"), 0U);
}

// The limits of containers were once not looked at.
TEST(Resources, TakesTheSmallestLimitOfTheControlGroups) {
    const test::TempDirectory directory;
    const std::string mount = directory.path();
    const auto write = [&](const std::string& group, const char* name, const std::string& text) {
        std::filesystem::create_directories(mount + group);
        std::ofstream(mount + group + "/" + name) << text << "\n";
    };
    write("/outer/inner", "memory.max", "max");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), UINT64_MAX);
    write("/outer", "memory.max", "1000");
    write("/outer", "memory.current", "700");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), 300U);
    EXPECT_EQ(memoryLeftInGroup(mount, "/"), UINT64_MAX);
    // File pages give way.
    write("/outer", "memory.stat", "anon 500\nactive_file 150\ninactive_file 50");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), 500U);
    write("/outer/inner", "memory.max", "100");
    write("/outer/inner", "memory.current", "120");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), 0U);
    // A container sees its own group as the root.
    write("", "memory.max", "90");
    write("", "memory.current", "40");
    EXPECT_EQ(memoryLeftInGroup(mount, "/"), 50U);
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
