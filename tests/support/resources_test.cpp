#include "support/resources.h"

#include "support/child_process.h"
#include "support/temp_directory.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sched.h>
#include <sys/mount.h>

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(Resources, KnowsWhatTheMachineHas) {
    EXPECT_GT(availableMemory(), uint64_t{1} << 20);
    EXPECT_GT(freeDisk("/tmp"), 0U);
    // A path that does not exist yet lies on the disk of the directory above it.
    EXPECT_GT(freeDisk("/tmp/there/is/no/such/path"), 0U);
}

namespace {

// The files of control groups, in a directory of their own.
class Groups {
public:
    const std::string& mount() const { return directory_.path(); }
    void write(const std::string& group, const char* name, const std::string& text) const {
        std::filesystem::create_directories(mount() + group);
        std::ofstream(mount() + group + "/" + name) << text << "\n";
    }

private:
    test::TempDirectory directory_;
};

} // namespace

// The limits of containers were once not looked at.
TEST(Resources, TakesTheSmallestLimitOfTheControlGroups) {
    const Groups groups;
    const std::string& mount = groups.mount();
    groups.write("/outer/inner", "memory.max", "max");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), UINT64_MAX);
    groups.write("/outer", "memory.max", "1000");
    groups.write("/outer", "memory.current", "700");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), 300U);
    EXPECT_EQ(memoryLeftInGroup(mount, "/"), UINT64_MAX);
    // File pages give way.
    groups.write("/outer", "memory.stat", "anon 500\nactive_file 150\ninactive_file 50");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), 500U);
    groups.write("/outer/inner", "memory.max", "100");
    groups.write("/outer/inner", "memory.current", "120");
    EXPECT_EQ(memoryLeftInGroup(mount, "/outer/inner"), 0U);
    // A container sees its own group as the root.
    groups.write("", "memory.max", "90");
    groups.write("", "memory.current", "40");
    EXPECT_EQ(memoryLeftInGroup(mount, "/"), 50U);
}

// Older systems, and containers on them, have the first version, which was once not looked at.
TEST(Resources, ReadsTheFirstVersionOfTheControlGroups) {
    const Groups groups;
    const std::string& mount = groups.mount();
    groups.write("/job", "memory.limit_in_bytes", "9223372036854771712"); // no limit
    groups.write("/job", "memory.usage_in_bytes", "700");
    EXPECT_EQ(memoryLeftInGroup(mount, "/job"), UINT64_MAX);
    groups.write("/job", "memory.limit_in_bytes", "1000");
    groups.write("/job", "memory.stat",
                 "active_file 7\ninactive_file 11\ntotal_active_file 150\ntotal_inactive_file 50");
    EXPECT_EQ(memoryLeftInGroup(mount, "/job"), 500U);
}

TEST(Resources, FindsTheGroupsThatAProcessIsIn) {
    const Groups groups;
    const std::string& mount = groups.mount();
    EXPECT_EQ(memoryLeftInGroups(mount, ""), UINT64_MAX);
    EXPECT_EQ(memoryLeftInGroups(mount, "nonsense\n:\n::\n"), UINT64_MAX);
    groups.write("/memory/a", "memory.limit_in_bytes", "1000");
    groups.write("/memory/a", "memory.usage_in_bytes", "1");
    groups.write("/cpu,memory/c:d", "memory.limit_in_bytes", "500");
    groups.write("/cpu,memory/c:d", "memory.usage_in_bytes", "2");
    groups.write("/memoryhog/a", "memory.limit_in_bytes", "10");
    groups.write("/memoryhog/a", "memory.usage_in_bytes", "4");
    groups.write("/b", "memory.max", "100");
    groups.write("/b", "memory.current", "3");
    EXPECT_EQ(memoryLeftInGroups(mount, "9:cpu:/a\n5:memory:/a\n0::/\n"), 999U);
    EXPECT_EQ(memoryLeftInGroups(mount, "5:cpu,memory:/c:d\n"), 498U);
    EXPECT_EQ(memoryLeftInGroups(mount, "5:memory:/a\n0::/b\n"), 97U);
    EXPECT_EQ(memoryLeftInGroups(mount, "4:memoryhog:/a\n1:name=systemd:/b\n"), UINT64_MAX);
}

// Where a process may have file systems of its own, it sees these groups in place of its own.
TEST(Resources, IsWhatTheGroupsOfThisProcessLeave) {
    const Groups groups;
    const auto use = [&](const std::string& bytes) {
        groups.write("", "memory.max", "3000000"); // of either version, whichever this system has
        groups.write("", "memory.current", bytes);
        groups.write("/memory", "memory.limit_in_bytes", "3000000");
        groups.write("/memory", "memory.usage_in_bytes", bytes);
    };
    constexpr int notAllowed = 77;
    const auto left = [&](uint64_t expected) {
        return test::runInChild([&] {
            if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 ||
                mount(groups.mount().c_str(), "/sys/fs/cgroup", nullptr, MS_BIND, nullptr) != 0)
                return notAllowed;
            const uint64_t found = availableMemory();
            std::cerr << found;
            return found == expected ? 0 : 1;
        });
    };
    use("1000000");
    const test::ChildOutcome some = left(2000000);
    if (some.exited(notAllowed))
        GTEST_SKIP() << "may not mount anything";
    EXPECT_TRUE(some.exited(0)) << some.errors;
    use("3000001");
    const test::ChildOutcome none = left(1); // 0 is for what is not known
    EXPECT_TRUE(none.exited(0)) << none.errors;
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

} // namespace tamarin::test
